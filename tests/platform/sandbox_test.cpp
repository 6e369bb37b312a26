#include "platform/command_runner.hpp"
#include "platform/sandbox.hpp"
#include "platform/sandbox_availability.hpp"
#include "platform_test_support.hpp"
#include "support/process_scan.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace qiro_plugin::utility {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

TEST(sandbox_availability, a_refusal_names_the_package_or_the_setting_to_change) {
    test_support::scratch_folder sysctl;
    fs::create_directories(sysctl.path() / "kernel");
    fs::create_directories(sysctl.path() / "user");
    struct row {
        std::string path;
        const char* clone;
        const char* limit;
        bool privileged;
        const char* error; // empty: the sandbox works
    };
    const row rows[] = {
        {sysctl.path().string() + ":relative", "1", "100", false, "install the package bubblewrap"},
        {"/usr/bin", "0", "100", false, "set kernel.unprivileged_userns_clone=1"},
        {"/usr/bin", "1", "0", false, "user.max_user_namespaces is 0"},
        {"/usr/bin", "0", "0", true, ""},
        {"/usr/bin", "1", "100", false, ""},
    };
    for (const auto& item : rows) {
        test_support::write_file(sysctl.path() / "kernel/unprivileged_userns_clone", item.clone);
        test_support::write_file(sysctl.path() / "user/max_user_namespaces", item.limit);
        const auto result =
            check_sandbox(sandbox_host{item.path, sysctl.path().string(), item.privileged});
        SCOPED_TRACE(item.path + " " + item.clone + " " + item.limit);
        if (*item.error == '\0') {
            EXPECT_EQ(result.error, "");
            EXPECT_EQ(result.tool, "/usr/bin/bwrap");
        } else {
            EXPECT_THAT(result.error, HasSubstr(item.error));
            EXPECT_EQ(result.tool, "");
        }
    }
}

TEST(sandbox_availability, a_bwrap_that_cannot_set_up_a_sandbox_is_told_apart) {
    EXPECT_EQ(sandbox_setup_error("/usr/bin/bwrap"), "");
    // What bwrap says where the kernel refuses it a user namespace.
    test_support::scratch_folder folder;
    const auto refused = folder.path() / "bwrap";
    test_support::write_file(refused, "#!/bin/sh\necho 'bwrap: setting up uid map: Permission "
                                      "denied' >&2\nexit 1\n");
    fs::permissions(refused, fs::perms::owner_all);
    const std::string error = sandbox_setup_error(refused.string());
    EXPECT_THAT(error, HasSubstr("could not set up a sandbox: bwrap: setting up uid map"));
    EXPECT_THAT(error, HasSubstr("kernel.apparmor_restrict_unprivileged_userns=0"));
}

// A confined command that ignores SIGTERM and leaves a child behind, run on its own thread.
class confined_hang {
public:
    explicit confined_hang(bool a_is_timeout) {
        m_thread = std::thread([this, a_is_timeout] {
            sandbox_layout layout{sandbox_mode::nonet, check_sandbox().tool, {}, {"/tmp"}};
            const sandbox_scope scope(std::move(layout));
            m_result = run_command("trap '' TERM; sleep " + marker + " & sleep " + marker, u"/tmp",
                                   m_output, m_error, a_is_timeout);
        });
    }
    ~confined_hang() {
        if (m_thread.joinable()) {
            kill_running_commands();
            m_thread.join();
        }
    }
    int finish() {
        m_thread.join();
        return m_result;
    }
    const std::string marker = "600." + std::to_string(::getpid());

private:
    std::thread m_thread;
    int m_result = -1;
    std::vector<char> m_output;
    std::vector<char> m_error;
};

TEST(sandbox_run, confined_commands_print_as_unconfined_ones_and_a_stop_ends_them_all) {
    std::vector<char> outputs[4];
    ASSERT_EQ(run_command("echo out; echo err >&2; pwd", u"/tmp", outputs[0], outputs[1], true), 0);
    {
        const sandbox_scope scope({sandbox_mode::on, check_sandbox().tool, {}, {"/tmp"}});
        ASSERT_EQ(run_command("echo out; echo err >&2; pwd", u"/tmp", outputs[2], outputs[3], true),
                  0);
    }
    EXPECT_EQ(std::string(outputs[2].data()), "out\n/tmp\n");
    EXPECT_EQ(outputs[2], outputs[0]);
    EXPECT_EQ(outputs[3], outputs[1]);

    confined_hang hang(false);
    // Both bwraps, the shell and its two sleeps.
    while (test_support::processes_mentioning(hang.marker) < 5) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    kill_running_commands();
    EXPECT_EQ(hang.finish(), 0);
    EXPECT_EQ(test_support::processes_mentioning(hang.marker), 0);
    EXPECT_EQ(platform_test::processes_left(), 0u);
}

TEST(command_runner_slow, a_confined_command_past_the_time_out_is_ended_with_its_sandbox) {
    confined_hang hang(true);
    EXPECT_EQ(hang.finish(), 2);
    EXPECT_EQ(test_support::processes_mentioning(hang.marker), 0);
    EXPECT_EQ(platform_test::processes_left(), 0u);
}

} // namespace
} // namespace qiro_plugin::utility
