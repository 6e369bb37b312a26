#include "cases/case_check.hpp"

#include "cases/comment_text.hpp"
#include "core/run_verdict.hpp"
#include "text/utf8_text.hpp"

#include <algorithm>

namespace qiro_plugin::cases {

namespace {

using candidate = message_script::candidate;

std::string utf8(const utf16_string& a_text) {
    return string_encode::to_utf8_marked(a_text);
}

bool matches(const candidate_pattern& a_pattern, const candidate& a_candidate) {
    return std::all_of(a_pattern.begin(), a_pattern.end(), [&](const auto& a_field) {
        return candidate_field(a_candidate, a_field.first) == a_field.second;
    });
}

// Only the fields the pattern names, so that a diff line sets like beside like.
std::string shown(const candidate_pattern& a_pattern) {
    std::string text;
    for (const auto& [field, value] : a_pattern) {
        text += (text.empty() ? "" : ", ") + field + "=" + nlohmann::json(value).dump();
    }
    return text;
}

std::string shown(const candidate& a_candidate, const candidate_pattern* a_like) {
    if (a_like != nullptr) {
        candidate_pattern actual;
        for (const auto& field : *a_like) {
            actual.emplace_back(field.first, candidate_field(a_candidate, field.first));
        }
        return shown(actual);
    }
    return shown(candidate_pattern{{"hyoki", utf8(a_candidate.title)}});
}

std::string numbered(std::size_t a_index, const std::string& a_text) {
    return std::to_string(a_index + 1) + ". " + a_text;
}

// In order: exact and prefix compare position by position.
bool ordered_diff(const std::vector<candidate_pattern>& a_expected,
                  const std::vector<candidate>& a_actual, bool a_whole_list,
                  std::vector<std::string>& a_diff) {
    bool equal =
        a_whole_list ? a_expected.size() == a_actual.size() : a_expected.size() <= a_actual.size();
    const std::size_t end =
        a_whole_list ? std::max(a_expected.size(), a_actual.size()) : a_expected.size();
    for (std::size_t index = 0; index < end; ++index) {
        const candidate_pattern* expected =
            index < a_expected.size() ? &a_expected[index] : nullptr;
        const candidate* actual = index < a_actual.size() ? &a_actual[index] : nullptr;
        if (expected != nullptr && actual != nullptr && matches(*expected, *actual)) {
            a_diff.push_back("  " + numbered(index, shown(*expected)));
            continue;
        }
        equal = false;
        if (expected != nullptr) {
            a_diff.push_back("- " + numbered(index, shown(*expected)));
        }
        if (actual != nullptr) {
            a_diff.push_back("+ " + numbered(index, shown(*actual, expected)));
        }
    }
    if (!a_whole_list && a_actual.size() > a_expected.size()) {
        a_diff.push_back("  (" + std::to_string(a_actual.size() - a_expected.size()) +
                         " more candidates, not compared)");
    }
    return equal;
}

// Anywhere: each expected candidate takes the first unused candidate it matches.
bool unordered_diff(const std::vector<candidate_pattern>& a_expected,
                    const std::vector<candidate>& a_actual, std::vector<std::string>& a_diff) {
    std::vector<bool> used(a_actual.size(), false);
    bool equal = true;
    for (const auto& expected : a_expected) {
        std::size_t found = 0;
        while (found < a_actual.size() && (used[found] || !matches(expected, a_actual[found]))) {
            ++found;
        }
        if (found < a_actual.size()) {
            used[found] = true;
            a_diff.push_back("  " + numbered(found, shown(expected)));
        } else {
            equal = false;
            a_diff.push_back("- " + shown(expected));
        }
    }
    if (!equal) {
        for (std::size_t index = 0; index < a_actual.size(); ++index) {
            if (!used[index]) {
                a_diff.push_back("+ " + numbered(index, shown(a_actual[index], nullptr)));
            }
        }
    }
    return equal;
}

const char* match_name(match_mode a_mode) {
    switch (a_mode) {
    case match_mode::exact:
        return "exact";
    case match_mode::prefix:
        return "prefix";
    case match_mode::contains:
        return "contains";
    }
    return "exact";
}

} // namespace

std::string candidate_field(const candidate& a_candidate, const std::string& a_field) {
    if (a_field == "hyoki") {
        return utf8(a_candidate.title);
    }
    if (a_field == "comment") {
        return utf8(a_candidate.comment);
    }
    if (a_field == "comment_text") {
        return comment_text(utf8(a_candidate.comment));
    }
    if (a_field == "alternative") {
        return utf8(a_candidate.alternative);
    }
    if (a_field == "alternative_type") {
        return utf8(a_candidate.alternative_type);
    }
    if (a_field == "alternative_alias") {
        return utf8(a_candidate.alternative_alias);
    }
    if (a_field == "info") {
        return utf8(a_candidate.info);
    }
    return {};
}

std::string run_error_summary(const test_case& a_case, const case_run& a_run) {
    const auto& report = a_run.report;
    const auto verdict = debugger::judge_run(report, a_case.kind, a_run.plugin.second);
    if (verdict.severity != debugger::run_verdict::level::success) {
        return utf8(debugger::verdict_text(verdict, debugger::text_language::english));
    }
    for (const auto& finding : report.findings) {
        if (finding.level == diagnosis::severity::error) {
            return "the diagnosis found " + finding.code + ": " + finding.message;
        }
    }
    return {};
}

check_result check_case(const test_case& a_case, const case_run& a_run) {
    check_result result;
    const auto& expect = a_case.expect;
    const auto& report = a_run.report;

    if (expect.no_errors) {
        if (const auto error = run_error_summary(a_case, a_run); !error.empty()) {
            result.problems.push_back("expected no errors, but " + error);
        }
    }
    if (expect.count && report.candidates.size() != *expect.count) {
        result.problems.push_back("expected " + std::to_string(*expect.count) +
                                  " candidates, got " + std::to_string(report.candidates.size()));
    }
    if (expect.candidates) {
        const bool equal = expect.match == match_mode::contains
                               ? unordered_diff(*expect.candidates, report.candidates, result.diff)
                               : ordered_diff(*expect.candidates, report.candidates,
                                              expect.match == match_mode::exact, result.diff);
        if (equal) {
            result.diff.clear();
        } else {
            result.problems.push_back(std::string("the candidates differ (match ") +
                                      match_name(expect.match) + "), " +
                                      std::to_string(report.candidates.size()) + " given");
        }
    }
    for (const auto& code : expect.diagnosis) {
        const bool found =
            std::any_of(report.findings.begin(), report.findings.end(),
                        [&](const auto& a_finding) { return a_finding.code == code; });
        if (!found) {
            result.problems.push_back("expected the diagnosis " + code + ", which was not found");
        }
    }
    for (const auto& text : expect.stderr_contains) {
        if (a_run.std_error_pane.find(text) == std::string::npos) {
            result.problems.push_back("the standard error does not contain " +
                                      nlohmann::json(text).dump());
        }
    }
    result.passed = result.problems.empty();
    return result;
}

} // namespace qiro_plugin::cases
