#pragma once
// The process groups of the commands running now, so that a host ending on a signal can end them.

#include <cstdint>
#include <mutex>
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
// Keeps stop_running_commands out while held: a command starts its child (which records the
// group) and reads stop_count() under it, so that no stop falls between the two.
[[nodiscard]] std::unique_lock<std::mutex> hold_stops();

} // namespace qiro_plugin::utility::detail
