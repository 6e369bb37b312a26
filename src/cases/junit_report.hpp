#pragma once
// JUnit XML of a test session, in the form CI systems (Jenkins, GitLab, GitHub) read.

#include "cases/case_runner.hpp"

#include <string>
#include <vector>

namespace qiro_plugin::cases {

// One cases file and what became of each of its cases.
struct suite_result {
    const cases_file* file = nullptr;
    // Parallel to file->cases.
    std::vector<const case_outcome*> outcomes;
};

// testsuites > testsuite (one per cases file) > testcase; a failed case carries <failure> with
// its problems and diff, and the panes as system-out and system-err; a problem of the file
// itself is a testcase with <error>, so that it can never pass unseen.
std::string junit_xml(const std::vector<suite_result>& a_suites);

// Text made safe for XML: markup escaped, characters XML 1.0 cannot hold replaced by U+FFFD.
std::string xml_text(const std::string& a_text);

} // namespace qiro_plugin::cases
