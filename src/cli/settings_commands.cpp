#include "cli/settings_commands.hpp"

#include "cli/cli_support.hpp"
#include "keys/zul_key_access.hpp"
#include "settings/manager_preference_access.hpp"
#include "settings/preference_keys.hpp"
#include "settings/preference_store.hpp"
#include "text/utf8_text.hpp"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <iostream>
#include <iterator>
#include <limits>
#include <memory>

namespace qiro_plugin::cli {

namespace {

enum class field_kind { flag, number, text };

struct settings_field {
    const char* key;
    field_kind kind;
    std::uint32_t manager_preference_data::*number = nullptr;
    utf16_string manager_preference_data::*text = nullptr;
};

using data = manager_preference_data;

const std::array<settings_field, 12> fields{{
    {"automatically_displayed_candidate", field_kind::flag,
     &data::automatically_displayed_candidate},
    {"key_plugin_candidate_change", field_kind::number, &data::key_plugin_candidate_change},
    {"key_1_plugin_name", field_kind::text, nullptr, &data::key_1_plugin_name},
    {"key_2_plugin_name", field_kind::text, nullptr, &data::key_2_plugin_name},
    {"key_3_plugin_name", field_kind::text, nullptr, &data::key_3_plugin_name},
    {"key_4_plugin_name", field_kind::text, nullptr, &data::key_4_plugin_name},
    {"key_5_plugin_name", field_kind::text, nullptr, &data::key_5_plugin_name},
    {"enable_proxy", field_kind::flag, &data::enable_proxy},
    {"proxy_address", field_kind::text, nullptr, &data::proxy_address},
    {"proxy_port", field_kind::number, &data::proxy_port},
    {"enable_authentication", field_kind::flag, &data::enable_authentication},
    {"proxy_username", field_kind::text, nullptr, &data::proxy_username},
}};

std::optional<std::uint32_t> parse_flag(std::string a_value) {
    std::transform(a_value.begin(), a_value.end(), a_value.begin(),
                   [](unsigned char a_char) { return static_cast<char>(std::tolower(a_char)); });
    for (const char* word : {"1", "true", "yes", "on"}) {
        if (a_value == word) {
            return 1;
        }
    }
    for (const char* word : {"0", "false", "no", "off"}) {
        if (a_value == word) {
            return 0;
        }
    }
    return std::nullopt;
}

std::optional<std::uint32_t> parse_number(const std::string& a_value) {
    std::uint32_t number = 0;
    const auto* end = a_value.data() + a_value.size();
    const auto [stop, error] = std::from_chars(a_value.data(), end, number);
    if (a_value.empty() || error != std::errc{} || stop != end) {
        return std::nullopt;
    }
    return number;
}

// Applies one KEY=VALUE; false after an error line.
bool apply_assignment(const std::string& a_assignment, manager_preference_data& a_data) {
    const auto equals = a_assignment.find('=');
    if (equals == std::string::npos) {
        print_error("\"" + a_assignment +
                    "\" is not KEY=VALUE; the keys are: " + settings_key_help());
        return false;
    }
    const std::string key = a_assignment.substr(0, equals);
    const std::string value = a_assignment.substr(equals + 1);
    if (key == "proxy_password") {
        print_error("the password is not given on the command line (other users could read it "
                    "there): use --password-stdin");
        return false;
    }
    const auto field =
        std::find_if(fields.begin(), fields.end(),
                     [&key](const settings_field& a_field) { return key == a_field.key; });
    if (field == fields.end()) {
        print_error("unknown settings key \"" + key + "\"; the keys are: " + settings_key_help());
        return false;
    }
    switch (field->kind) {
    case field_kind::flag:
        if (const auto flag = parse_flag(value)) {
            a_data.*(field->number) = *flag;
            return true;
        }
        print_error(key + " takes true or false, not \"" + value + "\"");
        return false;
    case field_kind::number:
        if (const auto number = parse_number(value)) {
            a_data.*(field->number) = *number;
            return true;
        }
        print_error(key + " takes a whole number from 0 to 4294967295, not \"" + value + "\"");
        return false;
    case field_kind::text:
        if (auto text = from_utf8(value)) {
            a_data.*(field->text) = std::move(*text);
            return true;
        }
        print_error("the value of " + key + " is not valid UTF-8 text");
        return false;
    }
    return false;
}

// True, after an error line that names the file, when the current settings file cannot be
// read: writing over it would lose whatever the plug-in manager keeps there.
bool report_damaged_file() {
    using namespace preferences;
    if (!is_domain_damaged(APPLICATION_ID_LATEST, preference_scope::current_user_any_host)) {
        return false;
    }
    const auto path =
        domain_file_path(APPLICATION_ID_LATEST, preference_scope::current_user_any_host);
    print_error("the settings file " +
                (path ? path->string() : std::string(APPLICATION_ID_LATEST)) +
                " is damaged: it cannot be read as a property list, so nothing was changed; "
                "repair it, or move it away to start from the defaults");
    return true;
}

// The plug-in manager stores the default key for a code it cannot assign; the user is told.
void warn_of_replaced_key(std::uint32_t a_code) {
    if (!zul_key_access::getInstance(zul_key_access::TYPE_QIRO_LUMEN_CANDIDATE_CHANGE)
             .is_zul_key(a_code)) {
        std::cerr << "qiro-lumen: warning: key_plugin_candidate_change " << a_code
                  << " is not a key the plug-in manager can assign; the default, "
                  << QIRO_PLUGIN_MANAGER_DEFAULT_CANDIDATE_CHANGE_KEY << " (tab), is stored\n";
    }
}

} // namespace

std::string settings_key_help() {
    std::string keys;
    for (const auto& field : fields) {
        keys += keys.empty() ? "" : ", ";
        keys += field.key;
    }
    return keys;
}

int command_settings_show(bool a_json) {
    const auto settings = manager_preference_access::read_manager_preference();
    const std::string password = settings.proxy_password.empty() ? "empty" : "set";
    if (a_json) {
        nlohmann::ordered_json json;
        for (const auto& field : fields) {
            switch (field.kind) {
            case field_kind::flag:
                json[field.key] = settings.*(field.number) != 0;
                break;
            case field_kind::number:
                json[field.key] = settings.*(field.number);
                break;
            case field_kind::text:
                json[field.key] = string_encode::to_utf8_marked(settings.*(field.text));
                break;
            }
        }
        json["proxy_password"] = password;
        std::cout << json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace)
                  << '\n';
        return exit_success;
    }
    for (const auto& field : fields) {
        std::cout << field.key << " = ";
        switch (field.kind) {
        case field_kind::flag:
            std::cout << (settings.*(field.number) != 0 ? "true" : "false");
            break;
        case field_kind::number:
            std::cout << settings.*(field.number);
            break;
        case field_kind::text:
            std::cout << string_encode::to_utf8_marked(settings.*(field.text));
            break;
        }
        std::cout << '\n';
    }
    std::cout << "proxy_password = (" << password << ")\n";
    return exit_success;
}

int command_settings_set(const std::vector<std::string>& a_assignments, bool a_password_stdin) {
    auto settings = manager_preference_access::read_manager_preference();
    for (const auto& assignment : a_assignments) {
        if (!apply_assignment(assignment, settings)) {
            return exit_bad_usage;
        }
    }
    if (a_password_stdin) {
        std::string password{std::istreambuf_iterator<char>(std::cin),
                             std::istreambuf_iterator<char>()};
        // One line end, as "echo" or a here-string leaves it, is not part of the password.
        if (!password.empty() && password.back() == '\n') {
            password.pop_back();
            if (!password.empty() && password.back() == '\r') {
                password.pop_back();
            }
        }
        auto text = from_utf8(password);
        if (!text) {
            print_error("the password read from standard input is not valid UTF-8 text");
            return exit_bad_usage;
        }
        settings.proxy_password = std::move(*text);
    }
    // Saving would fail on a damaged file only after touching the keyring; say so first.
    if (report_damaged_file()) {
        return exit_not_run;
    }
    warn_of_replaced_key(settings.key_plugin_candidate_change);
    if (!manager_preference_access::save_manager_preference(settings)) {
        if (!report_damaged_file()) {
            print_error("the settings could not be written to ~/Library/Preferences; check that "
                        "the folder is writable");
        }
        return exit_not_run;
    }
    if (a_password_stdin && manager_preference_access::read_manager_preference().proxy_password !=
                                settings.proxy_password) {
        print_error("the other settings were saved, but the password could not be stored in the "
                    "keyring: is a Secret Service (GNOME Keyring, KWallet) running?");
        return exit_not_run;
    }
    return exit_success;
}

std::vector<cli_command> add_settings_commands(CLI::App& a_app) {
    struct settings_options {
        bool json = false;
        std::vector<std::string> assignments;
        bool password_stdin = false;
    };
    auto options = std::make_shared<settings_options>();
    auto* settings =
        a_app.add_subcommand("settings", "Show or change the plug-in manager's settings.");
    settings->require_subcommand(1);
    auto* show = settings->add_subcommand("show", "Show the settings a run uses "
                                                  "(the password only as set or empty).");
    show->add_flag("--json", options->json, "print one JSON object");
    auto* set = settings->add_subcommand("set", "Change settings: KEY=VALUE... with the keys " +
                                                    settings_key_help() + ".");
    set->add_option("ASSIGNMENT", options->assignments, "KEY=VALUE");
    set->add_flag("--password-stdin", options->password_stdin,
                  "read the proxy password from standard input");
    return {
        {show, [options] { return command_settings_show(options->json); }},
        {set,
         [options] {
             if (options->assignments.empty() && !options->password_stdin) {
                 print_error("nothing to set: give KEY=VALUE... or --password-stdin");
                 return static_cast<int>(exit_bad_usage);
             }
             return command_settings_set(options->assignments, options->password_stdin);
         }},
    };
}

} // namespace qiro_plugin::cli
