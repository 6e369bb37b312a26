// qiro-lumen: the debugger's runs from the command line, for terminals and CI.

#include "build_version.hpp"
#include "cli/cli_support.hpp"
#include "cli/completion.hpp"
#include "cli/list_bridge_commands.hpp"
#include "cli/new_watch_commands.hpp"
#include "cli/run_commands.hpp"
#include "cli/settings_commands.hpp"
#include "cli/test_command.hpp"
#include "core/localized_texts.hpp"
#include "platform/termination_signals.hpp"

#include <CLI/CLI.hpp>

#include <clocale>
#include <exception>

using namespace qiro_plugin::cli;

int main(int argc, char** argv) {
    // Only the character type and the system's error texts follow the user's locale: numbers
    // and sorting stay fixed for scripts, and each further category is files to load per run.
    std::setlocale(LC_CTYPE, "");
    std::setlocale(LC_MESSAGES, "");
    qiro_plugin::utility::end_running_commands_on_termination_signals();
    qiro_plugin::debugger::install_localized_text_provider(
        qiro_plugin::debugger::language_from_environment());

    CLI::App app{"Runs QIRO Lumen script plug-ins (Perl, Ruby, Python) exactly as the plug-in "
                 "manager would, and shows what they print.",
                 "qiro-lumen"};
    app.require_subcommand(1);
    // In the order of the help text.
    std::vector<cli_command> commands = add_entry_commands(app);
    commands.push_back(add_list_command(app));
    for (auto& command : add_settings_commands(app)) {
        commands.push_back(std::move(command));
    }
    commands.push_back(add_test_command(app));
    commands.push_back(add_bridge_command(app));
    commands.push_back(add_new_command(app));
    app.set_version_flag("--version", qiro_plugin::build_info::version_text("qiro-lumen"));
    add_completion_command(app);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {
        return app.exit(success);
    } catch (const CLI::ParseError& error) {
        app.exit(error);
        return exit_bad_usage;
    }
    try {
        for (const auto& command : commands) {
            if (command.command->parsed()) {
                return command.run();
            }
        }
    } catch (const std::exception& error) {
        print_error(std::string("failed: ") + error.what());
        return exit_run_error;
    }
    return exit_bad_usage;
}
