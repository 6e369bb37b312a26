#include "core/coverage_companion.hpp"
#include "core/debug_runner.hpp"
#include "core/pane_text_sink.hpp"
#include "coverage/coverage_writers.hpp"
#include "platform/command_runner.hpp"
#include "platform/data_folder.hpp"
#include "support/run_fakes.hpp"
#include "support/scratch_folder.hpp"
#include "text/string_encode.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <sstream>

namespace qiro_plugin::debugger {
namespace {

using test_support::read_file;
using test_support::scratch_folder;
using test_support::write_file;

const plugin_entry fixture(const char* a_name) {
    const std::string folder = QIRO_TEST_DATA_DIR "/coverage/";
    const std::string name = a_name;
    return {utf16_string(folder.begin(), folder.end()), utf16_string(name.begin(), name.end())};
}

// A fresh home for the runs' data folder, and the system's interpreters first on PATH.
class coverage_companion_test : public ::testing::Test {
protected:
    coverage_companion_test() {
        ::setenv("HOME", m_home.path().c_str(), 1);
        ::setenv("QIRO_MACHINE_PREFERENCES_DIR", m_home.path().c_str(), 1);
        m_path = std::getenv("PATH");
        ::setenv("PATH", ("/usr/bin:/bin:" + m_path).c_str(), 1);
    }
    ~coverage_companion_test() override { ::setenv("PATH", m_path.c_str(), 1); }

    run_report run(const char* a_plugin, const char16_t* a_written_form,
                   coverage_collection* a_coverage) {
        pane_text_sink panes;
        testing::recording_sinks alerts;
        debug_runner runner(panes, alerts);
        auto request = processing_request(fixture(a_plugin), a_written_form);
        if (a_coverage != nullptr) {
            request.options.companions.push_back(a_coverage->companion());
        }
        return runner.run(request);
    }

    scratch_folder m_home;
    std::string m_path;
};

// The lines of a tracefile with their counts, and its totals.
struct tracefile {
    std::map<unsigned, unsigned long> lines;
    std::map<std::string, std::string> totals; // LF, LH, BRF, BRH
    std::vector<std::string> branches;         // BRDA values
};

tracefile read_tracefile(const std::string& a_text) {
    tracefile read;
    std::istringstream stream(a_text);
    for (std::string line; std::getline(stream, line);) {
        const auto colon = line.find(':');
        const std::string key = line.substr(0, colon);
        const std::string value = colon == std::string::npos ? "" : line.substr(colon + 1);
        if (key == "DA") {
            read.lines[std::stoul(value)] = std::stoul(value.substr(value.find(',') + 1));
        } else if (key == "BRDA") {
            read.branches.push_back(value);
        } else if (key == "LF" || key == "LH" || key == "BRF" || key == "BRH") {
            read.totals[key] = value;
        }
    }
    return read;
}

struct language_case {
    const char* plugin;
    std::vector<unsigned> not_reached; // exactly the lines of the branch no case takes
    const char* lines_found;
    const char* branches_found;
    const char* branches_hit;
    unsigned then_line; // reached by both runs
    unsigned long then_hits;
    friend void PrintTo(const language_case& a_case, std::ostream* a_out) {
        *a_out << a_case.plugin;
    }
};

class coverage_per_language : public coverage_companion_test,
                              public ::testing::WithParamInterface<language_case> {};

TEST_P(coverage_per_language, the_tracefile_names_exactly_the_branch_no_run_takes) {
    const auto& expected = GetParam();
    coverage_collection coverage;
    for (const char16_t* written_form : {u"apple", u"abc"}) {
        const auto report = run(expected.plugin, written_form, &coverage);
        ASSERT_EQ(report.result, run_report::outcome::completed) << report.refusal;
        ASSERT_EQ(report.candidates.size(), 1U) << report.run_std_error;
        // The tool says nothing on the plug-in's streams.
        EXPECT_EQ(report.run_std_error, "");
    }
    EXPECT_TRUE(coverage.problems().empty()) << coverage.problems().front();
    const auto files = coverage.files();
    ASSERT_EQ(files.size(), 1U);
    const auto text = coverage::lcov_tracefile(files);
    EXPECT_EQ(
        text.rfind("TN:\nSF:" QIRO_TEST_DATA_DIR "/coverage/" + std::string(expected.plugin) + "\n",
                   0),
        0U)
        << text;
    auto read = read_tracefile(text);
    std::vector<unsigned> not_reached;
    for (const auto& [line, hits] : read.lines) {
        if (hits == 0) {
            not_reached.push_back(line);
        }
    }
    EXPECT_EQ(not_reached, expected.not_reached) << text;
    EXPECT_EQ(read.lines.at(expected.then_line), expected.then_hits) << text;
    EXPECT_EQ(read.totals["LF"], expected.lines_found) << text;
    EXPECT_EQ(read.totals["LH"],
              std::to_string(std::stoul(expected.lines_found) - expected.not_reached.size()));
    EXPECT_EQ(read.totals["BRF"], expected.branches_found) << text;
    EXPECT_EQ(read.totals["BRH"], expected.branches_hit) << text;
    // Nothing of the runs' private folders is left in the data folder.
    for (const auto& name : test_support::names_in(utility::get_qiro_lumen_data_folder())) {
        EXPECT_EQ(name.find("coverage"), std::string::npos) << name;
    }
}

// The bridge, the interpreter's libraries and the helpers are not counted: only the plug-in's
// own lines, which the comments of the fixtures give.
INSTANTIATE_TEST_SUITE_P(
    languages, coverage_per_language,
    ::testing::Values(language_case{"branchy_python.py", {8, 9}, "9", "2", "1", 6, 2},
                      language_case{"branchy_ruby.rb", {8, 9}, "11", "2", "1", 6, 2},
                      language_case{"branchy_perl.pl", {9, 10}, "9", "2", "1", 7, 2}),
    [](const auto& a_info) {
        const std::string name = a_info.param.plugin;
        return name.substr(0, name.find('.'));
    });

// Every command the interpreter "python" starts, as a wrapper first on PATH logs it: its
// arguments after the bridge file, and its environment.
struct logged_command {
    std::string arguments;
    std::map<std::string, std::string> environment;
};

std::vector<logged_command> read_log(const std::string& a_text) {
    std::vector<logged_command> commands;
    std::istringstream stream(a_text);
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with("ARGS")) {
            commands.emplace_back().arguments = line;
        } else if (!commands.empty() && line.find('=') != std::string::npos) {
            commands.back().environment[line.substr(0, line.find('='))] =
                line.substr(line.find('=') + 1);
        }
    }
    return commands;
}

TEST_F(coverage_companion_test, only_the_entry_command_gains_variables_and_its_line_stays) {
    scratch_folder bin;
    const std::string log = (bin.path() / "log").string();
    // The bridge file (its name is random per run) is left out of the logged arguments.
    write_file(bin.path() / "python",
               "#!/bin/sh\nbridge=\"$1\"\n{ printf 'ARGS'; shift; printf ' %s' \"$@\"; "
               "printf '\\n'; env; } >> '" +
                   log + "'\nexec /usr/bin/python3 \"$bridge\" \"$@\"\n");
    std::filesystem::permissions(bin.path() / "python", std::filesystem::perms::owner_all);
    ::setenv("PATH", (bin.path().string() + ":/usr/bin:/bin:" + m_path).c_str(), 1);

    // What a command started without any companion sees, from where the entry starts.
    std::vector<char> out;
    std::vector<char> err;
    ASSERT_EQ(utility::run_command("python -c pass",
                                   string_encode::MultiByteFilePathToWideChar(
                                       utility::get_qiro_lumen_data_folder().c_str()),
                                   out, err, true),
              0);
    ASSERT_EQ(run("branchy_python.py", u"apple", nullptr).result, run_report::outcome::completed);
    coverage_collection coverage;
    ASSERT_EQ(run("branchy_python.py", u"apple", &coverage).result, run_report::outcome::completed);
    const auto commands = read_log(read_file(log));
    // The bare command, the faithful syntax check and entry, then the syntax check, the tool's
    // check and the entry under coverage.
    ASSERT_EQ(commands.size(), 6U) << read_file(log);
    const auto& bare = commands[0].environment;
    EXPECT_EQ(commands[1].environment, bare) << "faithful syntax check";
    EXPECT_EQ(commands[2].environment, bare) << "faithful entry";
    EXPECT_EQ(commands[3].environment, bare) << "syntax check under coverage";
    EXPECT_EQ(commands[3].arguments, commands[1].arguments);
    EXPECT_EQ(commands[4].arguments, "ARGS import coverage");
    EXPECT_EQ(commands[5].arguments, commands[2].arguments);
    auto covered = commands[5].environment;
    EXPECT_EQ(covered["PYTHONPATH"].find(utility::get_qiro_lumen_data_folder() + ".qiro-coverage-"),
              0U);
    EXPECT_EQ(covered["QIRO_COVERAGE_PLUGIN"], QIRO_TEST_DATA_DIR "/coverage/branchy_python.py");
    for (const char* name : {"PYTHONPATH", "QIRO_COVERAGE_PLUGIN", "QIRO_COVERAGE_OUTPUT"}) {
        covered.erase(name);
    }
    EXPECT_EQ(covered, bare) << "the entry under coverage, apart from the tool's variables";
}

TEST_F(coverage_companion_test, a_missing_tool_refuses_the_run_naming_the_package) {
    // An interpreter "perl" that cannot load Devel::Cover, whatever is installed.
    scratch_folder bin;
    write_file(
        bin.path() / "perl",
        "#!/bin/sh\ncase \"$*\" in *Devel::Cover*) exit 2;; esac\nexec /usr/bin/perl \"$@\"\n");
    std::filesystem::permissions(bin.path() / "perl", std::filesystem::perms::owner_all);
    ::setenv("PATH", (bin.path().string() + ":/usr/bin:/bin:" + m_path).c_str(), 1);
    coverage_collection coverage;
    const auto started = utility::started_command_count();
    const auto report = run("branchy_perl.pl", u"apple", &coverage);
    EXPECT_EQ(report.result, run_report::outcome::refused);
    EXPECT_NE(report.refusal.find("apt-get install libdevel-cover-perl"), std::string::npos)
        << report.refusal;
    // The syntax check and the tool's check; no entry command.
    EXPECT_EQ(utility::started_command_count() - started, 2U);
    EXPECT_TRUE(coverage.files().empty());
}

} // namespace
} // namespace qiro_plugin::debugger
