#pragma once
// What a run's report means to the person who asked for it: one judgement that every front end
// shows in its own way (the CLI in English with an exit status, the window in the user's
// language, a case as its failure text).

#include "core/localized_texts.hpp"
#include "core/run_report.hpp"
#include "diagnosis/run_evidence.hpp"

#include <string>
#include <vector>

namespace qiro_plugin::debugger {

struct run_verdict {
    enum class kind {
        candidates,        // a processing run whose output is a result document
        no_document,       // a processing run whose output is not one (the diagnosis says why)
        entry_ran,         // a callback or preference entry ran
        not_run,           // no language took the file, or its syntax check failed
        entry_not_offered, // the plug-in's .xml does not enable the entry
        run_error,         // an exception ended the run
        alerted,           // the input was refused, and an alert said so
        refused,           // the input or the run was refused for the reason given
        sandbox_refused    // the sandbox was asked for and cannot be had here
    };
    enum class level { success, warning, error };

    kind what = kind::candidates;
    // no_document is a warning: the run went through, and the diagnosis's error finding is
    // where the author reads what went wrong.
    level severity = level::success;
    // A key of the localized text table and the values of its %1, %2, ... (UTF-8).
    std::string key;
    std::vector<std::string> arguments;
    // What an exception's text means for the author, in the installed language; often empty.
    utf16_string hint;
};

run_verdict judge_run(const run_report& a_report, diagnosis::entry_kind a_entry,
                      const utf16_string& a_file_name);

// The verdict's sentence in the language, its values in place.
utf16_string verdict_text(const run_verdict& a_verdict, text_language a_language);

} // namespace qiro_plugin::debugger
