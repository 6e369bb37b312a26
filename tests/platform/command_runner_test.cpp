#include "platform/command_runner.hpp"

#include "platform/platform_test_support.hpp"
#include "platform/std_error_watch.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using qiro_plugin::utf16_string;
using qiro_plugin::utility::run_command;
using qiro_plugin::utility::run_command_report;

// The bytes of a stream as the runner hands them over: the text and its one terminating zero.
std::vector<char> terminated(const std::string& a_text) {
    std::vector<char> result(a_text.begin(), a_text.end());
    result.push_back('\0');
    return result;
}

std::string text_of(const std::vector<char>& a_bytes) {
    return {a_bytes.begin(), a_bytes.end()};
}

struct run_outcome {
    int result;
    std::vector<char> std_output{'o', 'l', 'd'};
    std::vector<char> std_error{'o', 'l', 'd'};
    // Set, so that a report left alone shows.
    run_command_report report = [] {
        run_command_report set;
        set.std_output_cut = set.std_error_cut = true;
        return set;
    }();
};

run_outcome run(const std::string& a_line, const utf16_string& a_folder = {}) {
    run_outcome outcome;
    outcome.result =
        run_command(a_line, a_folder, outcome.std_output, outcome.std_error, true, &outcome.report);
    return outcome;
}

// The process's peak resident memory in KiB since the last call.
long peak_memory_since_last_call() {
    const std::string status = platform_test::read_file("/proc/self/status");
    const long peak = std::stol(status.substr(status.find("VmHWM:") + 6));
    platform_test::write_file("/proc/self/clear_refs", "5");
    return peak;
}

TEST(command_runner, completed_commands_hand_over_both_streams_whatever_their_status) {
    struct {
        const char* command;
        std::vector<char> std_output;
        std::vector<char> std_error;
    } const cases[] = {
        {"true", {}, {}}, // silent streams stay empty, without a zero byte
        {"printf 'out\\n'; printf err >&2; printf more", terminated("out\nmore"),
         terminated("err")},
        {"printf 'a\\000b\\377'", {'a', '\0', 'b', '\xff', '\0'}, {}},
        {"echo partial; echo broken >&2; exit 7", terminated("partial\n"), terminated("broken\n")},
    };
    for (const auto& expected : cases) {
        const auto outcome = run(expected.command);
        EXPECT_EQ(outcome.result, 0) << expected.command;
        EXPECT_EQ(outcome.std_output, expected.std_output) << expected.command;
        EXPECT_EQ(outcome.std_error, expected.std_error) << expected.command;
        EXPECT_FALSE(outcome.report.std_output_cut || outcome.report.std_error_cut);
    }
    // What the shell cannot run is a completed command with the shell's complaint.
    const auto outcome = run("qiro_no_such_command_anywhere --flag");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.std_output.empty());
    EXPECT_NE(text_of(outcome.std_error).find("qiro_no_such_command_anywhere"), std::string::npos);
    EXPECT_EQ(outcome.std_error.back(), '\0');
}

TEST(command_runner, working_folder_is_honoured_empty_keeps_the_callers_missing_is_reported) {
    platform_test::scratch_folder scratch;
    // A name outside ASCII checks the conversion to the file system's representation.
    const auto work = scratch.path() / "\xE4\xBD\x9C\xE6\xA5\xAD";
    std::filesystem::create_directory(work);
    EXPECT_EQ(run("pwd -P", scratch.path().u16string() + u"/\u4F5C\u696D").std_output,
              terminated(std::filesystem::canonical(work).string() + "\n"));
    EXPECT_EQ(run("pwd -P").std_output,
              terminated(std::filesystem::canonical(".").string() + "\n"));

    const auto missing = scratch.path() / "gone";
    const auto outcome = run("echo should-not-run", missing.u16string());
    EXPECT_EQ(outcome.result, 0);
    EXPECT_TRUE(outcome.std_output.empty());
    EXPECT_NE(text_of(outcome.std_error).find("working folder"), std::string::npos);
    EXPECT_NE(text_of(outcome.std_error).find(missing.string()), std::string::npos);
    EXPECT_EQ(outcome.std_error.back(), '\0');
}

TEST(command_runner, completion_waits_for_a_background_process_holding_the_pipe) {
    platform_test::scratch_folder scratch;
    const auto go = scratch.path() / "go";
    std::atomic<int> calls{0};
    // The third pass lets the background child finish: the hook runs pass after pass meanwhile.
    qiro_plugin::utility::set_run_command_wait_hook([&] {
        if (++calls == 3) {
            platform_test::write_file(go, "");
        }
    });
    // The shell exits at once; its background child keeps standard output open until then.
    EXPECT_EQ(run("(i=0; while [ ! -e '" + go.string() +
                  "' ] && [ $i -lt 6000 ]; do sleep 0.01; i=$((i+1)); done; echo late) &"
                  " echo early")
                  .std_output,
              terminated("early\nlate\n"));
    EXPECT_GE(calls.load(), 3);
    // Once removed, the hook is not called.
    qiro_plugin::utility::set_run_command_wait_hook(nullptr);
    calls = 0;
    run("sleep 0.2");
    EXPECT_EQ(calls.load(), 0);
}

TEST(command_runner, streams_are_cut_at_64_mib_and_drained_in_bounded_memory) {
    constexpr std::size_t limit = 64 * 1024 * 1024;
#if defined(__SANITIZE_ADDRESS__)
    // Freed blocks wait in the address sanitizer's quarantine, so the bound allows for them.
    constexpr long peak_limit_kib = 320 * 1024;
#else
    constexpr long peak_limit_kib = 160 * 1024;
#endif
    peak_memory_since_last_call();
    auto outcome = run("head -c 209715200 /dev/zero | tr '\\0' x; echo tail >&2");
    // Keeping all 200 MiB, even for a moment, would need more than the 64 kept and growth room.
    EXPECT_LT(peak_memory_since_last_call(), peak_limit_kib);
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
        ASSERT_EQ(run(i % 10 == 0 ? "sleep 0.01 & echo $$" : "echo $$").result, 0);
    }
    // A shell that closes its outputs and lingers completes at once and is reaped later.
    EXPECT_EQ(run("echo bye; exec >&- 2>&-; sleep 0.3").std_output, terminated("bye\n"));
    EXPECT_EQ(platform_test::processes_left(), 0u);
}

// Runs a_line on another thread without time-out, and hands it back once the command has
// started and created a_ready.
class background_command {
public:
    background_command(const std::string& a_line, const std::filesystem::path& a_ready,
                       std::uint32_t a_scope = 0) {
        const auto started = qiro_plugin::utility::started_command_count();
        m_runner = std::thread([this, a_line, a_scope] {
            const qiro_plugin::utility::command_scope_guard in_scope(a_scope);
            m_outcome.result = run_command(a_line, {}, m_outcome.std_output, m_outcome.std_error,
                                           false, &m_outcome.report);
        });
        m_ready = platform_test::eventually([&] {
            return qiro_plugin::utility::started_command_count() != started &&
                   std::filesystem::exists(a_ready);
        });
    }
    ~background_command() {
        if (m_runner.joinable()) {
            qiro_plugin::utility::kill_running_commands();
            m_runner.join();
        }
    }
    bool ready() const { return m_ready; }
    const run_outcome& finish() {
        m_runner.join();
        return m_outcome;
    }

private:
    run_outcome m_outcome;
    std::thread m_runner;
    bool m_ready = false;
};

TEST(command_runner, killing_running_commands_ends_them_with_their_groups) {
    platform_test::scratch_folder scratch;
    const auto pid_file = scratch.path() / "pid";
    // A command without time-out whose shell and background child would both run for minutes.
    background_command command("sleep 300 & echo $$ > '" + pid_file.string() + "'; sleep 300",
                               pid_file);
    ASSERT_TRUE(command.ready());
    qiro_plugin::utility::kill_running_commands();
    command.finish();
    const auto shell = static_cast<pid_t>(std::stol(platform_test::read_file(pid_file)));
    EXPECT_EQ(platform_test::processes_left(shell), 0u);
    EXPECT_EQ(platform_test::processes_left(), 0u);
    // With nothing running it does nothing.
    qiro_plugin::utility::kill_running_commands();
    EXPECT_EQ(run("echo still fine").std_output, terminated("still fine\n"));

    // Killing one scope's commands leaves the others running.
    const auto scope = qiro_plugin::utility::new_command_scope();
    background_command outside("echo > '" + pid_file.string() + "'; sleep 300", pid_file);
    const auto ready = scratch.path() / "ready";
    background_command inside("echo > '" + ready.string() + "'; sleep 300", ready, scope);
    ASSERT_TRUE(outside.ready() && inside.ready());
    qiro_plugin::utility::kill_commands_in(scope);
    EXPECT_NE(inside.finish().report.exit_status.value_or(-1), 0) << "killed, not ended";
    EXPECT_EQ(platform_test::count_processes(), 1u) << "the command outside the scope runs on";
}

TEST(command_runner, stopping_ends_a_command_as_its_time_out_would_even_without_one) {
    platform_test::scratch_folder scratch;
    const auto ready = scratch.path() / "ready";
    background_command command(
        "printf partial >&2; echo out; : > '" + ready.string() + "'; sleep 300", ready);
    ASSERT_TRUE(command.ready());
    qiro_plugin::utility::stop_running_commands();
    const auto& outcome = command.finish();
    EXPECT_EQ(outcome.result, 2);
    EXPECT_EQ(outcome.std_output, run_outcome{}.std_output);
    EXPECT_TRUE(outcome.report.timed_out && outcome.report.stopped);
    EXPECT_EQ(outcome.report.partial_std_error, "partial");
    EXPECT_EQ(platform_test::processes_left(), 0u);
    // A stop before a command started is not that command's.
    const auto after = run("echo fine");
    EXPECT_EQ(after.result, 0);
    EXPECT_FALSE(after.report.stopped);
}

// The state letter of a process in /proc, or 0 once it is gone.
char process_state(pid_t a_pid) {
    const std::string stat = platform_test::read_file("/proc/" + std::to_string(a_pid) + "/stat");
    const auto end = stat.rfind(')');
    return end == std::string::npos || end + 2 >= stat.size() ? '\0' : stat[end + 2];
}

TEST(command_runner, a_stop_whose_kill_closed_the_streams_is_still_a_stop) {
    platform_test::scratch_folder scratch;
    const auto pid_file = scratch.path() / "pid";
    bool waited = false;
    // Stops from inside a pass once the child runs, and returns only when the kill has ended it:
    // the next wait finds both streams closed, as when a stop lands just before they close.
    qiro_plugin::utility::set_run_command_wait_hook([&] {
        if (waited || !std::filesystem::exists(pid_file) ||
            platform_test::read_file(pid_file).empty()) {
            return;
        }
        const auto child = static_cast<pid_t>(std::stol(platform_test::read_file(pid_file)));
        qiro_plugin::utility::stop_running_commands();
        waited = platform_test::eventually([child] {
            const char state = process_state(child);
            return state == '\0' || state == 'Z';
        });
    });
    const auto outcome =
        run("printf partial >&2; echo $$ > '" + pid_file.string() + ".new'; mv '" +
            pid_file.string() + ".new' '" + pid_file.string() + "'; exec sleep 300");
    qiro_plugin::utility::set_run_command_wait_hook(nullptr);
    ASSERT_TRUE(waited);
    EXPECT_EQ(outcome.result, 2);
    EXPECT_EQ(outcome.std_output, run_outcome{}.std_output);
    EXPECT_TRUE(outcome.report.timed_out && outcome.report.stopped);
    EXPECT_EQ(outcome.report.partial_std_error, "partial");
}

TEST(command_runner, a_watcher_sees_standard_error_as_it_grows_and_changes_nothing) {
    platform_test::scratch_folder scratch;
    const auto go_on = scratch.path() / "go_on";
    std::vector<std::string> seen;
    // The child waits until the watcher has seen its first line, so what the watcher gets in
    // between does not depend on the machine's speed; the watcher's failure is its own.
    const qiro_plugin::utility::std_error_watch_scope watch([&](std::string_view a_so_far) {
        seen.emplace_back(a_so_far);
        if (a_so_far == "first\n") {
            platform_test::write_file(go_on, "");
        }
        throw std::runtime_error("a broken watcher");
    });
    const auto outcome = run("echo out; echo first >&2; while [ ! -e '" + go_on.string() +
                             "' ]; do sleep 0.01; done; echo second >&2");
    EXPECT_EQ(outcome.result, 0);
    EXPECT_EQ(outcome.std_output, terminated("out\n"));
    EXPECT_EQ(outcome.std_error, terminated("first\nsecond\n"));
    ASSERT_FALSE(seen.empty());
    EXPECT_EQ(seen.front(), "first\n");
    EXPECT_EQ(seen.back(), "first\nsecond\n");
    // Only a grown stream is shown again.
    EXPECT_EQ(std::adjacent_find(seen.begin(), seen.end()), seen.end());
}

// Runs a command that never closes its outputs until the time-out: the outputs stay untouched,
// the report says it timed out, the wait hook ran once per 100 ms pass (the counter starts at 0 and
// the pass that starts at 30000 is the last), the whole process group is gone and its shell reaped.
void expect_time_out_ends_everything(const std::string& a_body) {
    platform_test::scratch_folder scratch;
    const auto pid_file = scratch.path() / "pid";
    int passes = 0;
    qiro_plugin::utility::set_run_command_wait_hook([&passes] { ++passes; });
    const auto outcome = run("echo $$ > '" + pid_file.string() + "'; " + a_body);
    qiro_plugin::utility::set_run_command_wait_hook(nullptr);
    EXPECT_EQ(outcome.result, 2);
    EXPECT_EQ(passes, 301);
    EXPECT_EQ(outcome.std_output, run_outcome{}.std_output);
    EXPECT_EQ(outcome.std_error, run_outcome{}.std_error);
    EXPECT_TRUE(outcome.report.timed_out);
    EXPECT_FALSE(outcome.report.std_output_cut || outcome.report.std_error_cut);
    const auto shell = static_cast<pid_t>(std::stol(platform_test::read_file(pid_file)));
    EXPECT_EQ(platform_test::processes_left(shell), 0u);
    EXPECT_EQ(platform_test::processes_left(), 0u);
}

TEST(command_runner_slow, time_out_ends_the_whole_group) {
    expect_time_out_ends_everything("sleep 1000 & printf partial; sleep 1000");
}

TEST(command_runner_slow, child_ignoring_termination_is_killed) {
    expect_time_out_ends_everything("trap '' TERM; sleep 1000 & while :; do sleep 1; done");
}

} // namespace
