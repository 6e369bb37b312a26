#include "support/cli_process.hpp"

#include <gtest/gtest.h>

#include <csignal>

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

    const auto out = sandbox.root() / "watch.out";
    const pid_t child = sandbox.start({"run", "--watch", plugin.string(), "変換"}, out);
    ASSERT_GT(child, 0);
    const auto shows = [&](const std::string& a_text) {
        return wait_for([&] { return read_file(out).find(a_text) != std::string::npos; }, 60s);
    };
    EXPECT_TRUE(shows("info: mine")) << read_file(out);
    std::string source = read_file(plugin);
    source.replace(source.find("\"info\": \"mine\""), 14, "\"info\": \"saved\"");
    test_support::write_file(plugin, source);
    EXPECT_TRUE(shows("info: saved")) << read_file(out);
    EXPECT_NE(signal_and_reap(child, SIGINT), -1);
}

} // namespace
} // namespace qiro_plugin::cli::testing
