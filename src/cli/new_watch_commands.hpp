#pragma once
// Author's commands: a new plug-in from a template, and runs that follow the plug-in's saves.

#include "cli/run_commands.hpp"

#include <string>

namespace qiro_plugin::cli {

// Writes NAME.EXT and NAME.xml from the language's template into the folder (the current
// one when empty) and prints their paths.
int command_new(const std::string& a_language, const std::string& a_name,
                const std::string& a_folder);
cli_command add_new_command(CLI::App& a_app);

// Runs as command_run does, then again each time the plug-in or its .xml is saved, until
// interrupted. Returns only for bad usage.
int command_run_watch(const entry_options& a_options);

} // namespace qiro_plugin::cli
