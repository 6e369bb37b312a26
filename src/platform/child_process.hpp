#pragma once
// A "/bin/sh -c" child leading its own process group, with its outputs on two pipes.

#include "platform/output_stream.hpp"

#include <memory>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace qiro_plugin::utility::detail {

class child_process {
public:
    // Starts the shell on the command line in the folder (empty: the caller's). Returns nullptr
    // when the pipes or the child cannot be set up; otherwise the pipes' reading ends
    // (close-on-exec, non-blocking) are handed out through the two last arguments.
    static std::unique_ptr<child_process> start(const std::string& a_command_line,
                                                const std::string& a_working_folder,
                                                int& a_std_output_fd, int& a_std_error_fd);
    // The same for any program: a_arguments[0] is its absolute path. A non-empty a_environment
    // ("NAME=VALUE" entries) replaces this process's environment for the child.
    static std::unique_ptr<child_process> start(const std::vector<std::string>& a_arguments,
                                                const std::string& a_working_folder,
                                                int& a_std_output_fd, int& a_std_error_fd,
                                                const std::vector<std::string>& a_environment = {});
    // A child still unreaped here (an exception unwound the run) is killed with its group.
    ~child_process();
    child_process(const child_process&) = delete;
    child_process& operator=(const child_process&) = delete;

    // Reaps the shell once both streams have ended; a shell that lingers after closing its
    // outputs is left to a background waiter, so the caller never blocks on it.
    void reap_after_end_of_file();
    // SIGTERM to the group; after a 2 s grace (outputs drained and dropped meanwhile) SIGKILL;
    // then reaps the shell.
    void terminate(output_stream& a_std_output, output_stream& a_std_error);
    // The shell's exit status (128 + signal when a signal ended it), once reaped here.
    std::optional<int> exit_status() const { return m_exit_status; }
    // The processor time the child and the children it waited for used, once reaped here.
    std::optional<double> cpu_ms() const { return m_cpu_ms; }

private:
    child_process(pid_t a_pid, int a_exit_fd);
    bool has_exited() const;

    pid_t m_pid;
    // A pidfd that becomes readable when the shell exits; -1 where the kernel has none.
    int m_exit_fd;
    bool m_reaped = false;
    std::optional<int> m_exit_status;
    std::optional<double> m_cpu_ms;
};

} // namespace qiro_plugin::utility::detail
