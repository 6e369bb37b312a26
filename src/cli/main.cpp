// qiro-lumen: the debugger's runs from the command line, for terminals and CI.

#include "build_version.hpp"
#include "cli/cli_support.hpp"
#include "cli/completion.hpp"
#include "cli/list_bridge_commands.hpp"
#include "cli/new_watch_commands.hpp"
#include "cli/run_commands.hpp"
#include "cli/sandbox_option.hpp"
#include "cli/settings_commands.hpp"
#include "cli/test_command.hpp"
#include "core/localized_texts.hpp"
#include "platform/termination_signals.hpp"

#include <CLI/CLI.hpp>

#include <clocale>
#include <exception>
#include <iostream>

namespace {

using namespace qiro_plugin::cli;

const char* const plugin_help =
    "the plug-in: a path to its file, or a file name in the plug-in folder";
const char* const folder_help = "the plug-in folder (default: plugin/ beside this program)";

} // namespace

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

    run_options options;
    const auto add_probe_flags = [](CLI::App& a_command, run_options& a_options) {
        auto* probe = a_command.add_flag(
            "--probe", a_options.probe,
            "probe every run: run the plug-in a second time to see what its entry returned "
            "(by default only a run that failed or returned no candidate is probed)");
        a_command.add_flag("--no-probe", a_options.no_probe, "never probe: run the plug-in once")
            ->excludes(probe);
    };

    auto* run = app.add_subcommand(
        "run", "Run a plug-in for a written form as the debugger's Run button does.\n"
               "Exit status: 0 the output parsed as a result document; 1 the plug-in could not "
               "be run or its output did not parse; 2 bad usage; 3 the run ended with an error.");
    run->add_option("--plugin-folder", options.plugin_folder, folder_help);
    add_sandbox_option(*run, options.sandbox);
    run->add_flag("--json", options.json, "print one JSON object instead of the panes");
    add_probe_flags(*run, options);
    run->add_option("--reading", options.reading, "the reading handed to the plug-in");
    bool watch = false;
    run->add_flag("--watch", watch,
                  "run again each time the plug-in or its .xml is saved, until interrupted");
    run->add_option("PLUGIN", options.plugin, plugin_help)->required();
    run->add_option("WRITTEN_FORM", options.written_form,
                    "the written form (hyoki): 1 to 100 UTF-16 code units")
        ->required();

    auto* callback = app.add_subcommand(
        "callback", "Call a plug-in back as after the user committed one of its candidates.\n"
                    "The plug-in's .xml must hold <callback>true</callback>. Exit status: 0 ran; "
                    "1 could not be run; 2 bad usage; 3 the run ended with an error.");
    callback->add_option("--plugin-folder", options.plugin_folder, folder_help);
    add_sandbox_option(*callback, options.sandbox);
    callback->add_flag("--json", options.json, "print one JSON object instead of the panes");
    add_probe_flags(*callback, options);
    callback->add_option("PLUGIN", options.plugin, plugin_help)->required();
    callback->add_option("CANDIDATE", options.candidate, "the committed candidate")->required();
    callback
        ->add_option("WRITTEN_FORM", options.written_form,
                     "the written form the candidates were searched for")
        ->required();

    auto* preference = app.add_subcommand(
        "preference", "Run a plug-in's preference entry.\n"
                      "The plug-in's .xml must hold <preference>true</preference>. Exit status "
                      "as for callback.");
    preference->add_option("--plugin-folder", options.plugin_folder, folder_help);
    add_sandbox_option(*preference, options.sandbox);
    preference->add_flag("--json", options.json, "print one JSON object instead of the panes");
    add_probe_flags(*preference, options);
    preference->add_option("PLUGIN", options.plugin, plugin_help)->required();

    auto* list = app.add_subcommand("list", "List the plug-in menu: one file name a line.");
    list->add_option("--plugin-folder", options.plugin_folder, folder_help);

    auto* settings =
        app.add_subcommand("settings", "Show or change the plug-in manager's settings.");
    settings->require_subcommand(1);
    bool settings_json = false;
    auto* settings_show = settings->add_subcommand("show", "Show the settings a run uses "
                                                           "(the password only as set or empty).");
    settings_show->add_flag("--json", settings_json, "print one JSON object");
    std::vector<std::string> assignments;
    bool password_stdin = false;
    auto* settings_set = settings->add_subcommand(
        "set", "Change settings: KEY=VALUE... with the keys " + settings_key_help() + ".");
    settings_set->add_option("ASSIGNMENT", assignments, "KEY=VALUE");
    settings_set->add_flag("--password-stdin", password_stdin,
                           "read the proxy password from standard input");

    test_options tests;
    auto* test = app.add_subcommand(
        "test", "Run the cases kept beside plug-ins (NAME.cases.json beside NAME.py) and report "
                "which pass.\nExit status: 0 all passed; 1 a case failed; 2 bad usage or a bad "
                "cases file.");
    test->add_option("PATH", tests.paths,
                     "plug-ins, cases files or folders (default: the plug-in folder)");
    test->add_option("-j,--jobs", tests.jobs, "cases run at once (default: one per core)")
        ->check(CLI::Range(1u, 256u));
    test->add_option("--junit", tests.junit_file, "also write JUnit XML for CI to FILE");
    test->add_flag("--update", tests.update,
                   "write what the runs gave as the cases' expectations, and show the changes");
    test->add_option("--case", tests.case_names, "run only the case of this name (repeatable)")
        ->allow_extra_args(false);
    test->add_option("--plugin-folder", tests.plugin_folder, folder_help);
    add_sandbox_option(*test, tests.sandbox);
    auto* coverage = test->add_flag("--coverage{coverage}", tests.coverage_folder,
                                    "run each case under its language's coverage tool and write "
                                    "DIR/lcov.info and DIR/cobertura.xml (default DIR: coverage)")
                         ->option_text("[=DIR]");
    test->add_option("--fail-under", tests.fail_under,
                     "with --coverage: fail when a plug-in's cases reach less than PERCENT of "
                     "its lines")
        ->check(CLI::Range(0.0, 100.0))
        ->option_text("PERCENT")
        ->needs(coverage);

    std::string language;
    auto* bridge =
        app.add_subcommand("bridge", "Print a language's bridge script, to run it by hand: "
                                     "INTERPRETER BRIDGE_FILE PLUGIN_PATH METHOD ARGUMENTS...");
    bridge->add_option("LANGUAGE", language, "perl, ruby or python")
        ->required()
        ->check(CLI::IsMember({"perl", "ruby", "python"}));

    std::string new_language;
    std::string new_name;
    std::string new_folder;
    auto* make_new = app.add_subcommand(
        "new", "Write a new plug-in from a template: NAME.EXT with the processing, callback and "
               "preference entries, and its NAME.xml document.");
    make_new->add_option("LANGUAGE", new_language, "perl, python or ruby")->required();
    make_new->add_option("NAME", new_name, "the plug-in's name, also its file name")->required();
    make_new->add_option("--plugin-folder", new_folder,
                         "where to write the files (default: the current folder)");

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
        if (*run) {
            return watch ? command_run_watch(options) : command_run(options);
        }
        if (*make_new) {
            return command_new(new_language, new_name, new_folder);
        }
        if (*callback) {
            return command_callback(options);
        }
        if (*preference) {
            return command_preference(options);
        }
        if (*list) {
            return command_list(options.plugin_folder);
        }
        if (*settings_show) {
            return command_settings_show(settings_json);
        }
        if (*settings_set) {
            if (assignments.empty() && !password_stdin) {
                print_error("nothing to set: give KEY=VALUE... or --password-stdin");
                return exit_bad_usage;
            }
            return command_settings_set(assignments, password_stdin);
        }
        if (*test) {
            return command_test(tests);
        }
        if (*bridge) {
            return command_bridge(language);
        }
    } catch (const std::exception& error) {
        print_error(std::string("failed: ") + error.what());
        return exit_run_error;
    }
    return exit_bad_usage;
}
