#pragma once
// Debugger processes that leave the command's process group (debugpy's adapter makes itself a
// daemon in a session of its own), found by a variable the helper put in their environment.

#include <chrono>
#include <string>
#include <sys/types.h>
#include <vector>

namespace qiro_plugin::debugger_support {

// The processes of this user whose environment holds the entry "NAME=VALUE" exactly.
std::vector<pid_t> processes_with_environment(const std::string& a_entry);

// Waits up to a_grace for those processes to end by themselves, then kills the rest and waits
// until they are gone (a few seconds at most).
void end_processes_with_environment(const std::string& a_entry, std::chrono::milliseconds a_grace);

} // namespace qiro_plugin::debugger_support
