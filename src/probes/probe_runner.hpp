#pragma once
// The author-side probes: a second run of a plug-in that reports what its entry returned.

#include "diagnosis/run_evidence.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace qiro_plugin::probes {

struct probe_request {
    std::string language;    // the interpreter command: "perl", "ruby" or "python"
    std::string plugin_path; // absolute, UTF-8
    std::string method;      // "run_process", "run_callback" or "run_preference"
    // The request values in the bridge's order, UTF-8 (the port as digits).
    std::vector<std::string> values;
};

// The probe script of a language, URL-encoded as stored; empty for an unknown language.
const std::string& probe_script(std::string_view a_language);

// Runs the language's probe on the plug-in through the command runner (time-out, own process
// group, nothing left behind); the probe file lives in the data folder only while it runs,
// private, like a bridge file. The plug-in runs a second time, with all its effects.
diagnosis::probe_evidence run_probe(const probe_request& a_request);

// Reads the report line a probe printed; answered is false when there is none.
diagnosis::probe_evidence read_probe_output(std::string_view a_std_output);

} // namespace qiro_plugin::probes
