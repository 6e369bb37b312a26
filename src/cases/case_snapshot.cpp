#include "cases/case_snapshot.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>

namespace qiro_plugin::cases {

namespace {

using json = nlohmann::ordered_json;
namespace fs = std::filesystem;

std::vector<std::string> lines_of(const std::string& a_text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < a_text.size()) {
        const std::size_t end = a_text.find('\n', start);
        lines.push_back(a_text.substr(start, end - start));
        start = end == std::string::npos ? a_text.size() : end + 1;
    }
    return lines;
}

// A line diff through the longest common subsequence; expectations are a few dozen lines.
std::vector<std::string> line_diff(const std::vector<std::string>& a_old,
                                   const std::vector<std::string>& a_new) {
    const std::size_t rows = a_old.size();
    const std::size_t columns = a_new.size();
    std::vector<std::vector<std::size_t>> common(rows + 1, std::vector<std::size_t>(columns + 1));
    for (std::size_t row = rows; row-- > 0;) {
        for (std::size_t column = columns; column-- > 0;) {
            common[row][column] = a_old[row] == a_new[column]
                                      ? common[row + 1][column + 1] + 1
                                      : std::max(common[row + 1][column], common[row][column + 1]);
        }
    }
    std::vector<std::string> lines;
    std::size_t row = 0;
    std::size_t column = 0;
    while (row < rows || column < columns) {
        if (row < rows && column < columns && a_old[row] == a_new[column]) {
            lines.push_back("  " + a_old[row++]);
            ++column;
        } else if (row < rows &&
                   (column == columns || common[row + 1][column] >= common[row][column + 1])) {
            lines.push_back("- " + a_old[row++]);
        } else {
            lines.push_back("+ " + a_new[column++]);
        }
    }
    return lines;
}

std::string dumped(const json& a_value) {
    return a_value.is_null() ? std::string()
                             : a_value.dump(2, ' ', false, json::error_handler_t::replace);
}

json case_inputs(const test_case& a_case) {
    json item;
    item["name"] = a_case.name;
    switch (a_case.kind) {
    case case_kind::processing:
        item["written_form"] = a_case.written_form;
        if (!a_case.reading.empty()) {
            item["reading"] = a_case.reading;
        }
        break;
    case case_kind::callback:
        item["callback"] = {{"candidate", a_case.candidate}, {"written_form", a_case.written_form}};
        break;
    case case_kind::preference:
        item["preference"] = true;
        break;
    }
    return item;
}

} // namespace

json snapshot_expectation(const test_case& a_case, const case_run& a_run, const json& a_previous) {
    json expect = json::object();
    const auto& report = a_run.report;
    if (a_case.kind == case_kind::processing && report.document_parsed) {
        expect["candidates"] = json::array();
        for (const auto& candidate : report.candidates) {
            json item;
            for (const auto& field : candidate_field_names()) {
                // The document itself is kept; its text would say the same twice.
                if (field == "comment_text") {
                    continue;
                }
                const std::string value = candidate_field(candidate, field);
                if (field == "hyoki" || !value.empty()) {
                    item[field] = value;
                }
            }
            expect["candidates"].push_back(std::move(item));
        }
    }
    if (!run_error_summary(a_case, a_run).empty()) {
        expect["no_errors"] = false;
        json codes = json::array();
        for (const auto& finding : report.findings) {
            if (std::find(codes.begin(), codes.end(), finding.code) == codes.end()) {
                codes.push_back(finding.code);
            }
        }
        if (!codes.empty()) {
            expect["diagnosis"] = std::move(codes);
        }
    }
    if (a_previous.is_object() && a_previous.contains("stderr_contains")) {
        json kept = json::array();
        const auto& previous = a_previous["stderr_contains"];
        for (const auto& text : previous.is_array() ? previous : json::array({previous})) {
            if (text.is_string() &&
                a_run.std_error_pane.find(text.get<std::string>()) != std::string::npos) {
                kept.push_back(text);
            }
        }
        if (!kept.empty()) {
            expect["stderr_contains"] = std::move(kept);
        }
    }
    return expect;
}

std::vector<expectation_change>
update_expectations(cases_file& a_file,
                    const std::vector<std::pair<std::size_t, const case_run*>>& a_runs) {
    std::vector<expectation_change> changes;
    for (const auto& [index, run] : a_runs) {
        const test_case& the_case = a_file.cases.at(index);
        json& item = a_file.document["cases"][the_case.index];
        const json previous = item.contains("expect") ? item["expect"] : json();
        json updated = snapshot_expectation(the_case, *run, previous);
        expectation_change change{the_case.name, previous != updated, {}};
        if (change.changed) {
            change.lines = line_diff(lines_of(dumped(previous)), lines_of(dumped(updated)));
        }
        item["expect"] = std::move(updated);
        changes.push_back(std::move(change));
    }
    return changes;
}

std::string write_cases_document(const fs::path& a_path, const json& a_document) {
    const std::string text = a_document.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
    std::string name = ".";
    name.append(a_path.filename().string()).append(".XXXXXX");
    std::string temporary = (a_path.parent_path() / name).string();
    const int descriptor = ::mkstemp(temporary.data());
    if (descriptor < 0) {
        return "cannot write beside " + a_path.string() + ": " + std::strerror(errno);
    }
    struct stat status {};
    ::fchmod(descriptor, ::stat(a_path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0644);
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(descriptor, text.data() + written, text.size() - written);
        if (count <= 0) {
            break;
        }
        written += static_cast<std::size_t>(count);
    }
    const bool complete = written == text.size() && ::fsync(descriptor) == 0;
    ::close(descriptor);
    if (!complete || std::rename(temporary.c_str(), a_path.c_str()) != 0) {
        const std::string error = std::strerror(errno);
        ::unlink(temporary.c_str());
        return "cannot write " + a_path.string() + ": " + error;
    }
    return {};
}

std::string append_case(const fs::path& a_cases_path, test_case a_case, const case_run& a_run) {
    std::error_code error;
    json document = {{"cases", json::array()}};
    if (fs::exists(a_cases_path, error)) {
        cases_file file = read_cases_file(a_cases_path, {});
        if (!file.document.is_object() || !file.document.contains("cases") ||
            !file.document["cases"].is_array()) {
            const auto& problem = file.problems.front();
            return a_cases_path.string() + ":" + std::to_string(problem.line) + ":" +
                   std::to_string(problem.column) + ": " + problem.message;
        }
        document = std::move(file.document);
    }
    auto& list = document["cases"];
    const auto taken = [&list](const std::string& a_name) {
        return std::any_of(list.begin(), list.end(), [&](const json& a_item) {
            return a_item.is_object() && a_item.value("name", std::string()) == a_name;
        });
    };
    const std::string base = a_case.name.empty() ? a_case.written_form : a_case.name;
    a_case.name = base;
    for (int number = 2; taken(a_case.name); ++number) {
        a_case.name = base + " (" + std::to_string(number) + ")";
    }
    json item = case_inputs(a_case);
    item["expect"] = snapshot_expectation(a_case, a_run, json());
    list.push_back(std::move(item));
    return write_cases_document(a_cases_path, document);
}

} // namespace qiro_plugin::cases
