#include "cases/case_check.hpp"
#include "cases/case_file.hpp"
#include "cases/junit_report.hpp"
#include "junit_schema.hpp"
#include "text/string_encode.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qiro_plugin::cases {
namespace {

using ::testing::HasSubstr;

std::string problems_of(const std::string& a_text) {
    const auto file = parse_cases_text(a_text, "my.cases.json", {});
    std::string joined;
    for (const auto& problem : file.problems) {
        joined += std::to_string(problem.line) + ":" + std::to_string(problem.column) + " " +
                  problem.message + "\n";
    }
    return joined;
}

TEST(cases_file, names_the_line_and_column_of_each_problem) {
    struct row {
        const char* text;
        const char* expected;
    };
    const row rows[] = {
        {"{\"cases\": [\n  {\"name\": \"a\",, }]}", "2:16 not JSON: "},
        {"", "1:1 not JSON: "},
        {"[1, 2]", "1:1 a cases file is an object whose \"cases\""},
        {"{\"cases\": [], \"extra\": 1}", "1:24 unknown member \"extra\""},
        // Columns count characters: the two kana before the error are one column each.
        {"{\"cases\": [{\"name\": \"かな\", \"written_form\": 5}]}",
         "1:43 \"written_form\" must be a string"},
        {"{\"cases\": [\n {\"name\": \"a\"}]}", "2:2 a case names exactly one of"},
        {"{\"cases\": [{\"written_form\": \"x\"}]}", "1:12 \"name\" is missing"},
        {"{\"cases\": [{\"name\": \"a\", \"written_form\": \"\"}]}",
         "1:42 \"written_form\" is empty"},
        {"{\"cases\": [{\"name\": \"a\", \"preference\": true, \"expect\": {\"count\": 1}}]}",
         "1:66 \"count\" applies to a candidate search only"},
        {"{\"cases\": [{\"name\": \"a\", \"written_form\": \"x\",\n \"expect\": {\"match\": "
         "\"all\", "
         "\"count\": -1, \"candidates\": [{}, {\"hyoki\": 1, \"hyouki\": \"x\"}]}}]}",
         "2:22 \"match\" must be"},
        {"{\"cases\": [{\"name\": \"a\", \"written_form\": \"x\"}, {\"name\": \"a\", "
         "\"preference\": "
         "true}]}",
         "1:57 a second case named \"a\""},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_THAT(problems_of(text), HasSubstr(expected)) << text;
    }
    // Every problem of a case is told, not only the first.
    const std::string many = problems_of(rows[9].text);
    for (const char* part : {"2:38 \"count\" must be", "2:57 an expected candidate must",
                             "2:71 \"hyoki\" must be", "2:84 unknown member \"hyouki\""}) {
        EXPECT_THAT(many, HasSubstr(part));
    }
    EXPECT_EQ(parse_cases_text(rows[9].text, "x", {}).cases.size(), 0u);
    // A hostile nesting is one more problem, not a crash.
    const std::string deep = std::string(200000, '[') + std::string(200000, ']');
    EXPECT_THAT(problems_of("{\"cases\": [{\"name\": \"a\", \"written_form\": " + deep + "}]}"),
                HasSubstr("\"written_form\" must be a string"));
}

TEST(cases_file, reads_every_kind_of_case_and_finds_its_plugin) {
    const auto file = parse_cases_text(R"({"$schema": "s", "cases": [
        {"name": "search", "written_form": "変換", "reading": "へんかん",
         "expect": {"candidates": [{"hyoki": "a", "info": "b"}], "match": "contains",
                    "count": 3, "no_errors": false, "diagnosis": ["stray_output"],
                    "stderr_contains": "warn"}},
        {"name": "commit", "callback": {"candidate": "候補", "written_form": "w"}},
        {"name": "settings", "preference": true, "expect": {"stderr_contains": ["x", "y"]}}]})",
                                       "p.cases.json", {});
    ASSERT_TRUE(file.problems.empty()) << file.problems.front().message;
    ASSERT_EQ(file.cases.size(), 3u);
    const auto& search = file.cases[0];
    EXPECT_EQ(search.kind, case_kind::processing);
    EXPECT_EQ(search.reading, "へんかん");
    EXPECT_EQ(search.expect.candidates->at(0), (candidate_pattern{{"hyoki", "a"}, {"info", "b"}}));
    EXPECT_EQ(search.expect.match, match_mode::contains);
    EXPECT_EQ(search.expect.count, 3u);
    EXPECT_FALSE(search.expect.no_errors);
    EXPECT_EQ(search.expect.diagnosis, std::vector<std::string>{"stray_output"});
    EXPECT_EQ(search.expect.stderr_contains, std::vector<std::string>{"warn"});
    EXPECT_EQ(file.cases[1].kind, case_kind::callback);
    EXPECT_EQ(file.cases[1].candidate, "候補");
    EXPECT_EQ(file.cases[1].written_form, "w");
    EXPECT_TRUE(file.cases[1].expect.no_errors);
    EXPECT_EQ(file.cases[2].kind, case_kind::preference);
    EXPECT_EQ(file.cases[2].expect.stderr_contains.size(), 2u);

    EXPECT_EQ(cases_path_for("/p/my.plugin.py"), "/p/my.plugin.cases.json");
    EXPECT_EQ(plugin_for_cases(QIRO_TEST_DATA_DIR "/cli/raises_error.cases.json"),
              std::filesystem::path(QIRO_TEST_DATA_DIR "/cli/raises_error.py"));
    EXPECT_FALSE(plugin_for_cases(QIRO_TEST_DATA_DIR "/cli/nothing.cases.json"));
}

message_script::candidate make_candidate(const char16_t* a_title, const char16_t* a_info) {
    message_script::candidate candidate;
    candidate.title = a_title;
    candidate.info = a_info;
    return candidate;
}

TEST(case_check, compares_what_the_case_names_and_says_what_differs) {
    using outcome = debugger::run_report::outcome;
    const auto expectation_of = [](const std::string& a_expect) {
        auto file = parse_cases_text(R"({"cases": [{"name": "c", "written_form": "w", "expect": )" +
                                         a_expect + "}]}",
                                     "f", {});
        EXPECT_TRUE(file.problems.empty()) << a_expect;
        return file.cases.at(0);
    };
    case_run good;
    good.report.result = outcome::completed;
    good.report.document_parsed = true;
    good.report.candidates = {make_candidate(u"一", u"n"), make_candidate(u"二", u"m")};
    good.std_error_pane = "warning: slow\r\n";
    case_run unparsed = good;
    unparsed.report.document_parsed = false;
    case_run flagged = good;
    flagged.report.findings.push_back(
        {"stray_output", diagnosis::severity::error, "m", "", {}, {}, {}, {}});
    case_run noted = good;
    noted.report.findings.push_back(
        {"interpreter_slow", diagnosis::severity::note, "m", "", {}, {}, {}, {}});
    // Comments as the host receives them: a plain one in the bridges' wrapper, and a document
    // the plug-in wrote itself.
    case_run commented = good;
    commented.report.candidates[0].comment =
        u"<?xml version=\"1.0\" encoding=\"UTF-8\" ?><html xmlns=\"http://www.w3.org/1999/xhtml\">"
        u"<head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\" />"
        u"</head><body><h2>一</h2>a &lt; b&amp;amp;<br />c</body></html>";
    commented.report.candidates[1].comment = u"<html><body><p>x &amp; <b>y</b></p></body></html>";
    case_run crashed;
    crashed.report.result = outcome::failed;
    crashed.report.error = "boom";

    struct row {
        const char* expect;
        const case_run* run;
        const char* problems; // empty: passes
        const char* diff;
    };
    const row rows[] = {
        {R"({})", &good, "", ""},
        {R"({})", &noted, "", ""},
        {R"({})", &unparsed, "not a result document", ""},
        {R"({})", &flagged, "the diagnosis found stray_output", ""},
        {R"({})", &crashed, "ended with an error: boom", ""},
        {R"({"no_errors": false, "diagnosis": ["stray_output"]})", &flagged, "", ""},
        {R"({"no_errors": false, "diagnosis": "timed_out"})", &flagged, "timed_out", ""},
        {R"({"count": 2, "candidates": [{"hyoki": "一"}, {"hyoki": "二", "info": "m"}]})", &good,
         "", ""},
        {R"({"count": 3})", &good, "expected 3 candidates, got 2", ""},
        {R"({"count": 1})", &good, "expected 1 candidates, got 2", ""},
        {R"({"candidates": [{"hyoki": "一"}]})", &good, "differ (match exact)",
         "  1. hyoki=\"一\"\n+ 2. hyoki=\"二\"\n"},
        {R"({"candidates": [{"hyoki": "一"}], "match": "prefix"})", &good, "", ""},
        {R"({"candidates": [{"hyoki": "二", "info": "x"}], "match": "prefix"})", &good,
         "differ (match prefix)",
         "- 1. hyoki=\"二\", info=\"x\"\n+ 1. hyoki=\"一\", info=\"n\"\n"
         "  (1 more candidates, not compared)\n"},
        {R"({"candidates": [{"hyoki": "二"}, {"info": "n"}], "match": "contains"})", &good, "", ""},
        {R"({"candidates": [{"hyoki": "三"}], "match": "contains"})", &good,
         "differ (match contains)", "- hyoki=\"三\"\n+ 1. hyoki=\"一\"\n+ 2. hyoki=\"二\"\n"},
        {R"({"stderr_contains": ["slow", "fast"]})", &good, "does not contain \"fast\"", ""},
        {R"({"candidates": [{"comment_text": "a < b&amp;\\nc"}, {"comment_text": "x & y"}]})",
         &commented, "", ""},
        {R"({"candidates": [{"comment_text": "a < b&amp;\nc"}], "match": "prefix"})", &commented,
         "differ (match prefix)",
         "- 1. comment_text=\"a < b&amp;\\nc\"\n+ 1. comment_text=\"a < b&amp;\\\\nc\"\n"
         "  (1 more candidates, not compared)\n"},
        {R"({"candidates": [{"hyoki": "一", "comment_text": ""}], "match": "prefix"})", &commented,
         "differ (match prefix)", nullptr},
    };
    const auto lines_of = [](const std::vector<std::string>& a_lines) {
        std::string joined;
        for (const auto& line : a_lines) {
            joined += line + "\n";
        }
        return joined;
    };
    for (const auto& [expect, run, problems, diff] : rows) {
        const auto result = check_case(expectation_of(expect), *run);
        const std::string joined = lines_of(result.problems);
        const std::string diff_text = lines_of(result.diff);
        EXPECT_EQ(result.passed, *problems == '\0') << expect << "\n" << joined;
        EXPECT_THAT(joined, HasSubstr(problems)) << expect;
        if (diff != nullptr) {
            EXPECT_EQ(diff_text, diff) << expect;
        }
    }
}

TEST(junit_report, hostile_text_still_validates_against_the_junit_schema) {
    auto file = parse_cases_text(R"({"cases": [{"name": "<pass> & \"q\"", "written_form": "a"},
        {"name": "fail]]>", "written_form": "b"}, {"name": "skipped", "written_form": "c"},
        {"name": 7}]})",
                                 "/f/x.cases.json", {});
    case_outcome passed;
    passed.check.passed = true;
    passed.seconds = 0.25;
    case_outcome failed;
    failed.check.problems = {"bad \x01 control, \xff\xfe broken UTF-8, \xed\xa0\x80 surrogate"};
    failed.check.diff = {"- 1. hyoki=\"<&>\""};
    failed.run.std_output_pane = "syntax ok\r\n\x1b[31m";
    const suite_result suite{&file, {&passed, &failed, nullptr}};
    const std::string xml = junit_xml({suite});
    EXPECT_EQ(test_support::junit_schema_error(xml), "") << xml;
    EXPECT_THAT(xml, HasSubstr("tests=\"5\" failures=\"1\" errors=\"2\" skipped=\"1\""));
    EXPECT_THAT(xml, HasSubstr("bad \xEF\xBF\xBD control, \xEF\xBF\xBD\xEF\xBF\xBD broken"));
    EXPECT_THAT(xml, HasSubstr("<testcase name=\"cases file\" classname=\"x\""));
    // A document that breaks the layout is refused: the check above can fail.
    EXPECT_NE(test_support::junit_schema_error("<testsuites><testcase name=\"a\"/></testsuites>"),
              "");
}

} // namespace
} // namespace qiro_plugin::cases
