#include "cli_process.hpp"

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

} // namespace
} // namespace qiro_plugin::cli::testing
