#pragma once
// One reader for each tool's output. Each returns the files the output names; a text that is
// not such output throws std::runtime_error saying what is wrong.

#include "coverage/coverage_record.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace qiro_plugin::coverage {

// coverage.py's JSON report (Coverage.json_report, "coverage json") measured with branch=True.
// A line of executed_lines counts 1, of missing_lines 0; each arc (from, to) is a branch of
// the line "from", numbered by its destination. Relative file names are taken from a_base.
std::vector<file_coverage> read_coverage_py_json(std::string_view a_report,
                                                 const std::string& a_base);

// What coverage_ruby.rb writes of Ruby's Coverage.result: per file "file PATH", then
// "lines C1 C2 ..." ("-" for a line that is not code) and one "branch DECISION LINE TARGET
// COUNT" per way out of a decision, with Ruby's own ids for the decision and the target.
std::vector<file_coverage> read_ruby_coverage_dump(std::string_view a_dump);

// What coverage_collect.pl prints of a Devel::Cover database: per file "file PATH", then
// "statement LINE COUNT" per statement (a line counts as reached when one of its statements
// was) and "branch LINE BLOCK TRUE FALSE" per decision.
std::vector<file_coverage> read_devel_cover_dump(std::string_view a_dump);

} // namespace qiro_plugin::coverage
