#include "cli/list_bridge_commands.hpp"

#include "cli/cli_support.hpp"
#include "core/plugin_menu_model.hpp"
#include "core/script_languages.hpp"
#include "text/url_xml_escape.hpp"
#include "text/utf8_text.hpp"

#include <CLI/CLI.hpp>

#include <iostream>
#include <memory>

namespace qiro_plugin::cli {

int command_list(const std::string& a_plugin_folder) {
    debugger::plugin_menu_model menu;
    stderr_alert_sink alerts;
    debugger::reload_plugins(menu, chosen_plugin_folder(a_plugin_folder), alerts);
    for (const auto& title : menu.item_titles()) {
        std::cout << string_encode::to_utf8_marked(title) << '\n';
    }
    if (!alerts.keys().empty()) {
        print_error("looked in " +
                    string_encode::to_utf8_marked(chosen_plugin_folder(a_plugin_folder)) +
                    "; use --plugin-folder DIR to list another folder");
        return exit_not_run;
    }
    return exit_success;
}

int command_bridge(const std::string& a_language) {
    for (const auto& language : debugger::script_language_table()) {
        if (language.command_name == a_language) {
            std::cout << utility::url_decode(language.bridge_script());
            std::cout.flush();
            return exit_success;
        }
    }
    print_error("unknown language \"" + a_language + "\": use perl, ruby or python");
    return exit_bad_usage;
}

cli_command add_list_command(CLI::App& a_app) {
    auto folder = std::make_shared<std::string>();
    auto* list = a_app.add_subcommand("list", "List the plug-in menu: one file name a line.");
    list->add_option("--plugin-folder", *folder, plugin_folder_help);
    return {list, [folder] { return command_list(*folder); }};
}

cli_command add_bridge_command(CLI::App& a_app) {
    auto language = std::make_shared<std::string>();
    auto* bridge =
        a_app.add_subcommand("bridge", "Print a language's bridge script, to run it by hand: "
                                       "INTERPRETER BRIDGE_FILE PLUGIN_PATH METHOD ARGUMENTS...");
    bridge->add_option("LANGUAGE", *language, "perl, ruby or python")
        ->required()
        ->check(CLI::IsMember({"perl", "ruby", "python"}));
    return {bridge, [language] { return command_bridge(*language); }};
}

} // namespace qiro_plugin::cli
