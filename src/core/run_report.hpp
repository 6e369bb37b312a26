#pragma once
// Everything one run produced, for front ends that show more than the two panes.

#include "diagnosis/finding.hpp"
#include "platform/sandbox.hpp"
#include "runtime/message_script.hpp"
#include "text/utf16_string.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qiro_plugin::debugger {

struct run_report {
    enum class outcome {
        refused,           // the input was refused before anything ran (see alert_key / refusal)
        not_run,           // no language loaded the file or its syntax check failed
        entry_not_enabled, // the plug-in's preference document does not offer the entry
        completed,         // the entry ran (its output may still not parse)
        failed             // an exception ended the run (see error)
    };

    outcome result = outcome::refused;
    std::string alert_key;                   // the alert the run showed, if any
    std::string refusal;                     // why the input was refused when no alert says it
    std::optional<utf16_string> module_type; // the language whose instance passed
    utf16_string load_error;
    std::string run_std_output; // the entry's own outputs, UTF-8 as written
    std::string run_std_error;
    bool document_parsed = false;
    std::vector<message_script::candidate> candidates;
    std::optional<std::uint32_t> return_type;
    std::string candidate_list; // the candidate-list document when the return type is 0
    double syntax_check_ms = 0.0;
    double run_ms = 0.0;
    double total_ms = 0.0;
    std::string error; // the text of the exception that ended the run
    // When the time-out stopped the entry: after how many seconds.
    std::optional<double> timed_out_after_s;
    // What the diagnosis found, beside the faithful outputs above; empty when nothing was.
    std::vector<diagnosis::finding> findings;
    // The confinement the run's commands had; a refusal with sandbox_unavailable set means
    // the sandbox was asked for and could not be set up (refusal says why).
    utility::sandbox_mode sandbox = utility::sandbox_mode::off;
    bool sandbox_unavailable = false;
};

} // namespace qiro_plugin::debugger
