#include "cases/junit_report.hpp"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <sstream>
#include <unistd.h>

namespace qiro_plugin::cases {

namespace {

std::string seconds_text(double a_seconds) {
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.3f", a_seconds);
    return buffer;
}

std::string timestamp() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::gmtime_r(&now, &parts);
    char buffer[32];
    std::strftime(buffer, sizeof buffer, "%Y-%m-%dT%H:%M:%S", &parts);
    return buffer;
}

std::string host_name() {
    char buffer[256] = {};
    if (::gethostname(buffer, sizeof buffer - 1) != 0) {
        return "localhost";
    }
    return buffer;
}

std::string attribute(const char* a_name, const std::string& a_value) {
    return std::string(" ") + a_name + "=\"" + xml_text(a_value) + "\"";
}

std::string problem_text(const file_problem& a_problem, const cases_file& a_file) {
    std::string text = a_file.path.string();
    if (a_problem.line > 0) {
        text.append(":").append(std::to_string(a_problem.line));
        text.append(":").append(std::to_string(a_problem.column));
    }
    return text + ": " + a_problem.message;
}

} // namespace

std::string xml_text(const std::string& a_text) {
    static const std::string replacement = "\xEF\xBF\xBD";
    std::string result;
    result.reserve(a_text.size());
    for (std::size_t at = 0; at < a_text.size();) {
        const auto byte = static_cast<unsigned char>(a_text[at]);
        std::size_t length = byte < 0x80           ? 1
                             : (byte >> 5) == 0x6  ? 2
                             : (byte >> 4) == 0xE  ? 3
                             : (byte >> 3) == 0x1E ? 4
                                                   : 0;
        bool valid = length > 0 && at + length <= a_text.size();
        std::uint32_t code = length == 1 ? byte : byte & (0x7F >> length);
        for (std::size_t next = 1; valid && next < length; ++next) {
            const auto continuation = static_cast<unsigned char>(a_text[at + next]);
            valid = (continuation & 0xC0) == 0x80;
            code = (code << 6) | (continuation & 0x3F);
        }
        // Overlong forms, surrogates and the characters XML 1.0 excludes.
        valid = valid && !(length == 2 && code < 0x80) && !(length == 3 && code < 0x800) &&
                !(length == 4 && (code < 0x10000 || code > 0x10FFFF)) &&
                !(code >= 0xD800 && code <= 0xDFFF) && code != 0xFFFE && code != 0xFFFF &&
                (code >= 0x20 || code == 0x9 || code == 0xA || code == 0xD);
        if (!valid) {
            result += replacement;
            at += length == 0 ? 1 : std::max<std::size_t>(1, std::min(length, a_text.size() - at));
            continue;
        }
        switch (byte) {
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '&':
            result += "&amp;";
            break;
        case '"':
            result += "&quot;";
            break;
        case '\r':
            result += "&#13;"; // kept through the parser's line-end normalisation
            break;
        default:
            result.append(a_text, at, length);
        }
        at += length;
    }
    return result;
}

std::string junit_xml(const std::vector<suite_result>& a_suites) {
    std::size_t tests = 0;
    std::size_t failures = 0;
    std::size_t errors = 0;
    double seconds = 0.0;
    std::ostringstream suites;
    const std::string when = timestamp();
    const std::string host = host_name();
    for (std::size_t number = 0; number < a_suites.size(); ++number) {
        const auto& suite = a_suites[number];
        const auto& file = *suite.file;
        std::size_t suite_failures = 0;
        double suite_seconds = 0.0;
        std::ostringstream cases;
        // The plug-in's stem, as a class groups its tests.
        std::string class_name = file.path.filename().string();
        class_name = class_name.substr(0, class_name.find(".cases.json"));
        std::size_t suite_skipped = 0;
        for (std::size_t index = 0; index < file.cases.size(); ++index) {
            const auto& the_case = file.cases[index];
            const case_outcome* outcome = suite.outcomes[index];
            const double time = outcome != nullptr ? outcome->seconds : 0.0;
            suite_seconds += time;
            cases << "    <testcase" << attribute("name", the_case.name)
                  << attribute("classname", class_name) << attribute("time", seconds_text(time));
            if (outcome == nullptr || outcome->skipped) {
                ++suite_skipped;
                cases << ">\n      <skipped/>\n    </testcase>\n";
                continue;
            }
            if (outcome->check.passed) {
                cases << "/>\n";
                continue;
            }
            ++suite_failures;
            std::string body;
            for (const auto& problem : outcome->check.problems) {
                body += problem + "\n";
            }
            for (const auto& line : outcome->check.diff) {
                body += line + "\n";
            }
            const std::string& first = outcome->check.problems.front();
            cases << ">\n      <failure" << attribute("message", first)
                  << attribute("type", "mismatch") << ">" << xml_text(body) << "</failure>\n"
                  << "      <system-out>" << xml_text(outcome->run.std_output_pane)
                  << "</system-out>\n      <system-err>" << xml_text(outcome->run.std_error_pane)
                  << "</system-err>\n    </testcase>\n";
        }
        for (const auto& problem : file.problems) {
            const std::string text = problem_text(problem, file);
            cases << "    <testcase" << attribute("name", "cases file")
                  << attribute("classname", class_name) << attribute("time", "0.000")
                  << ">\n      <error" << attribute("message", text)
                  << attribute("type", "bad cases file") << ">" << xml_text(text)
                  << "</error>\n    </testcase>\n";
        }
        const std::size_t suite_tests = file.cases.size() + file.problems.size();
        tests += suite_tests;
        failures += suite_failures;
        errors += file.problems.size();
        seconds += suite_seconds;
        suites << "  <testsuite" << attribute("name", file.path.filename().string())
               << attribute("tests", std::to_string(suite_tests))
               << attribute("failures", std::to_string(suite_failures))
               << attribute("errors", std::to_string(file.problems.size()))
               << attribute("skipped", std::to_string(suite_skipped))
               << attribute("time", seconds_text(suite_seconds)) << attribute("timestamp", when)
               << attribute("hostname", host) << attribute("id", std::to_string(number))
               << attribute("package", file.path.parent_path().string()) << ">\n"
               << cases.str() << "  </testsuite>\n";
    }
    std::ostringstream document;
    document << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites"
             << attribute("name", "qiro-lumen test") << attribute("tests", std::to_string(tests))
             << attribute("failures", std::to_string(failures))
             << attribute("errors", std::to_string(errors))
             << attribute("time", seconds_text(seconds)) << ">\n"
             << suites.str() << "</testsuites>\n";
    return document.str();
}

} // namespace qiro_plugin::cases
