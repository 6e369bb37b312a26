#pragma once
// An opt-in stand-in for run_command on one thread: a fast mode that serves some commands
// itself, under the same limits, and leaves every other command to the runner.

#include "platform/command_runner.hpp"

#include <optional>
#include <string>
#include <vector>

namespace qiro_plugin::utility {

class command_executor {
public:
    virtual ~command_executor() = default;
    // Runs the command as run_command would (same results, outputs and report), or returns
    // nothing, untouched, to leave it to run_command. a_working_folder exists (bytes).
    virtual std::optional<int> execute(const std::string& a_command_line,
                                       const std::string& a_working_folder,
                                       std::vector<char>& a_std_output,
                                       std::vector<char>& a_std_error, bool a_is_timeout,
                                       run_command_report* a_report) = 0;
    // Whether the next execute of this command, whose script is a_encoded_script (URL-encoded),
    // would be answered from what the executor already holds, running nothing: its caller then
    // need not write the script's file.
    virtual bool answers_without_script_file(const std::string& /*a_command_line*/,
                                             const std::string& /*a_encoded_script*/) {
        return false;
    }
};

// While it lives, run_command on this thread first offers each command to the executor, unless
// the command is confined or has an environment of its own (those always run as they are).
class command_executor_scope {
public:
    explicit command_executor_scope(command_executor* a_executor);
    ~command_executor_scope();
    command_executor_scope(const command_executor_scope&) = delete;
    command_executor_scope& operator=(const command_executor_scope&) = delete;

private:
    command_executor* m_outer;
};

// The innermost executor of this thread, or nullptr.
command_executor* current_command_executor();

// The executor that run_command offers its commands to now: the innermost one, unless commands
// are confined, have variables of their own or run without a time-out; else nullptr.
command_executor* offered_command_executor();

} // namespace qiro_plugin::utility
