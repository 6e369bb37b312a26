#pragma once
// Extra environment for the commands one thread starts: how a debugger or a coverage tool joins
// a plug-in's command without changing its command line.

#include <string>
#include <utility>
#include <vector>

namespace qiro_plugin::utility {

struct command_environment {
    // Set in the child, replacing this process's value of the same name.
    std::vector<std::pair<std::string, std::string>> variables;
    // While a debugger is attached or awaited a command may wait as long as its author does:
    // the 30 s time-out does not apply. A stop still ends it at once.
    bool without_timeout = false;
};

// While it lives, every command that run_command starts on this thread gets the environment on
// top of this process's. Scopes nest; the innermost wins for a variable both set.
class command_environment_scope {
public:
    explicit command_environment_scope(command_environment a_environment);
    ~command_environment_scope();
    command_environment_scope(const command_environment_scope&) = delete;
    command_environment_scope& operator=(const command_environment_scope&) = delete;

private:
    command_environment m_environment;
    const command_environment_scope* m_outer;
    friend bool commands_without_timeout();
    friend bool commands_with_variables();
    friend std::vector<std::string> command_environment_block(char** a_base);
};

// True when a scope of this thread lifts the time-out.
bool commands_without_timeout();

// True when a scope of this thread sets a variable.
bool commands_with_variables();

// "NAME=VALUE" entries of a_base (a null-ended block such as environ) with this thread's scopes
// applied; empty when no scope is active, which means a_base unchanged.
std::vector<std::string> command_environment_block(char** a_base);

} // namespace qiro_plugin::utility
