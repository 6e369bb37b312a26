#include "platform/command_runner.hpp"

#include "platform/platform_test_support.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace {

using qiro_plugin::utility::run_command;
using qiro_plugin::utility::run_command_report;

// Runs a command that never closes its outputs and that writes its shell's process id into
// a file first; returns that id after checking the time-out left the outputs untouched.
pid_t run_until_timeout(const std::string& a_body, const platform_test::scratch_folder& a_scratch,
                        int& a_passes) {
    const auto pid_file = a_scratch.path() / "pid";
    std::atomic<int> passes{0};
    qiro_plugin::utility::set_run_command_wait_hook([&passes] { ++passes; });
    std::vector<char> std_output{'k', 'e', 'e', 'p'};
    std::vector<char> std_error{'o', 'l', 'd'};
    run_command_report report{true, false};
    const int result = run_command("echo $$ > '" + pid_file.string() + "'; " + a_body, {},
                                   std_output, std_error, true, &report);
    qiro_plugin::utility::set_run_command_wait_hook(nullptr);
    a_passes = passes.load();
    EXPECT_EQ(result, 2);
    EXPECT_EQ(std_output, (std::vector<char>{'k', 'e', 'e', 'p'}));
    EXPECT_EQ(std_error, (std::vector<char>{'o', 'l', 'd'}));
    EXPECT_TRUE(report.std_output_cut);
    EXPECT_FALSE(report.std_error_cut);
    return static_cast<pid_t>(std::stol(platform_test::read_file(pid_file)));
}

// Living members of the group. A dead member orphaned by the shell waits as a zombie until
// init reaps it, which some containers' init never does; those are gone all the same.
std::vector<platform_test::process_entry> living_members(pid_t a_group) {
    std::vector<platform_test::process_entry> living;
    for (const auto& member : platform_test::group_members(a_group)) {
        if (member.state != 'Z' && member.state != 'X') {
            living.push_back(member);
        }
    }
    return living;
}

void expect_group_gone(pid_t a_group) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (!living_members(a_group).empty() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    for (const auto& member : living_members(a_group)) {
        ADD_FAILURE() << "process " << member.pid << " of group " << a_group << " in state "
                      << member.state;
    }
    // The shell itself is this process's child and must have been reaped.
    for (const auto& child : platform_test::own_children()) {
        ADD_FAILURE() << "unreaped child " << child.pid << " in state " << child.state;
    }
}

TEST(command_runner_slow, time_out_ends_the_whole_group_after_301_passes) {
    platform_test::scratch_folder scratch;
    int passes = 0;
    const pid_t shell =
        run_until_timeout("sleep 1000 & printf partial; sleep 1000", scratch, passes);
    // The counter starts at 0 and advances by 100 per pass; the pass that starts at 30000
    // is the last one.
    EXPECT_EQ(passes, 301);
    expect_group_gone(shell);
}

TEST(command_runner_slow, child_ignoring_termination_is_killed) {
    platform_test::scratch_folder scratch;
    int passes = 0;
    const pid_t shell =
        run_until_timeout("trap '' TERM; sleep 1000 & while :; do sleep 1; done", scratch, passes);
    EXPECT_EQ(passes, 301);
    expect_group_gone(shell);
}

TEST(command_runner_slow, without_time_out_the_runner_waits_past_30_seconds) {
    std::vector<char> std_output;
    std::vector<char> std_error;
    const int result = run_command("sleep 31; echo done", {}, std_output, std_error, false);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(std::string(std_output.begin(), std_output.end()), std::string("done\n\0", 6));
}

} // namespace
