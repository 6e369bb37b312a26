#pragma once
// The three plug-in entries from the command line: run, callback, preference.

#include <string>

namespace qiro_plugin::cli {

struct run_options {
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

int command_run(const run_options& a_options);
int command_callback(const run_options& a_options);
int command_preference(const run_options& a_options);

} // namespace qiro_plugin::cli
