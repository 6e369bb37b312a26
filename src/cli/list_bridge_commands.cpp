#include "cli/list_bridge_commands.hpp"

#include "cli/cli_support.hpp"
#include "core/plugin_menu_model.hpp"
#include "core/script_languages.hpp"
#include "text/url_xml_escape.hpp"

#include <iostream>

namespace qiro_plugin::cli {

int command_list(const std::string& a_plugin_folder) {
    debugger::plugin_menu_model menu;
    stderr_alert_sink alerts;
    debugger::reload_plugins(menu, chosen_plugin_folder(a_plugin_folder), alerts);
    for (const auto& title : menu.item_titles()) {
        std::cout << to_utf8(title) << '\n';
    }
    if (!alerts.keys().empty()) {
        print_error("looked in " + to_utf8(chosen_plugin_folder(a_plugin_folder)) +
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

} // namespace qiro_plugin::cli
