#include "support/cli_process.hpp"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <sys/wait.h>

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
    const pid_t program =
        sandbox.start({"test", "-j", "2", (sandbox.plugins() / "hangs.py").string()}, out);
    ASSERT_GT(program, 0);

    std::string first;
    std::string second;
    ASSERT_TRUE(wait_for(
        [&] {
            return std::ifstream(sandbox.root() / "1") >> first &&
                   std::ifstream(sandbox.root() / "2") >> second;
        },
        30s))
        << "the two cases never started";
    const int status = signal_and_reap(program, SIGTERM);
    EXPECT_EQ(WIFEXITED(status) ? WEXITSTATUS(status) : -1, 130);
    EXPECT_EQ(test_support::read_file(out), "SKIP hangs.cases.json: 1\nSKIP hangs.cases.json: 2\n"
                                            "SKIP hangs.cases.json: 3\n");
    for (const auto& pid : {first, second}) {
        EXPECT_TRUE(wait_for([&] { return is_ended(pid); }, 10s))
            << "plug-in " << pid << " outlived the session";
    }
    const fs::path data = sandbox.home() / "Library/Preferences/QIRO Lumen";
    EXPECT_TRUE(fs::is_empty(data)) << "a bridge file was left in " << data;
}

} // namespace
} // namespace qiro_plugin::cli::testing
