#pragma once
// What the debuggers need from the machine, asked before a run is debugged.

#include <optional>
#include <string>
#include <vector>

namespace qiro_plugin::debugger_support {

// The standard output of a short command (a_arguments[0] found on PATH), or nothing when it
// could not start, failed, or took more than a few seconds.
std::optional<std::string> command_output(const std::vector<std::string>& a_arguments);

// Why a_interpreter ("python", "ruby", "perl") cannot be debugged here, with the Debian package
// that would change that, or nothing when it can.
std::optional<std::string> missing_debugger(const std::string& a_interpreter);

// True for a version "MAJOR.MINOR[.…]" at least a_major.a_minor.
bool version_at_least(const std::string& a_version, int a_major, int a_minor);

} // namespace qiro_plugin::debugger_support
