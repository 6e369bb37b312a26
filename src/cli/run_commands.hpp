#pragma once
// The three plug-in entries from the command line: run, callback, preference.

#include "cli/cli_command.hpp"

#include <string>
#include <vector>

namespace qiro_plugin::cli {

// What the entry commands take; the options they share are declared once, by add_entry_options.
struct entry_options {
    std::string plugin;
    std::string plugin_folder;
    std::string written_form;
    std::string reading;
    std::string candidate;
    bool json = false;
    std::string sandbox; // empty, "on" or "nonet"
    // --probe and --no-probe: probe every run, or none (by default only failed or empty ones).
    bool probe = false;
    bool no_probe = false;
};

// The options every entry command has: --plugin-folder, --sandbox, --json, --probe and
// --no-probe.
void add_entry_options(CLI::App& a_command, entry_options& a_options);

// run (with --watch), callback and preference, in that order.
std::vector<cli_command> add_entry_commands(CLI::App& a_app);

int command_run(const entry_options& a_options);

} // namespace qiro_plugin::cli
