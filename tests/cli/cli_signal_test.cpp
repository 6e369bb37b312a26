#include "support/cli_process.hpp"
#include "support/process_scan.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <string>
#include <sys/wait.h>

namespace qiro_plugin::cli::testing {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

TEST(cli_signals, an_interrupted_run_takes_its_plugin_along) {
    cli_sandbox sandbox;
    // hangs.py writes its process id to the file named by its candidate, then hangs in the
    // callback entry, which runs without time-out: it would outlive an interrupted qiro-lumen
    // if nothing ended it.
    const auto pid_file = sandbox.root() / "plugin.pid";
    const pid_t program = sandbox.start({"callback", "--plugin-folder", sandbox.plugins().string(),
                                         "hangs.py", pid_file.string(), "b"});
    ASSERT_GT(program, 0);

    std::string plugin_pid;
    ASSERT_TRUE(wait_for([&] { return bool(std::ifstream(pid_file) >> plugin_pid); }, 30s))
        << "the plug-in never started";
    EXPECT_FALSE(is_ended(plugin_pid));
    const int status = signal_and_reap(program, SIGINT);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << status;
    EXPECT_TRUE(wait_for([&] { return is_ended(plugin_pid); }, 10s))
        << "plug-in process " << plugin_pid << " outlived qiro-lumen";
}

TEST(cli_signals, an_interrupted_sandboxed_run_takes_its_whole_sandbox_along) {
    cli_sandbox sandbox;
    // Inside, only the data folder is writable, and process ids are the sandbox's own: the
    // processes are found by the scratch folder their command lines name.
    const auto started = sandbox.home() / "Library/Preferences/QIRO Lumen/plugin.pid";
    const pid_t program =
        sandbox.start({"callback", "--sandbox", "--plugin-folder", sandbox.plugins().string(),
                       "hangs.py", started.string(), "b"});
    ASSERT_GT(program, 0);
    ASSERT_TRUE(wait_for([&] { return fs::exists(started); }, 30s)) << "the plug-in never started";
    const auto mentioning = [&] {
        return test_support::processes_mentioning(sandbox.root().string());
    };
    EXPECT_GE(mentioning(), 3); // qiro-lumen, bwrap and its pid 1, the shell, the interpreter
    EXPECT_NE(signal_and_reap(program, SIGINT), -1);
    EXPECT_TRUE(wait_for([&] { return mentioning() == 0; }, 10s)) << mentioning() << " left";
}

} // namespace
} // namespace qiro_plugin::cli::testing
