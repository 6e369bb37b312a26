#include "core/coverage_companion.hpp"
#include "core/debug_runner.hpp"
#include "core/pane_text_sink.hpp"
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

    // An interpreter of this name first on PATH, a shell script.
    void put_on_path(const char* a_name, const std::string& a_script) {
        test_support::write_script(m_bin.path() / a_name, a_script);
        ::setenv("PATH", (m_bin.path().string() + ":/usr/bin:/bin:" + m_path).c_str(), 1);
    }

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
    scratch_folder m_bin;
    std::string m_path;
};

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
    const std::string log = (m_bin.path() / "log").string();
    // The bridge file (its name is random per run) is left out of the logged arguments.
    put_on_path("python", "bridge=\"$1\"\n{ printf 'ARGS'; shift; printf ' %s' \"$@\"; printf "
                          "'\\n'; env; } >> '" +
                              log + "'\nexec /usr/bin/python3 \"$bridge\" \"$@\"\n");

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
    const auto measured = run("branchy_python.py", u"apple", &coverage);
    ASSERT_EQ(measured.result, run_report::outcome::completed);
    // The tool says nothing on the plug-in's streams.
    EXPECT_EQ(measured.run_std_error, "");
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
    put_on_path("perl",
                "case \"$*\" in *Devel::Cover*) exit 2;; esac\nexec /usr/bin/perl \"$@\"\n");
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
