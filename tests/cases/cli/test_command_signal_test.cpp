#include "cli_process.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <sys/wait.h>
#include <thread>

namespace qiro_plugin::cli::testing {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

TEST(cli_test_command_signals, a_stopped_session_ends_its_cases_and_leaves_nothing_behind) {
    cli_sandbox sandbox;
    // hangs.py writes its process id to the file its candidate names, then hangs in the callback.
    std::string cases = R"({"cases": [)";
    for (const char* name : {"1", "2", "3"}) {
        cases += std::string(name == std::string("1") ? "" : ",") + R"({"name": ")" + name +
                 R"(", "callback": {"candidate": ")" + (sandbox.root() / name).string() +
                 R"(", "written_form": "x"}})";
    }
    test_support::write_file(sandbox.plugins() / "hangs.cases.json", cases + "]}");
    const auto out = sandbox.root() / "out";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const pid_t program = spawn_process(
        {qiro_lumen_path(), "test", "-j", "2", (sandbox.plugins() / "hangs.py").string()},
        sandbox.environment, &actions);
    posix_spawn_file_actions_destroy(&actions);
    ASSERT_GT(program, 0);

    std::string first;
    std::string second;
    for (auto deadline = std::chrono::steady_clock::now() + 30s;
         !(std::ifstream(sandbox.root() / "1") >> first &&
           std::ifstream(sandbox.root() / "2") >> second) &&
         std::chrono::steady_clock::now() < deadline;) {
        std::this_thread::sleep_for(20ms);
    }
    ASSERT_FALSE(second.empty()) << "the two cases never started";
    ASSERT_EQ(::kill(program, SIGTERM), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(program, &status, 0), program);
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, 130);
    EXPECT_EQ(test_support::read_file(out), "SKIP hangs.cases.json: 1\nSKIP hangs.cases.json: 2\n"
                                            "SKIP hangs.cases.json: 3\n");
    // Gone, or a zombie that only waits for its new parent to reap it.
    const auto ended = [](const std::string& a_pid) {
        std::ifstream stat("/proc/" + a_pid + "/stat");
        std::string line;
        return !std::getline(stat, line) || line.find(") Z") != std::string::npos;
    };
    for (const auto& pid : {first, second}) {
        auto deadline = std::chrono::steady_clock::now() + 10s;
        while (!ended(pid) && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(20ms);
        }
        EXPECT_TRUE(ended(pid)) << "plug-in " << pid << " outlived the session";
    }
    const fs::path data = sandbox.home() / "Library/Preferences/QIRO Lumen";
    EXPECT_TRUE(fs::is_empty(data)) << "a bridge file was left in " << data;
}

} // namespace
} // namespace qiro_plugin::cli::testing
