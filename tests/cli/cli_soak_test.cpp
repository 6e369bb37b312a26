#include "support/cli_process.hpp"
#include "support/process_scan.hpp"
#include "support/scratch_folder.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <sys/wait.h>

namespace qiro_plugin::cli::testing {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

// Soaks with the worker folders in a temporary folder of the sandbox's own.
class cli_soak : public ::testing::Test {
protected:
    cli_soak() {
        fs::create_directories(m_sandbox.root() / "tmp");
        m_sandbox.environment["TMPDIR"] = (m_sandbox.root() / "tmp").string();
    }
    cli_sandbox m_sandbox;
};

TEST_F(cli_soak, an_interrupt_in_the_middle_leaves_no_process_and_no_file) {
    test_support::write_file(m_sandbox.plugins() / "slow_soak.py",
                             "import time\n\ndef qiro_plugin_run_process(request):\n"
                             "    time.sleep(0.2)\n"
                             "    return {'candidate': [{'hyoki': 'x'}]}\n");
    const auto forms = m_sandbox.root() / "forms.txt";
    std::string lines;
    for (int index = 0; index < 200; ++index) {
        lines += "form" + std::to_string(index) + "\n";
    }
    test_support::write_file(forms, lines);
    const pid_t program = m_sandbox.start({"soak", "-j", "2", "--corpus", forms.string(),
                                           (m_sandbox.plugins() / "slow_soak.py").string()});
    ASSERT_GT(program, 0);
    // Both workers are up and forking.
    ASSERT_TRUE(
        wait_for([] { return test_support::processes_mentioning("qiro-lumen-fast") >= 2; }, 30s));
    std::this_thread::sleep_for(300ms);
    const int status = signal_and_reap(program, SIGINT);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_TRUE(wait_for(
        [&] { return test_support::processes_mentioning(m_sandbox.root().string()) == 0; }, 10s));
    EXPECT_TRUE(wait_for([] { return test_support::processes_mentioning("slow_soak") == 0; }, 10s));
    EXPECT_TRUE(test_support::names_in(m_sandbox.root() / "tmp").empty());
    const auto data = m_sandbox.home() / "Library/Preferences/QIRO Lumen";
    for (const auto& name : test_support::names_in(data)) {
        EXPECT_TRUE(fs::is_directory(data / name)) << name << " left in the data folder";
    }
}

TEST_F(cli_soak, failures_exit_with_1_and_saved_cases_fail_under_test) {
    test_support::write_file(
        m_sandbox.plugins() / "picky.py",
        "def qiro_plugin_run_process(request):\n"
        "    return {'candidate': [{'hyoki': {'a': 'A'}[request['composition_string']]}]}\n");
    const auto forms = m_sandbox.root() / "forms.txt";
    test_support::write_file(forms, "a\nb\tび\na\n");
    const auto cases = m_sandbox.plugins() / "picky.cases.json";
    const auto result =
        m_sandbox.run({"soak", "--json", "--corpus", forms.string(), "--save-cases", cases.string(),
                       (m_sandbox.plugins() / "picky.py").string()});
    EXPECT_EQ(result.status, 1) << result.err;
    const auto report = parse_json(result);
    EXPECT_EQ(report["counts"]["candidates"], 2);
    ASSERT_EQ(report["failures"].size(), 1u);
    EXPECT_EQ(report["failures"][0]["written_form"], "b");
    EXPECT_EQ(report["failures"][0]["reading"], "び");
    EXPECT_EQ(report["failures"][0]["code"], "plugin_exception");
    EXPECT_EQ(m_sandbox.run({"test", (m_sandbox.plugins() / "picky.py").string()}).status, 1);
    EXPECT_EQ(m_sandbox.run({"test", "--fast", (m_sandbox.plugins() / "picky.py").string()}).status,
              1);
    // Fixed, the saved case passes, fast or not.
    test_support::write_file(m_sandbox.plugins() / "picky.py",
                             "def qiro_plugin_run_process(request):\n"
                             "    return {'candidate': [{'hyoki': 'B'}]}\n");
    EXPECT_EQ(m_sandbox.run({"test", (m_sandbox.plugins() / "picky.py").string()}).status, 0);
    const auto fast =
        m_sandbox.run({"test", "--fast", (m_sandbox.plugins() / "picky.py").string()});
    EXPECT_EQ(fast.status, 0) << fast.out << fast.err;
    EXPECT_EQ(fast.err.find("fast mode off"), std::string::npos) << fast.err;
}

} // namespace
} // namespace qiro_plugin::cli::testing
