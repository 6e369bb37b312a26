#pragma once
// Listing the plug-in menu and printing a decoded bridge script.

#include "cli/cli_command.hpp"

#include <string>

namespace qiro_plugin::cli {

int command_list(const std::string& a_plugin_folder);
cli_command add_list_command(CLI::App& a_app);
// a_language is "perl", "ruby" or "python".
int command_bridge(const std::string& a_language);
cli_command add_bridge_command(CLI::App& a_app);

} // namespace qiro_plugin::cli
