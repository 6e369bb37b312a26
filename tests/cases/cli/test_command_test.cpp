#include "cases/junit_schema.hpp"
#include "support/cli_process.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <regex>

namespace qiro_plugin::cli::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

// The per-case times are the only part of the output that changes from run to run.
std::string without_times(const std::string& a_output) {
    return std::regex_replace(a_output, std::regex(R"( \(\d+\.\d\d s\))"), "");
}

class cli_test_command : public ::testing::Test {
protected:
    cli_test_command() {
        fs::create_directories(folder);
        const fs::path data = QIRO_TEST_DATA_DIR;
        // One plug-in per language, each with the same cases: passing, failing and malformed.
        for (const char* extension : {"pl", "py", "rb"}) {
            const std::string stem = std::string("lang_") + extension;
            fs::copy_file(data / "runtime" / (std::string("candidates.") + extension),
                          folder / (stem + "." + extension));
            fs::copy_file(data / "cases" / "candidates.cases.json",
                          folder / (stem + ".cases.json"));
        }
        fs::copy_file(data / "cli" / "raises_error.py", folder / "raises_error.py");
        fs::copy_file(data / "cases" / "raises_error.cases.json",
                      folder / "raises_error.cases.json");
    }

    cli_sandbox sandbox;
    const fs::path folder = sandbox.root() / "cases";
};

TEST_F(cli_test_command, runs_cases_of_each_language_in_parallel_as_serially) {
    const auto serial = sandbox.run({"test", "-j", "1", folder.string()});
    const fs::path junit = sandbox.root() / "report.xml";
    const auto parallel =
        sandbox.run({"test", "-j", "2", "--junit", junit.string(), folder.string()});
    EXPECT_EQ(serial.status, 2) << serial.err;
    EXPECT_EQ(without_times(parallel.out), without_times(serial.out));
    EXPECT_EQ(parallel.err, serial.err);
    EXPECT_EQ(parallel.status, serial.status);

    for (const char* extension : {"pl", "py", "rb"}) {
        const std::string file = std::string("lang_") + extension + ".cases.json";
        for (const char* pass : {"first candidate", "both", "second anywhere"}) {
            EXPECT_THAT(serial.out, HasSubstr("PASS " + file + ": " + pass + " (")) << extension;
        }
        EXPECT_THAT(serial.out, HasSubstr("FAIL " + file + ": wrong (")) << serial.out;
        EXPECT_THAT(serial.err, HasSubstr((folder / file).string() +
                                          ":14:43: error: \"written_form\" is empty"));
        EXPECT_THAT(serial.err,
                    HasSubstr((folder / file).string() + ":15:26: error: \"match\" must be"));
    }
    EXPECT_THAT(serial.out, HasSubstr("    the candidates differ (match exact), 2 given\n"
                                      "    the standard error does not contain \"never printed\"\n"
                                      "    candidates (- expected, + actual):\n"
                                      "    - 1. hyoki=\"z\"\n"
                                      "    + 1. hyoki=\"z候補\"\n"
                                      "    + 2. hyoki=\"second\"\n"));
    EXPECT_THAT(serial.out, HasSubstr("PASS raises_error.cases.json: error shown ("));
    EXPECT_THAT(serial.out, HasSubstr("FAIL raises_error.cases.json: error not wanted ("));
    EXPECT_THAT(serial.out, HasSubstr("\n10 passed, 10 failed\n"));

    const std::string report = test_support::read_file(junit);
    EXPECT_EQ(test_support::junit_schema_error(report), "") << report;
    EXPECT_THAT(report, HasSubstr("<testsuites name=\"qiro-lumen test\" tests=\"20\" "
                                  "failures=\"4\" errors=\"6\""));

    // Without the malformed case the status tells pass from fail.
    EXPECT_EQ(sandbox.run({"test", (folder / "raises_error.py").string(), "--case", "error shown"})
                  .status,
              0);
    EXPECT_EQ(sandbox.run({"test", (folder / "raises_error.cases.json").string()}).status, 1);
    for (const auto& bad : std::vector<std::vector<std::string>>{
             {"test", (folder / "missing.py").string()},
             {"test", folder.string(), "--case", "no such case"},
             {"test", "-j", "0", folder.string()},
             {"test", "--plugin-folder", (sandbox.root() / "home").string()}}) {
        EXPECT_EQ(sandbox.run(bad).status, 2) << bad.back();
    }
}

TEST_F(cli_test_command, update_writes_the_runs_as_expectations_and_keeps_the_rest) {
    const fs::path cases = folder / "lang_py.cases.json";
    test_support::write_file(cases, R"({"description": "kept", "cases": [
        {"name": "snap", "written_form": "q", "expect": {"count": 5, "stderr_contains": "x"}},
        {"name": "broken", "written_form": "q", "expect": {"count": -1}},
        {"name": "other", "written_form": "o"}]})");
    const std::string broken = test_support::read_file(cases);
    auto result = sandbox.run({"test", "--update", "--case", "snap", cases.string()});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.err, HasSubstr("not updating " + cases.string()));
    EXPECT_EQ(test_support::read_file(cases), broken);

    auto document = nlohmann::ordered_json::parse(broken);
    document["cases"].erase(1);
    test_support::write_file(cases, document.dump(2));
    result = sandbox.run({"test", "--update", "--case", "snap", cases.string()});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("updated lang_py.cases.json: snap\n"
                                      "      {\n"
                                      "    -   \"count\": 5,\n"
                                      "    -   \"stderr_contains\": \"x\"\n"
                                      "    +   \"candidates\": [\n"));
    document = nlohmann::ordered_json::parse(test_support::read_file(cases));
    EXPECT_EQ(document["description"], "kept");
    EXPECT_FALSE(document["cases"][1].contains("expect"));
    EXPECT_EQ(document["cases"][0]["expect"]["candidates"][0],
              nlohmann::ordered_json::parse(R"({"hyoki": "q候補", "comment": "<p>説明</p>",
                  "alternative": "a<b", "alternative_type": "definite_string",
                  "alternative_alias": "別名", "info": "名詞"})"));

    result = sandbox.run({"test", cases.string()});
    EXPECT_EQ(result.status, 0) << result.out;
    EXPECT_THAT(result.out, HasSubstr("2 passed, 0 failed\n"));
    result = sandbox.run({"test", "--update", cases.string()});
    EXPECT_THAT(result.out, HasSubstr("unchanged lang_py.cases.json: snap\n"));
    EXPECT_THAT(result.out, HasSubstr("updated lang_py.cases.json: other\n"));
    // A second snapshot of the same runs changes nothing, not even the bytes.
    const std::string snapshot = test_support::read_file(cases);
    result = sandbox.run({"test", "--update", cases.string()});
    EXPECT_THAT(result.out, HasSubstr("unchanged lang_py.cases.json: other\n"));
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(test_support::read_file(cases), snapshot);
}

} // namespace
} // namespace qiro_plugin::cli::testing
