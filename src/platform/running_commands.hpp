#pragma once
// The process groups of the commands running now, so that a host ending on a signal can end them.

#include <cstdint>
#include <sys/types.h>

namespace qiro_plugin::utility::detail {

// Records a started group; false when the table is full (the command still runs, untracked).
bool add_running_group(pid_t a_group) noexcept;
// Forgets a group; called before its leader is reaped, while its id cannot be reused.
void remove_running_group(pid_t a_group) noexcept;
// Sends SIGKILL to every recorded group; async-signal-safe.
void kill_running_groups() noexcept;
// How many times stop_running_commands was called; a command that sees it change was stopped.
std::uint64_t stop_count() noexcept;

} // namespace qiro_plugin::utility::detail
