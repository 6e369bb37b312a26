#pragma once
// --debug[=PORT|console] on the commands that run a plug-in, and debug-config, which prints an
// editor's attach configuration for it.

#include "cli/cli_command.hpp"
#include "core/debug_companion.hpp"

#include <nlohmann/json.hpp>

#include <memory>
#include <string>

namespace CLI {
class App;
}

namespace qiro_plugin::cli {

// Adds --debug (value "on"), --debug=PORT and --debug=console; the text stays empty without it.
void add_debug_option(CLI::App& a_command, std::string& a_value);

// The companion the option's text asks for, which writes the waiting line on standard error;
// nullptr when the text is empty.
std::shared_ptr<debugger::debug_companion> debug_companion_of(const std::string& a_value);

// The "debug" member of --json.
nlohmann::ordered_json debug_json(const debugger::debug_endpoint& a_endpoint);

// While it lives, SIGINT, SIGTERM, SIGHUP and SIGQUIT end the running commands without ending
// this process, so that the debug helpers are cleaned up; the signal is raised again when it
// ends. Signals the caller ignores stay ignored.
class deferred_termination {
public:
    deferred_termination();
    ~deferred_termination();
    deferred_termination(const deferred_termination&) = delete;
    deferred_termination& operator=(const deferred_termination&) = delete;
    // A signal came: the run was ended, and what it left says nothing about the plug-in.
    bool signalled() const;
};

// debug-config vscode|nvim|emacs PLUGIN [--port PORT]
cli_command add_debug_config_command(CLI::App& a_app);

} // namespace qiro_plugin::cli
