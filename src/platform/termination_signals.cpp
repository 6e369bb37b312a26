#include "platform/termination_signals.hpp"

#include "platform/command_runner.hpp"

#include <csignal>

namespace qiro_plugin::utility {

namespace {

// Runs in the signal's context: only async-signal-safe calls.
void end_with_running_commands(int a_signal) {
    kill_running_commands();
    std::signal(a_signal, SIG_DFL);
    std::raise(a_signal);
}

} // namespace

void end_running_commands_on_termination_signals() {
    struct sigaction action {};
    action.sa_handler = end_with_running_commands;
    sigemptyset(&action.sa_mask);
    for (const int signal_number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        struct sigaction previous {};
        // A signal the caller chose to ignore (nohup) stays ignored.
        if (sigaction(signal_number, nullptr, &previous) == 0 && previous.sa_handler == SIG_IGN) {
            continue;
        }
        sigaction(signal_number, &action, nullptr);
    }
}

} // namespace qiro_plugin::utility
