#pragma once
// Recording: what a run gave, written into a cases file as what it must give.

#include "cases/case_check.hpp"
#include "cases/case_file.hpp"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace qiro_plugin::cases {

// The expectation the run meets exactly: every candidate with its fields that are set, and
// for a run with errors no_errors false and the codes found. The texts of a_previous's
// stderr_contains that the run still shows are kept.
nlohmann::ordered_json snapshot_expectation(const test_case& a_case, const case_run& a_run,
                                            const nlohmann::ordered_json& a_previous);

// How one case's expectation changed: "- " old lines, "+ " new lines, "  " lines kept.
struct expectation_change {
    std::string name;
    bool changed = false;
    std::vector<std::string> lines;
};

// Replaces the expectation of each given case (by its place in a_file.cases) in the document;
// everything else in the document stays as it was.
std::vector<expectation_change>
update_expectations(cases_file& a_file,
                    const std::vector<std::pair<std::size_t, const case_run*>>& a_runs);

// Writes the document whole, through a new file renamed over the old one so that an
// interrupted write loses nothing. An error text, or empty.
std::string write_cases_document(const std::filesystem::path& a_path,
                                 const nlohmann::ordered_json& a_document);

// Adds a case made of the run's inputs and snapshot to the cases file (created when missing).
// A name already taken gets " (2)", " (3)"... An error text, or empty.
std::string append_case(const std::filesystem::path& a_cases_path, test_case a_case,
                        const case_run& a_run);

} // namespace qiro_plugin::cases
