#include "coverage/coverage_record.hpp"

namespace qiro_plugin::coverage {

void merge(file_coverage& a_into, const file_coverage& a_more) {
    if (a_into.path.empty()) {
        a_into.path = a_more.path;
    }
    for (const auto& [line, hits] : a_more.lines) {
        a_into.lines[line] += hits;
    }
    for (const auto& [key, taken] : a_more.branches) {
        a_into.branches[key] += taken;
    }
}

coverage_summary summarize(const file_coverage& a_file) {
    coverage_summary summary;
    summary.lines_found = a_file.lines.size();
    for (const auto& [line, hits] : a_file.lines) {
        summary.lines_hit += hits > 0 ? 1 : 0;
    }
    summary.branches_found = a_file.branches.size();
    for (const auto& [key, taken] : a_file.branches) {
        summary.branches_hit += taken > 0 ? 1 : 0;
    }
    return summary;
}

unsigned whole_percent(std::size_t a_hit, std::size_t a_found) {
    if (a_found == 0) {
        return 100;
    }
    return static_cast<unsigned>(a_hit * 100 / a_found);
}

unsigned first_line_not_reached(const file_coverage& a_file) {
    for (const auto& [line, hits] : a_file.lines) {
        if (hits == 0) {
            return line;
        }
    }
    return 0;
}

std::string summary_line(const std::string& a_name, const coverage_summary& a_summary) {
    std::string line = a_name + ": " + std::to_string(a_summary.lines_hit) + " of " +
                       std::to_string(a_summary.lines_found) + " lines (" +
                       std::to_string(whole_percent(a_summary.lines_hit, a_summary.lines_found)) +
                       " %)";
    if (a_summary.branches_found > 0) {
        line += ", " + std::to_string(a_summary.branches_hit) + " of " +
                std::to_string(a_summary.branches_found) + " branches";
    }
    return line;
}

} // namespace qiro_plugin::coverage
