#pragma once
// What the cases reached of one plug-in file: its executable lines and its branches, with how
// often each was reached, merged over any number of runs.

#include <cstdint>
#include <map>
#include <string>
#include <tuple>

namespace qiro_plugin::coverage {

// A branch is one way out of a decision: the decision's line, which decision of that line
// (block) and which way (branch), numbered as the tool's own data orders them.
using branch_key = std::tuple<unsigned, unsigned, unsigned>;

struct file_coverage {
    std::string path; // absolute, as the interpreter loaded it
    // Every line the tool counts as executable, with how often it was reached (0: never).
    std::map<unsigned, std::uint64_t> lines;
    // Every branch the tool knows, with how often it was taken.
    std::map<branch_key, std::uint64_t> branches;
};

struct coverage_summary {
    std::size_t lines_found = 0;
    std::size_t lines_hit = 0;
    std::size_t branches_found = 0;
    std::size_t branches_hit = 0;
};

// Adds the counts of a_more into a_into (the same file run again): a line or branch that either
// knows is known to the result.
void merge(file_coverage& a_into, const file_coverage& a_more);

coverage_summary summarize(const file_coverage& a_file);

// Whole percent, rounded down, so that 100 means every line: 41 of 42 is 97, never 100.
// 100 when there is nothing to count.
unsigned whole_percent(std::size_t a_hit, std::size_t a_found);

// The first line that no run reached; 0 when every line was reached.
unsigned first_line_not_reached(const file_coverage& a_file);

// "my.py: 37 of 42 lines (88 %), 9 of 12 branches" (the branch part only when there are some).
std::string summary_line(const std::string& a_name, const coverage_summary& a_summary);

} // namespace qiro_plugin::coverage
