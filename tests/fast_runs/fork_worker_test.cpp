#include "bridges/bridge_scripts.hpp"
#include "fast_runs/fork_worker.hpp"
#include "text/url_xml_escape.hpp"

#include <gtest/gtest.h>

namespace qiro_plugin::fast_runs {
namespace {

TEST(bridge_command, takes_apart_the_line_the_runtime_builds_and_nothing_else) {
    const auto command = parse_bridge_command(
        "python \"0123ABCD.py\" \"%2Fp%2Fa.py\" \"run_process\" \"%E5%A4%89\" \"\" \"\" \"0\"");
    ASSERT_TRUE(command);
    EXPECT_EQ(command->interpreter, "python");
    ASSERT_EQ(command->values.size(), 7u);
    EXPECT_EQ(command->values[1], "%2Fp%2Fa.py");
    EXPECT_EQ(command->values[4], "");
    EXPECT_FALSE(parse_bridge_command("python -c pass"));
    EXPECT_FALSE(parse_bridge_command("perl \"a\" \"b"));
    EXPECT_FALSE(parse_bridge_command("ruby \"only-one\""));
}

// Each worker starts the bridge's main sequence at a line of the bridge it names; a bridge
// that no longer has it would put every soak back on faithful runs.
TEST(worker_scripts, find_where_each_bridge_starts_its_main_sequence) {
    const std::string python = utility::url_decode(bridge::python_script());
    EXPECT_NE(python.rfind("\nmain()"), std::string::npos);
    EXPECT_EQ(python.find_first_not_of("\r\n", python.rfind("\nmain()") + 7), std::string::npos);
    EXPECT_NE(worker_script("python").find("last.value.func.id == \"main\""), std::string::npos);
    const std::string ruby = utility::url_decode(bridge::ruby_script());
    EXPECT_NE(ruby.find("\nif ARGV.length < 2"), std::string::npos);
    EXPECT_NE(worker_script("ruby").find("\"if ARGV.length < 2\""), std::string::npos);
    const std::string perl = utility::url_decode(bridge::perl_script());
    EXPECT_NE(perl.find("\nif (scalar(@ARGV) < 2) {"), std::string::npos);
    EXPECT_NE(worker_script("perl").find("'if (scalar(@ARGV) < 2) {'"), std::string::npos);
    EXPECT_TRUE(worker_script("sh").empty());
}

} // namespace
} // namespace qiro_plugin::fast_runs
