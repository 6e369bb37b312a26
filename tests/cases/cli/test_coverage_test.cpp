#include "support/cli_process.hpp"
#include "support/cobertura_dtd.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace qiro_plugin::cli::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

// What a tracefile says of each file, by name: the hits of each DA line, the lines never
// reached, and the totals (LF, LH, BRF, BRH).
struct traced_file {
    std::map<unsigned, unsigned long> hits;
    std::vector<unsigned> not_reached;
    std::map<std::string, std::string> totals;
};

std::map<std::string, traced_file> read_tracefile(const std::string& a_text) {
    std::map<std::string, traced_file> files;
    traced_file* file = nullptr;
    std::istringstream stream(a_text);
    for (std::string line; std::getline(stream, line);) {
        const std::string key = line.substr(0, line.find(':'));
        const std::string value = line.substr(line.find(':') + 1);
        if (key == "SF") {
            file = &files[fs::path(value).filename().string()];
        } else if (file != nullptr && key == "DA") {
            const auto number = static_cast<unsigned>(std::stoul(value));
            file->hits[number] = std::stoul(value.substr(value.find(',') + 1));
            if (file->hits[number] == 0) {
                file->not_reached.push_back(number);
            }
        } else if (file != nullptr) {
            file->totals[key] = value;
        }
    }
    return files;
}

class cli_test_coverage : public ::testing::Test {
protected:
    cli_test_coverage() {
        fs::create_directories(folder);
        for (const char* name : {"branchy_python", "branchy_ruby", "branchy_perl"}) {
            for (const char* extension : {".py", ".rb", ".pl", ".cases.json"}) {
                const fs::path file =
                    fs::path(QIRO_TEST_DATA_DIR "/coverage") / (name + std::string(extension));
                if (fs::exists(file)) {
                    fs::copy_file(file, folder / file.filename());
                }
            }
        }
    }

    cli_sandbox sandbox;
    const fs::path folder = sandbox.root() / "plugins with coverage";
    const fs::path report = sandbox.root() / "report";
};

TEST_F(cli_test_coverage, the_tracefile_names_exactly_the_branch_no_case_takes_in_each_language) {
    const auto result =
        sandbox.run({"test", "-j", "2", "--coverage=" + report.string(), folder.string()});
    ASSERT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_THAT(result.out,
                HasSubstr("\nbranchy_python.py: 7 of 9 lines (77 %), 1 of 2 branches\n"));

    const auto traced = read_tracefile(test_support::read_file(report / "lcov.info"));
    ASSERT_EQ(traced.size(), 3U) << test_support::read_file(report / "lcov.info");
    const auto totals = [&traced](const char* a_name) {
        auto file = traced.at(a_name).totals;
        return file["LF"] + " " + file["LH"] + " " + file["BRF"] + " " + file["BRH"];
    };
    // The fixtures' first lines name the lines of the branch no case takes; the line both cases
    // reach counts both (for Python: in how many cases it ran).
    EXPECT_EQ(traced.at("branchy_python.py").not_reached, (std::vector<unsigned>{8, 9}));
    EXPECT_EQ(traced.at("branchy_ruby.rb").not_reached, (std::vector<unsigned>{8, 9}));
    EXPECT_EQ(traced.at("branchy_perl.pl").not_reached, (std::vector<unsigned>{9, 10}));
    EXPECT_EQ(traced.at("branchy_python.py").hits.at(6), 2U);
    EXPECT_EQ(traced.at("branchy_ruby.rb").hits.at(6), 2U);
    EXPECT_EQ(traced.at("branchy_perl.pl").hits.at(7), 2U);
    EXPECT_EQ(totals("branchy_python.py"), "9 7 2 1");
    EXPECT_EQ(totals("branchy_ruby.rb"), "11 9 2 1");
    EXPECT_EQ(totals("branchy_perl.pl"), "9 7 2 1");

    const std::string cobertura = test_support::read_file(report / "cobertura.xml");
    EXPECT_EQ(test_support::cobertura_dtd_error(cobertura), "") << cobertura;
    EXPECT_THAT(cobertura, HasSubstr("lines-covered=\"23\" lines-valid=\"29\""));

    // genhtml makes its report of the tracefile as it stands, without a word of warning.
    const auto html =
        sandbox.run_program({"/usr/bin/genhtml", "--branch-coverage", "-o",
                             (report / "html").string(), (report / "lcov.info").string()});
    EXPECT_EQ(html.status, 0) << html.err;
    EXPECT_EQ(html.err, "");
    EXPECT_TRUE(fs::exists(report / "html" / "index.html"));

    // Confined, the runs measure the same lines, and nothing of their private folders is left.
    const auto confined =
        sandbox.run({"test", "--sandbox", "--coverage=" + (report / "confined").string(), "-j", "2",
                     folder.string()});
    ASSERT_EQ(confined.status, 0) << confined.out << confined.err;
    EXPECT_EQ(test_support::read_file(report / "confined" / "lcov.info"),
              test_support::read_file(report / "lcov.info"));
    for (const auto& name :
         test_support::names_in(sandbox.home() / "Library/Preferences/QIRO Lumen")) {
        EXPECT_EQ(name.find("coverage"), std::string::npos) << name;
    }
}

TEST_F(cli_test_coverage, fail_under_fails_a_plugin_below_the_percentage_only) {
    const std::string plugin = (folder / "branchy_ruby.rb").string();
    const auto below =
        sandbox.run({"test", "--coverage=" + report.string(), "--fail-under", "82", plugin});
    EXPECT_EQ(below.status, 1);
    EXPECT_THAT(below.err, HasSubstr("branchy_ruby.rb: 81.8 % of its lines reached, under 82 %"));
    const auto above =
        sandbox.run({"test", "--coverage=" + report.string(), "--fail-under", "81.8", plugin});
    EXPECT_EQ(above.status, 0) << above.err;
    // The threshold means nothing without coverage; the fast mode would miss what runs while
    // the plug-in loads, so it is refused before any case runs.
    EXPECT_EQ(sandbox.run({"test", "--fail-under", "50", plugin}).status, 2);
    const auto fast = sandbox.run({"test", "--fast", "--coverage=" + report.string(), plugin});
    EXPECT_EQ(fast.status, 2);
    EXPECT_THAT(fast.err, HasSubstr("--fast and --coverage do not combine"));
    EXPECT_EQ(fast.out, "");
}

} // namespace
} // namespace qiro_plugin::cli::testing
