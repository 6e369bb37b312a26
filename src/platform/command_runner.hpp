#pragma once
// Runs one shell command line as a child process and collects both of its output streams.

#include "text/utf16_string.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace qiro_plugin {

// The collector for one output stream of a child: its bytes and whether it reached end of file.
struct command_result {
    std::int32_t finished;
    std::vector<char> data;
    command_result();
};

namespace utility {

// Which streams produced more than the runner keeps (64 MiB each); the rest was read and dropped.
// The other members are for explaining a run to its author and never change the outputs.
struct run_command_report {
    bool std_output_cut = false;
    bool std_error_cut = false;
    bool timed_out = false;
    // The time-out came early: stop_running_commands() was called while the command ran.
    bool stopped = false;
    // What the child had written on standard error when the time-out stopped it.
    std::string partial_std_error;
    // The shell's exit status, when it was reaped before run_command returned.
    std::optional<int> exit_status;
    double elapsed_ms = 0.0;
    // Processor time of the command, user and system; unlike the elapsed time it does not grow
    // with the load of the machine.
    std::optional<double> cpu_ms;
};

// Runs "/bin/sh -c a_command_line" in a_working_folder (empty: the caller's). Results:
// 0 both streams closed (whatever the exit status), the outputs and the report replaced;
// 1 set-up failed; 2 time-out after about 30 s when a_is_timeout, or at once on
// stop_running_commands(), child group terminated.
// On 1 and 2 the outputs are left untouched; on 2 the report says timed_out and keeps the
// partial standard error. 3 is reserved, never returned.
// A stream that produced bytes ends with one zero byte; an empty stream stays empty.
int run_command(const std::string& a_command_line, const utf16_string& a_working_folder,
                std::vector<char>& a_std_output, std::vector<char>& a_std_error, bool a_is_timeout,
                run_command_report* a_report = nullptr);

// Kills the process groups of every command running now, so their run_command calls end at
// once. Async-signal-safe: a host's handler for SIGINT or SIGTERM calls it so that no plug-in
// outlives the host.
void kill_running_commands() noexcept;

// A fresh scope for commands: one part of a program (a soak in the window, say) that must end
// its own commands without touching those of the rest.
std::uint32_t new_command_scope() noexcept;

// While it lives, the commands this thread starts belong to a_scope.
class command_scope_guard {
public:
    explicit command_scope_guard(std::uint32_t a_scope) noexcept;
    ~command_scope_guard();
    command_scope_guard(const command_scope_guard&) = delete;
    command_scope_guard& operator=(const command_scope_guard&) = delete;

private:
    std::uint32_t m_outer;
};

// Kills the process groups of the commands of a_scope running now; the others run on.
void kill_commands_in(std::uint32_t a_scope) noexcept;

// Ends every command running now as its time-out would (run_command returns 2), at once; for
// a Stop button. Not for signal handlers: use kill_running_commands there.
void stop_running_commands() noexcept;

// How many children run_command has started in this process, to check that a run costs no
// more processes than it should.
std::uint64_t started_command_count() noexcept;

// Installs the function called once per 100 ms pass while a command runs; empty removes it.
void set_run_command_wait_hook(std::function<void()> a_hook);

} // namespace utility
} // namespace qiro_plugin
