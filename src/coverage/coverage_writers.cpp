#include "coverage/coverage_writers.hpp"

#include "text/url_xml_escape.hpp"

#include <cstdio>
#include <filesystem>
#include <map>

namespace qiro_plugin::coverage {

namespace {

std::string rate(std::size_t a_hit, std::size_t a_found) {
    char text[16];
    std::snprintf(text, sizeof text, "%.4f",
                  a_found == 0 ? 1.0 : static_cast<double>(a_hit) / static_cast<double>(a_found));
    return text;
}

std::string rates(const coverage_summary& a_summary) {
    return "line-rate=\"" + rate(a_summary.lines_hit, a_summary.lines_found) + "\" branch-rate=\"" +
           rate(a_summary.branches_hit, a_summary.branches_found) + "\"";
}

coverage_summary add(coverage_summary a_one, const coverage_summary& a_two) {
    a_one.lines_found += a_two.lines_found;
    a_one.lines_hit += a_two.lines_hit;
    a_one.branches_found += a_two.branches_found;
    a_one.branches_hit += a_two.branches_hit;
    return a_one;
}

// The branches of each line: how many there are and how many were taken.
std::map<unsigned, std::pair<std::size_t, std::size_t>>
branches_per_line(const file_coverage& a_file) {
    std::map<unsigned, std::pair<std::size_t, std::size_t>> lines;
    for (const auto& [key, taken] : a_file.branches) {
        auto& [found, hit] = lines[std::get<0>(key)];
        ++found;
        hit += taken > 0 ? 1 : 0;
    }
    return lines;
}

} // namespace

std::string lcov_tracefile(const std::vector<file_coverage>& a_files) {
    std::string text;
    for (const auto& file : a_files) {
        const auto summary = summarize(file);
        text += "TN:\nSF:" + file.path + "\n";
        for (const auto& [key, taken] : file.branches) {
            const auto [line, block, branch] = key;
            const auto reached = file.lines.find(line);
            const bool evaluated = taken > 0 || reached == file.lines.end() || reached->second > 0;
            text += "BRDA:" + std::to_string(line) + "," + std::to_string(block) + "," +
                    std::to_string(branch) + "," + (evaluated ? std::to_string(taken) : "-") + "\n";
        }
        if (!file.branches.empty()) {
            text += "BRF:" + std::to_string(summary.branches_found) + "\n";
            text += "BRH:" + std::to_string(summary.branches_hit) + "\n";
        }
        for (const auto& [line, hits] : file.lines) {
            text += "DA:" + std::to_string(line) + "," + std::to_string(hits) + "\n";
        }
        text += "LF:" + std::to_string(summary.lines_found) + "\n";
        text += "LH:" + std::to_string(summary.lines_hit) + "\n";
        text += "end_of_record\n";
    }
    return text;
}

std::string cobertura_xml(const std::vector<file_coverage>& a_files, const std::string& a_version,
                          std::uint64_t a_timestamp) {
    // Files grouped by folder, each folder a source and a package.
    std::map<std::string, std::vector<const file_coverage*>> folders;
    coverage_summary total;
    for (const auto& file : a_files) {
        folders[std::filesystem::path(file.path).parent_path().string()].push_back(&file);
        total = add(total, summarize(file));
    }
    std::string text = "<?xml version=\"1.0\" ?>\n"
                       "<!DOCTYPE coverage SYSTEM "
                       "\"http://cobertura.sourceforge.net/xml/coverage-04.dtd\">\n";
    text += "<coverage " + rates(total) + " lines-covered=\"" + std::to_string(total.lines_hit) +
            "\" lines-valid=\"" + std::to_string(total.lines_found) + "\" branches-covered=\"" +
            std::to_string(total.branches_hit) + "\" branches-valid=\"" +
            std::to_string(total.branches_found) + "\" complexity=\"0\" version=\"" +
            utility::escape_xml(a_version) + "\" timestamp=\"" + std::to_string(a_timestamp) +
            "\">\n";
    text += "\t<sources>\n";
    for (const auto& [folder, files] : folders) {
        text += "\t\t<source>" + utility::escape_xml(folder) + "</source>\n";
    }
    text += "\t</sources>\n\t<packages>\n";
    for (const auto& [folder, files] : folders) {
        coverage_summary package;
        for (const auto* file : files) {
            package = add(package, summarize(*file));
        }
        text += "\t\t<package name=\"" + utility::escape_xml(folder) + "\" " + rates(package) +
                " complexity=\"0\">\n\t\t\t<classes>\n";
        for (const auto* file : files) {
            const std::string name = std::filesystem::path(file->path).filename().string();
            text += "\t\t\t\t<class name=\"" + utility::escape_xml(name) + "\" filename=\"" +
                    utility::escape_xml(name) + "\" " + rates(summarize(*file)) +
                    " complexity=\"0\">\n\t\t\t\t\t<methods/>\n\t\t\t\t\t<lines>\n";
            const auto branches = branches_per_line(*file);
            for (const auto& [line, hits] : file->lines) {
                text += "\t\t\t\t\t\t<line number=\"" + std::to_string(line) + "\" hits=\"" +
                        std::to_string(hits) + "\"";
                if (const auto found = branches.find(line); found != branches.end()) {
                    const auto [count, taken] = found->second;
                    text += " branch=\"true\" condition-coverage=\"" +
                            std::to_string(taken * 100 / count) + "% (" + std::to_string(taken) +
                            "/" + std::to_string(count) + ")\"";
                } else {
                    text += " branch=\"false\"";
                }
                text += "/>\n";
            }
            text += "\t\t\t\t\t</lines>\n\t\t\t\t</class>\n";
        }
        text += "\t\t\t</classes>\n\t\t</package>\n";
    }
    text += "\t</packages>\n</coverage>\n";
    return text;
}

} // namespace qiro_plugin::coverage
