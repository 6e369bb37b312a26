#pragma once
// The --sandbox[=nonet] option of the commands that run a plug-in, and what they say about it.

#include "core/run_report.hpp"

#include <string>

namespace CLI {
class App;
}

namespace qiro_plugin::cli {

// Adds --sandbox (value "on") and --sandbox=nonet to a command; the text stays empty without it.
void add_sandbox_option(CLI::App& a_command, std::string& a_value);

// The mode of the option's text: off when empty.
utility::sandbox_mode sandbox_mode_of(const std::string& a_value);

// For a run refused because the sandbox cannot be had: prints why and returns true.
bool report_sandbox_refusal(const debugger::run_report& a_report);

// One line on standard error saying the run was confined, when it was.
void print_sandbox_status(const debugger::run_report& a_report);

} // namespace qiro_plugin::cli
