#include "cli/new_watch_commands.hpp"

#include "cli/cli_support.hpp"
#include "core/change_watch.hpp"
#include "core/plugin_templates.hpp"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>
#include <thread>

namespace qiro_plugin::cli {

int command_new(const std::string& a_language, const std::string& a_name,
                const std::string& a_folder) {
    const auto language = debugger::template_language_from_name(a_language);
    if (!language) {
        print_error("unknown language \"" + a_language + "\": use perl, python or ruby");
        return exit_bad_usage;
    }
    std::error_code error;
    const std::filesystem::path folder =
        a_folder.empty() ? std::filesystem::current_path(error) : std::filesystem::path(a_folder);
    try {
        const auto created = debugger::create_plugin_from_template(folder, *language, a_name);
        std::cout << created.plugin_file.string() << '\n'
                  << created.preference_file.string() << '\n';
        return exit_success;
    } catch (const std::exception& failure) {
        print_error(failure.what());
        return exit_bad_usage;
    }
}

cli_command add_new_command(CLI::App& a_app) {
    struct new_options {
        std::string language;
        std::string name;
        std::string folder;
    };
    auto options = std::make_shared<new_options>();
    auto* make_new = a_app.add_subcommand(
        "new", "Write a new plug-in from a template: NAME.EXT with the processing, callback and "
               "preference entries, and its NAME.xml document.");
    make_new->add_option("LANGUAGE", options->language, "perl, python or ruby")->required();
    make_new->add_option("NAME", options->name, "the plug-in's name, also its file name")
        ->required();
    make_new->add_option("--plugin-folder", options->folder,
                         "where to write the files (default: the current folder)");
    return {make_new,
            [options] { return command_new(options->language, options->name, options->folder); }};
}

int command_run_watch(const entry_options& a_options) {
    const auto plugin = resolve_plugin(a_options.plugin, a_options.plugin_folder);
    if (!plugin) {
        return exit_bad_usage;
    }
    const auto files = debugger::watched_files(*plugin);
    debugger::change_debouncer debouncer;
    for (;;) {
        auto seen = debugger::file_snapshot::take(files);
        if (command_run(a_options) == exit_bad_usage) {
            return exit_bad_usage;
        }
        std::cout.flush();
        std::cerr << "qiro-lumen: watching " << files[0].string() << " and "
                  << files[1].filename().string() << " (Ctrl+C ends)" << std::endl;
        // Polling keeps the program free of a notification library, and a few checks a
        // second is quick enough for a save in an editor.
        for (;;) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
            const auto now = debugger::file_snapshot::take(files);
            const auto time = debugger::change_debouncer::clock::now();
            if (!(now == seen)) {
                seen = now;
                debouncer.note_change(time);
            }
            if (debouncer.take_due(time, false)) {
                break;
            }
        }
        std::cerr << "qiro-lumen: " << files[0].filename().string() << " changed, running again"
                  << std::endl;
    }
}

} // namespace qiro_plugin::cli
