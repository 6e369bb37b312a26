#pragma once
// The fast mode of soak and test: one interpreter that has loaded the bridge's functions and the
// plug-in once forks a child for each bridge command, instead of a new interpreter per command.

#include "platform/command_executor.hpp"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace qiro_plugin::fast_runs {

// A bridge command line taken apart: the interpreter and the quoted values in order (the bridge
// file, the plug-in, the method, the request values). Nothing for any other command line.
struct bridge_command {
    std::string interpreter;
    std::vector<std::string> values;
};
std::optional<bridge_command> parse_bridge_command(const std::string& a_command_line);

// The worker script of an interpreter ("perl", "ruby", "python"), decoded; empty for others.
std::string worker_script(const std::string& a_interpreter);

// One worker process, started at the first bridge command it is offered and bound to that
// command's interpreter and plug-in. A command it serves runs in a fresh fork with the same
// argument list, outputs, 30 s time-out (SIGTERM to the child's group, SIGKILL 2 s later), 64 MiB
// per stream and stop as under run_command. It leaves to run_command every other command, and
// all commands once it has fallen back (see fallback_reason). Not for sharing between threads.
class fork_worker : public utility::command_executor {
public:
    fork_worker();
    // Ends the worker and its child and removes its private folder.
    ~fork_worker() override;
    fork_worker(const fork_worker&) = delete;
    fork_worker& operator=(const fork_worker&) = delete;

    std::optional<int> execute(const std::string& a_command_line,
                               const std::string& a_working_folder, std::vector<char>& a_std_output,
                               std::vector<char>& a_std_error, bool a_is_timeout,
                               utility::run_command_report* a_report) override;

    // True for a syntax check of the worker's bridge and plug-in once the worker has its answer,
    // which the next execute of that command gives without a file or a process.
    bool answers_without_script_file(const std::string& a_command_line,
                                     const std::string& a_encoded_script) override;

    // Why commands go to run_command instead (the plug-in starts threads while it loads, it does
    // not load, the worker ended...); empty while the worker serves them or has not started.
    std::string fallback_reason() const;
    // How many commands the worker has served.
    std::uint64_t served_count() const;

private:
    struct impl;
    std::unique_ptr<impl> p_impl;
};

} // namespace qiro_plugin::fast_runs
