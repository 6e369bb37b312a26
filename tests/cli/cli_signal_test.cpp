#include "cli_process.hpp"
#include "support/process_scan.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <sys/wait.h>
#include <thread>

namespace qiro_plugin::cli::testing {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

// True when the process is gone or only a zombie waiting for a reaper.
bool is_ended(const std::string& a_pid) {
    std::ifstream stat("/proc/" + a_pid + "/stat");
    std::string line;
    if (!std::getline(stat, line)) {
        return true;
    }
    const auto state = line.find(") ");
    return state != std::string::npos && line[state + 2] == 'Z';
}

// Waits up to a_limit for a_done to hold; returns whether it does.
template <class condition> bool wait_for(condition a_done, std::chrono::seconds a_limit) {
    for (auto deadline = std::chrono::steady_clock::now() + a_limit;
         !a_done() && std::chrono::steady_clock::now() < deadline;) {
        std::this_thread::sleep_for(20ms);
    }
    return a_done();
}

TEST(cli_signals, an_interrupted_run_takes_its_plugin_along) {
    cli_sandbox sandbox;
    // hangs.py writes its process id to the file named by its candidate, then hangs in the
    // callback entry, which runs without time-out: it would outlive an interrupted qiro-lumen
    // if nothing ended it.
    const auto pid_file = sandbox.root() / "plugin.pid";
    const pid_t program =
        spawn_process({qiro_lumen_path(), "callback", "--plugin-folder", sandbox.plugins().string(),
                       "hangs.py", pid_file.string(), "b"},
                      sandbox.environment);
    ASSERT_GT(program, 0);

    std::string plugin_pid;
    ASSERT_TRUE(wait_for([&] { return bool(std::ifstream(pid_file) >> plugin_pid); }, 30s))
        << "the plug-in never started";
    EXPECT_FALSE(is_ended(plugin_pid));
    ASSERT_EQ(::kill(program, SIGINT), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(program, &status, 0), program);
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
        spawn_process({qiro_lumen_path(), "callback", "--sandbox", "--plugin-folder",
                       sandbox.plugins().string(), "hangs.py", started.string(), "b"},
                      sandbox.environment);
    ASSERT_GT(program, 0);
    ASSERT_TRUE(wait_for([&] { return fs::exists(started); }, 30s)) << "the plug-in never started";
    const auto mentioning = [&] {
        return test_support::processes_mentioning(sandbox.root().string());
    };
    EXPECT_GE(mentioning(), 3); // qiro-lumen, bwrap and its pid 1, the shell, the interpreter
    ASSERT_EQ(::kill(program, SIGINT), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(program, &status, 0), program);
    EXPECT_TRUE(wait_for([&] { return mentioning() == 0; }, 10s)) << mentioning() << " left";
}

} // namespace
} // namespace qiro_plugin::cli::testing
