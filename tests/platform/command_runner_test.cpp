#include "platform/command_runner.hpp"

#include "platform/platform_test_support.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using qiro_plugin::utf16_string;
using qiro_plugin::utility::run_command;
using qiro_plugin::utility::run_command_report;

std::vector<char> bytes(const std::string& a_text) {
    return {a_text.begin(), a_text.end()};
}

// The bytes of a stream as the runner hands them over: the text and its one terminating zero.
std::vector<char> terminated(const std::string& a_text) {
    auto result = bytes(a_text);
    result.push_back('\0');
    return result;
}

std::string text_of(const std::vector<char>& a_bytes) {
    return {a_bytes.begin(), a_bytes.end()};
}

utf16_string utf16_of(const std::string& a_ascii) {
    return {a_ascii.begin(), a_ascii.end()};
}

struct run_outcome {
    int result;
    std::vector<char> std_output;
    std::vector<char> std_error;
    run_command_report report;
};

run_outcome run(const std::string& a_line, const utf16_string& a_folder = {},
                bool a_is_timeout = true) {
    run_outcome outcome{-1, bytes("stale output"), bytes("stale error"), {true, true}};
    outcome.result = run_command(a_line, a_folder, outcome.std_output, outcome.std_error,
                                 a_is_timeout, &outcome.report);
    return outcome;
}

bool wait_for_no_children() {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!platform_test::own_children().empty()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

TEST(command_runner, silent_command_leaves_both_outputs_empty_without_zero_byte) {
    const auto outcome = run("true");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.std_output.empty());
    EXPECT_TRUE(outcome.std_error.empty());
    EXPECT_FALSE(outcome.report.std_output_cut);
    EXPECT_FALSE(outcome.report.std_error_cut);
}

TEST(command_runner, each_stream_keeps_its_bytes_and_one_terminating_zero) {
    auto outcome = run("printf abc");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.std_output, terminated("abc"));
    EXPECT_TRUE(outcome.std_error.empty());

    outcome = run("printf 'out\\n'; printf 'err' >&2; printf 'more'");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.std_output, terminated("out\nmore"));
    EXPECT_EQ(outcome.std_error, terminated("err"));

    // Raw bytes pass through unchanged, zero bytes and non-UTF-8 included.
    outcome = run("printf 'a\\000b\\377'");
    EXPECT_EQ(outcome.std_output, (std::vector<char>{'a', '\0', 'b', '\xff', '\0'}));
}

TEST(command_runner, failing_exit_status_is_still_completion) {
    auto outcome = run("false");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.std_output.empty());

    outcome = run("echo partial; echo broken >&2; exit 7");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.std_output, terminated("partial\n"));
    EXPECT_EQ(outcome.std_error, terminated("broken\n"));
}

TEST(command_runner, command_the_shell_cannot_run_reports_on_standard_error) {
    auto outcome = run("qiro_no_such_command_anywhere --flag");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.std_output.empty());
    EXPECT_NE(text_of(outcome.std_error).find("qiro_no_such_command_anywhere"), std::string::npos);

    outcome = run("if then fi (");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_FALSE(outcome.std_error.empty());
    EXPECT_EQ(outcome.std_error.back(), '\0');
}

TEST(command_runner, working_folder_is_honoured_and_empty_keeps_the_callers) {
    platform_test::scratch_folder scratch;
    // A name outside ASCII checks the conversion to the file system's representation.
    const auto folder = scratch.path() / "\xE4\xBD\x9C\xE6\xA5\xAD";
    std::filesystem::create_directory(folder);
    const std::string canonical = std::filesystem::canonical(folder).string();

    auto outcome = run("pwd -P", u"" + scratch.path().u16string() + u"/\u4F5C\u696D");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.std_output, terminated(canonical + "\n"));

    outcome = run("pwd -P");
    EXPECT_EQ(
        outcome.std_output,
        terminated(std::filesystem::canonical(std::filesystem::current_path()).string() + "\n"));
}

TEST(command_runner, missing_working_folder_completes_with_a_message) {
    platform_test::scratch_folder scratch;
    const auto missing = scratch.path() / "gone";
    const auto outcome = run("echo should-not-run", utf16_of(missing.string()));
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.std_output.empty());
    const std::string message = text_of(outcome.std_error);
    EXPECT_NE(message.find("working folder"), std::string::npos);
    EXPECT_NE(message.find(missing.string()), std::string::npos);
    EXPECT_EQ(outcome.std_error.back(), '\0');

    platform_test::write_file(scratch.path() / "plain", "x");
    const auto not_folder =
        run("echo should-not-run", utf16_of((scratch.path() / "plain").string()));
    EXPECT_EQ(not_folder.result, 0);
    EXPECT_TRUE(not_folder.std_output.empty());
    EXPECT_FALSE(not_folder.std_error.empty());
}

TEST(command_runner, completion_waits_for_a_background_process_holding_the_pipe) {
    // The shell exits at once; its background child keeps standard output open a while longer.
    const auto outcome = run("(sleep 1; echo late) & echo early");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.std_output, terminated("early\nlate\n"));
    EXPECT_TRUE(wait_for_no_children());
}

TEST(command_runner, streams_are_cut_at_64_mib_and_drained) {
    constexpr std::size_t limit = 64 * 1024 * 1024;
    auto outcome = run("head -c 209715200 /dev/zero | tr '\\0' x; echo tail >&2");
    EXPECT_EQ(outcome.result, 0);
    ASSERT_EQ(outcome.std_output.size(), limit + 1);
    EXPECT_EQ(outcome.std_output[limit - 1], 'x');
    EXPECT_EQ(outcome.std_output.back(), '\0');
    EXPECT_TRUE(outcome.report.std_output_cut);
    EXPECT_FALSE(outcome.report.std_error_cut);
    EXPECT_EQ(outcome.std_error, terminated("tail\n"));

    // Exactly the limit is kept whole.
    outcome = run("head -c 67108864 /dev/zero >&2");
    EXPECT_EQ(outcome.std_error.size(), limit + 1);
    EXPECT_FALSE(outcome.report.std_error_cut);
}

TEST(command_runner, no_process_is_left_behind_after_many_commands) {
    for (int i = 0; i < 100; ++i) {
        const auto outcome = run(i % 10 == 0 ? "sleep 0.01 & echo $$" : "echo $$");
        ASSERT_EQ(outcome.result, 0);
    }
    // A shell that closes its outputs and lingers completes at once and is reaped later.
    const auto lingering = run("echo bye; exec >&- 2>&-; sleep 0.3");
    EXPECT_EQ(lingering.std_output, terminated("bye\n"));
    EXPECT_TRUE(wait_for_no_children());
    for (const auto& child : platform_test::own_children()) {
        ADD_FAILURE() << "child " << child.pid << " in state " << child.state;
    }
}

TEST(command_runner, wait_hook_runs_once_per_pass_until_removed) {
    std::atomic<int> calls{0};
    qiro_plugin::utility::set_run_command_wait_hook([&calls] { ++calls; });
    auto outcome = run("sleep 0.35");
    EXPECT_EQ(outcome.result, 0);
    // The command outlasts at least three full passes of 100 ms.
    EXPECT_GE(calls.load(), 3);

    calls = 0;
    outcome = run("true");
    EXPECT_GE(calls.load(), 1);

    qiro_plugin::utility::set_run_command_wait_hook(nullptr);
    calls = 0;
    outcome = run("true");
    EXPECT_EQ(calls.load(), 0);
}

// Descriptors above 2 that this process would hand to any child: those not closed on exec.
std::set<int> inheritable_descriptors() {
    std::set<int> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const int fd = std::stoi(entry.path().filename().string());
        const int flags = ::fcntl(fd, F_GETFD);
        if (fd > 2 && flags != -1 && (flags & FD_CLOEXEC) == 0) {
            found.insert(fd);
        }
    }
    return found;
}

// The descriptors above 2 of a child that pointed to pipes, from its "ls -l" listing.
std::set<int> pipe_descriptors(const std::string& a_listing) {
    std::set<int> found;
    std::istringstream lines(a_listing);
    for (std::string line; std::getline(lines, line);) {
        const auto arrow = line.find(" -> pipe:");
        if (arrow == std::string::npos) {
            continue;
        }
        const auto start = line.rfind(' ', arrow - 1) + 1;
        const int fd = std::stoi(line.substr(start, arrow - start));
        if (fd > 2) {
            found.insert(fd);
        }
    }
    return found;
}

TEST(command_runner, concurrent_callers_get_their_own_outputs_and_no_foreign_pipes) {
    const auto inherited = inheritable_descriptors();
    std::vector<std::thread> threads;
    std::vector<run_outcome> outcomes(4);
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([i, &outcomes] {
            outcomes[static_cast<std::size_t>(i)] =
                run("echo " + std::to_string(i) + "; ls -l /proc/self/fd >&2; sleep 0.2");
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    for (int i = 0; i < 4; ++i) {
        const auto& outcome = outcomes[static_cast<std::size_t>(i)];
        EXPECT_EQ(outcome.result, 0);
        EXPECT_EQ(outcome.std_output, terminated(std::to_string(i) + "\n"));
        EXPECT_NE(text_of(outcome.std_error).find(" 1 -> pipe:"), std::string::npos);
        // Another caller's pipe end leaking into this child would show up here.
        for (const int fd : pipe_descriptors(text_of(outcome.std_error))) {
            EXPECT_TRUE(inherited.count(fd) == 1) << "pipe descriptor " << fd << " leaked";
        }
    }
}

} // namespace

TEST(command_runner, killing_running_commands_ends_them_with_their_groups) {
    // A command without time-out whose shell and background child would both run for minutes.
    std::atomic<pid_t> shell{0};
    std::thread runner([&] {
        std::vector<char> output;
        std::vector<char> error;
        run_command("echo $$; sleep 300 & sleep 300", {}, output, error, false);
        shell = static_cast<pid_t>(std::atoi(text_of(output).c_str()));
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const auto started = std::chrono::steady_clock::now();
    qiro_plugin::utility::kill_running_commands();
    runner.join();
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(10));
    ASSERT_GT(shell.load(), 0);
    // Killed orphans may wait as zombies for a reaper this sandbox lacks; none may live.
    for (const auto& member : platform_test::group_members(shell.load())) {
        EXPECT_EQ(member.state, 'Z') << "process " << member.pid << " still runs";
    }
    EXPECT_TRUE(wait_for_no_children());
    // With nothing running it does nothing.
    qiro_plugin::utility::kill_running_commands();
    EXPECT_EQ(run("echo still fine").std_output, terminated("still fine\n"));
}
