#pragma once
// Showing and changing the plug-in manager's settings that runs use.

#include "cli/cli_command.hpp"

#include <string>
#include <vector>

namespace qiro_plugin::cli {

int command_settings_show(bool a_json);
// Each assignment is KEY=VALUE; the password, when asked for, is read from standard input.
int command_settings_set(const std::vector<std::string>& a_assignments, bool a_password_stdin);

// The keys "settings set" accepts, for its help text.
std::string settings_key_help();

// settings show and settings set, under the settings command.
std::vector<cli_command> add_settings_commands(CLI::App& a_app);

} // namespace qiro_plugin::cli
