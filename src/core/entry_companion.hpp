#pragma once
// A tool that joins the entry's command through its environment alone: a debugger, a coverage
// tool. The faithful command line never changes for it.

#include "diagnosis/run_evidence.hpp"
#include "platform/command_environment.hpp"

#include <optional>
#include <string>

namespace qiro_plugin::debugger {

struct run_report;

// What a companion learns of the run it joins once the language is known.
struct entry_context {
    diagnosis::entry_kind entry = diagnosis::entry_kind::processing;
    std::string language;    // the interpreter command: "perl", "ruby" or "python"
    std::string plugin_path; // absolute, UTF-8: the file the author has open
    std::string data_folder; // UTF-8: where the command starts and the bridge file lies
};

class entry_companion {
public:
    entry_companion() = default;
    entry_companion(const entry_companion&) = delete;
    entry_companion& operator=(const entry_companion&) = delete;
    virtual ~entry_companion() = default;

    // Called after the syntax check, before the entry's command starts: adds what the command's
    // environment needs. A returned text refuses the run, no entry command starts, and the text
    // says why (a missing tool, say, with the package to install).
    virtual std::optional<std::string> prepare(const entry_context& a_context,
                                               utility::command_environment& a_environment) = 0;
    // After the entry's command ended, however it ended, when prepare accepted the run.
    virtual void finish(const run_report& a_report) noexcept { static_cast<void>(a_report); }
};

} // namespace qiro_plugin::debugger
