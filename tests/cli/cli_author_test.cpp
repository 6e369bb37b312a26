#include "cli_process.hpp"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <thread>

namespace qiro_plugin::cli::testing {
namespace {

using namespace std::chrono_literals;
using test_support::read_file;

TEST(cli_author, new_writes_a_template_that_watch_runs_again_after_each_save) {
    cli_sandbox sandbox;
    const std::string folder = sandbox.plugins().string();
    const struct {
        std::vector<std::string> arguments;
        int status;
    } cases[] = {
        {{"new", "cobol", "x", "--plugin-folder", folder}, 2},
        {{"new", "Python", "mine", "--plugin-folder", folder}, 0},
        {{"new", "python", "mine.py", "--plugin-folder", folder}, 2}, // exists already
        {{"new", "ruby", "../escape", "--plugin-folder", folder}, 2},
    };
    for (const auto& item : cases) {
        EXPECT_EQ(sandbox.run(item.arguments).status, item.status) << item.arguments[2];
    }
    const auto plugin = sandbox.plugins() / "mine.py";
    ASSERT_TRUE(std::filesystem::exists(sandbox.plugins() / "mine.xml"));

    const std::string out = (sandbox.root() / "watch.out").string();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    const pid_t child =
        spawn_process({qiro_lumen_path(), "run", "--watch", plugin.string(), "変換"},
                      sandbox.environment, &actions);
    posix_spawn_file_actions_destroy(&actions);
    ASSERT_GT(child, 0);
    const auto shows = [&](const std::string& a_text) {
        for (auto deadline = std::chrono::steady_clock::now() + 60s;
             std::chrono::steady_clock::now() < deadline; std::this_thread::sleep_for(50ms)) {
            if (read_file(out).find(a_text) != std::string::npos) {
                return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(shows("info: mine")) << read_file(out);
    std::string source = read_file(plugin);
    source.replace(source.find("\"info\": \"mine\""), 14, "\"info\": \"saved\"");
    test_support::write_file(plugin, source);
    EXPECT_TRUE(shows("info: saved")) << read_file(out);
    ::kill(child, SIGINT);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
}

} // namespace
} // namespace qiro_plugin::cli::testing
