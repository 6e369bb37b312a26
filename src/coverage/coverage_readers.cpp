#include "coverage/coverage_readers.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <stdexcept>

namespace qiro_plugin::coverage {

namespace {

[[noreturn]] void fail(const std::string& a_what) {
    throw std::runtime_error(a_what);
}

// The text's lines, without their line ends.
std::vector<std::string_view> lines_of(std::string_view a_text) {
    std::vector<std::string_view> lines;
    while (!a_text.empty()) {
        const std::size_t end = a_text.find('\n');
        lines.push_back(a_text.substr(0, end));
        if (end == std::string_view::npos) {
            break;
        }
        a_text.remove_prefix(end + 1);
    }
    return lines;
}

std::vector<std::string_view> words_of(std::string_view a_line) {
    std::vector<std::string_view> words;
    std::size_t start = 0;
    while (start < a_line.size()) {
        const std::size_t end = std::min(a_line.find(' ', start), a_line.size());
        if (end > start) {
            words.push_back(a_line.substr(start, end - start));
        }
        start = end + 1;
    }
    return words;
}

std::uint64_t number_of(std::string_view a_word, std::string_view a_what) {
    std::uint64_t value = 0;
    const auto [end, error] = std::from_chars(a_word.data(), a_word.data() + a_word.size(), value);
    if (error != std::errc() || end != a_word.data() + a_word.size()) {
        fail("not a count in " + std::string(a_what) + ": \"" + std::string(a_word) + "\"");
    }
    return value;
}

unsigned line_number_of(std::string_view a_word, std::string_view a_what) {
    const std::uint64_t value = number_of(a_word, a_what);
    if (value == 0 || value > 0xFFFFFFFFU) {
        fail("not a line number in " + std::string(a_what) + ": \"" + std::string(a_word) + "\"");
    }
    return static_cast<unsigned>(value);
}

// "file PATH" starts a record; every other line belongs to the record before it.
template <typename Read_line>
std::vector<file_coverage> read_records(std::string_view a_dump, std::string_view a_what,
                                        Read_line a_read_line) {
    std::vector<file_coverage> files;
    for (const std::string_view line : lines_of(a_dump)) {
        if (line.empty()) {
            continue;
        }
        if (line.starts_with("file ")) {
            files.emplace_back().path = std::string(line.substr(5));
            continue;
        }
        if (files.empty()) {
            fail(std::string(a_what) + " names no file before \"" + std::string(line) + "\"");
        }
        a_read_line(files.size() - 1, files.back(), words_of(line));
    }
    return files;
}

} // namespace

std::vector<file_coverage> read_coverage_py_json(std::string_view a_report,
                                                 const std::string& a_base) {
    const auto report = nlohmann::json::parse(a_report, nullptr, false);
    if (!report.is_object() || !report.contains("files") || !report["files"].is_object()) {
        fail("not a coverage.py JSON report: no \"files\" object");
    }
    std::vector<file_coverage> files;
    try {
        for (const auto& [name, data] : report["files"].items()) {
            file_coverage& file = files.emplace_back();
            file.path = name.starts_with('/') || a_base.empty()
                            ? name
                            : a_base + (a_base.ends_with('/') ? "" : "/") + name;
            for (const auto& line : data.at("missing_lines")) {
                file.lines[line.get<unsigned>()] += 0;
            }
            for (const auto& line : data.at("executed_lines")) {
                file.lines[line.get<unsigned>()] = 1;
            }
            // Arcs per line, ordered by destination (an exit from a function is negative).
            std::map<unsigned, std::map<int, std::uint64_t>> arcs;
            for (const auto& arc : data.value("missing_branches", nlohmann::json::array())) {
                arcs[arc.at(0).get<unsigned>()][arc.at(1).get<int>()] += 0;
            }
            for (const auto& arc : data.value("executed_branches", nlohmann::json::array())) {
                arcs[arc.at(0).get<unsigned>()][arc.at(1).get<int>()] = 1;
            }
            for (const auto& [line, destinations] : arcs) {
                unsigned index = 0;
                for (const auto& [destination, taken] : destinations) {
                    file.branches[{line, 0, index++}] = taken;
                }
            }
        }
    } catch (const nlohmann::json::exception& error) {
        fail(std::string("a coverage.py JSON report of the wrong form: ") + error.what());
    }
    return files;
}

std::vector<file_coverage> read_ruby_coverage_dump(std::string_view a_dump) {
    // Ruby numbers decisions and their targets through the file; here each line numbers its
    // decisions (blocks) and each decision its targets (branches) from 0, in Ruby's order.
    struct target {
        std::uint64_t decision;
        std::uint64_t id;
        std::uint64_t count;
        bool operator<(const target& a_other) const {
            return std::tie(decision, id) < std::tie(a_other.decision, a_other.id);
        }
    };
    std::map<std::size_t, std::map<unsigned, std::vector<target>>> decisions; // per file
    auto files =
        read_records(a_dump, "the Ruby coverage dump",
                     [&](std::size_t a_index, file_coverage& a_file, const auto& a_words) {
                         const std::string_view what = "the Ruby coverage dump";
                         if (a_words.front() == "lines") {
                             for (std::size_t index = 1; index < a_words.size(); ++index) {
                                 if (a_words[index] != "-") {
                                     a_file.lines[static_cast<unsigned>(index)] =
                                         number_of(a_words[index], what);
                                 }
                             }
                         } else if (a_words.front() == "branch" && a_words.size() == 5) {
                             decisions[a_index][line_number_of(a_words[2], what)].push_back(
                                 {number_of(a_words[1], what), number_of(a_words[3], what),
                                  number_of(a_words[4], what)});
                         } else {
                             fail("unknown line in the Ruby coverage dump: \"" +
                                  std::string(a_words.front()) + "\"");
                         }
                     });
    for (auto& [index, lines] : decisions) {
        for (auto& [line, targets] : lines) {
            std::sort(targets.begin(), targets.end());
            unsigned block = 0;
            unsigned branch = 0;
            for (std::size_t position = 0; position < targets.size(); ++position) {
                if (position > 0 && targets[position].decision != targets[position - 1].decision) {
                    ++block;
                    branch = 0;
                }
                files[index].branches[{line, block, branch++}] = targets[position].count;
            }
        }
    }
    return files;
}

std::vector<file_coverage> read_devel_cover_dump(std::string_view a_dump) {
    return read_records(a_dump, "the Devel::Cover dump",
                        [](std::size_t, file_coverage& a_file, const auto& a_words) {
                            const std::string_view what = "the Devel::Cover dump";
                            if (a_words.front() == "statement" && a_words.size() == 3) {
                                auto& hits = a_file.lines[line_number_of(a_words[1], what)];
                                hits = std::max(hits, number_of(a_words[2], what));
                            } else if (a_words.front() == "branch" && a_words.size() == 5) {
                                const unsigned line = line_number_of(a_words[1], what);
                                const auto block =
                                    static_cast<unsigned>(number_of(a_words[2], what));
                                a_file.branches[{line, block, 0}] = number_of(a_words[3], what);
                                a_file.branches[{line, block, 1}] = number_of(a_words[4], what);
                            } else {
                                fail("unknown line in the Devel::Cover dump: \"" +
                                     std::string(a_words.front()) + "\"");
                            }
                        });
}

} // namespace qiro_plugin::coverage
