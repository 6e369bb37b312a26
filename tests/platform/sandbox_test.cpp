#include "platform/command_runner.hpp"
#include "platform/sandbox.hpp"
#include "platform/sandbox_availability.hpp"
#include "platform_test_support.hpp"
#include "support/process_scan.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qiro_plugin::utility {
namespace {

namespace fs = std::filesystem;

TEST(sandbox_availability, a_refusal_names_the_package_or_the_setting_to_change) {
    platform_test::scratch_folder sysctl;
    fs::create_directories(sysctl.path() / "kernel");
    fs::create_directories(sysctl.path() / "user");
    const struct {
        std::string path;
        const char* clone;
        const char* limit;
        bool privileged;
        const char* error; // empty: the sandbox can be had
    } rows[] = {
        {sysctl.path().string() + ":relative", "1", "9", false, "install the package bubblewrap"},
        {"/usr/bin", "0", "9", false, "set kernel.unprivileged_userns_clone=1"},
        {"/usr/bin", "1", "0", false, "user.max_user_namespaces is 0"},
        {"/usr/bin", "0", "0", true, ""},
        {"/usr/bin", "1", "9", false, ""},
    };
    for (const auto& row : rows) {
        platform_test::write_file(sysctl.path() / "kernel/unprivileged_userns_clone", row.clone);
        platform_test::write_file(sysctl.path() / "user/max_user_namespaces", row.limit);
        const auto result = check_sandbox({row.path, sysctl.path().string(), row.privileged});
        EXPECT_THAT(result.error, ::testing::HasSubstr(row.error)) << row.path << row.clone;
        EXPECT_EQ(result.error.empty(), *row.error == '\0') << result.error;
        EXPECT_EQ(result.tool, *row.error ? "" : "/usr/bin/bwrap");
    }
}

TEST(command_runner_slow, a_confined_command_past_the_time_out_is_ended_with_its_sandbox) {
    const std::string marker = "600." + std::to_string(::getpid());
    std::vector<char> output;
    std::vector<char> error;
    const sandbox_scope scope({sandbox_mode::nonet, check_sandbox().tool, {}, {"/tmp"}});
    EXPECT_EQ(run_command("trap '' TERM; sleep " + marker + " & sleep " + marker, u"/tmp", output,
                          error, true),
              2);
    EXPECT_EQ(test_support::processes_mentioning(marker), 0);
    EXPECT_EQ(platform_test::processes_left(), 0u);
}

} // namespace
} // namespace qiro_plugin::utility
