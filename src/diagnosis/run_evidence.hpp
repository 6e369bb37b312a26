#pragma once
// A plain record of what one plug-in run produced, the input of the diagnosis.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qiro_plugin::diagnosis {

// One interpreter command of the run, as the command runner left it.
struct command_evidence {
    bool ran = false;
    bool timed_out = false;
    std::string std_output; // UTF-8 as written (empty after a time-out)
    std::string std_error;  // on a time-out, what was written before the stop
    bool std_output_cut = false;
    bool std_error_cut = false;
    std::optional<int> exit_status;
    double elapsed_ms = 0.0;
    std::optional<double> cpu_ms; // processor time, user and system
    bool stopped = false;         // the time-out came early, from the author's Stop
};

// What an author-side probe said about the plug-in (see src/probes).
struct probe_evidence {
    // One line of the plug-in as written, with its number.
    struct source_line {
        std::uint32_t line = 0;
        std::string text;
    };
    // A compile, load or call that failed, with the innermost place in the plug-in.
    struct failure {
        std::string type;   // the exception's class, or what the probe made of the failure
        std::string module; // a module that could not be found, when the interpreter named it
        std::string message;
        std::optional<std::string> file;
        std::optional<std::uint32_t> line;
        std::optional<std::uint32_t> column;
    };
    struct returned_shape {
        std::string type;                             // the language's name of the type
        std::optional<std::vector<std::string>> keys; // for a mapping, its first keys
        std::optional<std::string> candidate_type;    // the type under "candidate", if any
        bool ok = false;                              // what the bridge reads candidates from
        // Perl: how many values followed "candidate" because a list went in flat, not as a
        // reference, and the line that did it.
        std::optional<std::uint64_t> flattened;
        std::optional<source_line> slip;
    };
    // An entry declared in a form the bridge refuses: "name_case" (the name differs only in
    // case), "class" (a Ruby class where the bridge includes a module) or "parameters".
    struct entry_shape {
        std::string kind;
        std::optional<source_line> declaration;
        std::optional<std::uint32_t> takes; // the parameters the entry requires
    };
    // One candidate, or one of its fields, that the bridge drops or cuts.
    struct candidate_note {
        std::uint32_t index = 0;
        bool kept = true;
        std::string field;  // empty for the whole candidate
        std::string reason; // missing, empty, wrong_type, cut, dropped_over_limit, not_mapping,
                            // beyond_limit, symbol_key
        std::string type;
        std::optional<std::uint64_t> length;
        std::optional<std::uint64_t> limit;
    };

    bool answered = false; // the probe printed its report line
    std::string std_error; // what the probe run wrote on standard error
    bool timed_out = false;
    std::optional<failure> compile_failure;
    std::optional<failure> load_failure;
    std::optional<bool> entry_found;
    std::string entry_name;
    bool module_found = true;
    std::optional<entry_shape> shape;
    std::optional<failure> call_failure;
    std::optional<returned_shape> returned;
    std::vector<candidate_note> candidates;
};

enum class entry_kind { processing, callback, preference };

// The bridge method that runs the entry: "run_process", "run_callback" or "run_preference".
inline const char* method_name(entry_kind a_kind) {
    switch (a_kind) {
    case entry_kind::callback:
        return "run_callback";
    case entry_kind::preference:
        return "run_preference";
    case entry_kind::processing:
        break;
    }
    return "run_process";
}

struct run_evidence {
    entry_kind entry = entry_kind::processing;
    std::string plugin_folder; // UTF-8, ends in "/"
    std::string plugin_file;   // the file name, UTF-8
    // The interpreter command of the language that took the file ("perl", "ruby", "python"),
    // empty when none did.
    std::string language;
    bool instance_made = false; // a language passed its syntax check
    bool entry_enabled = true;  // the companion document offers the entry
    command_evidence syntax_check;
    command_evidence run;
    bool document_parsed = false;
    std::size_t candidate_count = 0;
    std::string error; // the exception text that ended the run
    std::optional<probe_evidence> probe;
    // How much more processor time this machine needs than the reference one for the same work
    // (cpu_time_scale()); unset, it is measured when a start is judged.
    std::optional<double> cpu_time_scale;
};

} // namespace qiro_plugin::diagnosis
