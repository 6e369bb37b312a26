#pragma once
// Whether a run gave what a case expects, and if not, what differs.

#include "cases/case_file.hpp"
#include "core/run_report.hpp"

#include <string>
#include <vector>

namespace qiro_plugin::cases {

// What one case's run produced: the report and the two panes as the author would see them.
struct case_run {
    debugger::plugin_entry plugin;
    debugger::run_report report;
    std::string std_output_pane; // UTF-8
    std::string std_error_pane;  // UTF-8
    std::vector<std::string> alerts;
};

struct check_result {
    bool passed = false;
    std::vector<std::string> problems; // one sentence each
    // Expected and actual candidates side by side: lines starting "  " (as expected),
    // "- " (expected, not given) and "+ " (given, not expected); empty when the list matched.
    std::vector<std::string> diff;
};

check_result check_case(const test_case& a_case, const case_run& a_run);

// The candidate's field as a plug-in names it ("hyoki" is the title), UTF-8.
std::string candidate_field(const message_script::candidate& a_candidate,
                            const std::string& a_field);

// Why a run is not free of errors, or empty when it is: it did not complete, its output was
// not a result document, or the diagnosis found an error.
std::string run_error_summary(const test_case& a_case, const case_run& a_run);

} // namespace qiro_plugin::cases
