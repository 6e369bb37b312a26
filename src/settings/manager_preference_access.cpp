#include "settings/manager_preference_access.hpp"

#include "keys/zul_key_access.hpp"
#include "settings/keychain.hpp"
#include "settings/preference_keys.hpp"
#include "settings/preference_store.hpp"
#include "settings/preference_text.hpp"

#include <algorithm>

namespace qiro_plugin {

namespace {

using preferences::preference_scope;
using preferences::preference_value;

std::optional<preference_value> copy_user_value(const char* a_key, const std::string& a_domain) {
    return preferences::copy_value(a_key, a_domain, preference_scope::current_user_any_host);
}

// Each key is looked up under the domain chosen at that moment.
std::optional<preference_value> fetch(const char* a_key) {
    return copy_user_value(
        a_key, manager_preference_access::get_existing_latest_version_user_pref_application_id());
}

void read_flag(const char* a_key, std::uint32_t& a_field) {
    if (const auto value = fetch(a_key)) {
        if (const auto flag = value->bool_value()) {
            a_field = *flag ? 1U : 0U;
        }
    }
}

void read_unsigned(const char* a_key, std::uint32_t& a_field) {
    if (const auto value = fetch(a_key)) {
        if (const auto number = value->unsigned_int_value()) {
            a_field = *number;
        }
    }
}

void read_text(const char* a_key, utf16_string& a_field) {
    if (const auto value = fetch(a_key)) {
        a_field = preferences::convert_string(value);
    }
}

std::uint32_t checked_candidate_change_key(std::uint32_t a_code) {
    // The default is assignable by definition; building the key table costs a plug-in run
    // a third of a millisecond, so it is built only for a key someone chose.
    if (a_code == QIRO_PLUGIN_MANAGER_DEFAULT_CANDIDATE_CHANGE_KEY) {
        return a_code;
    }
    const auto& table =
        zul_key_access::getInstance(zul_key_access::TYPE_QIRO_LUMEN_CANDIDATE_CHANGE);
    return table.is_zul_key(a_code) ? a_code : QIRO_PLUGIN_MANAGER_DEFAULT_CANDIDATE_CHANGE_KEY;
}

void write_latest(const char* a_key, preference_value a_value) {
    preferences::set_value(a_key, std::move(a_value), APPLICATION_ID_LATEST,
                           preference_scope::current_user_any_host);
}

void write_flag(const char* a_key, std::uint32_t a_field) {
    write_latest(a_key, preference_value(a_field != 0));
}

void write_text(const char* a_key, const utf16_string& a_field) {
    if (auto value = preferences::make_string_value(a_field)) {
        write_latest(a_key, std::move(*value));
    }
}

bool synchronize_latest() {
    return preferences::synchronize(APPLICATION_ID_LATEST, preference_scope::current_user_any_host);
}

} // namespace

std::vector<std::string> manager_preference_access::get_all_version_application_id_array() {
    return {APPLICATION_ID_LATEST, APPLICATION_ID_21};
}

std::string manager_preference_access::get_existing_latest_version_user_pref_application_id() {
    const auto existing =
        preferences::copy_application_list(preference_scope::current_user_any_host);
    for (const auto& domain : get_all_version_application_id_array()) {
        if (std::find(existing.begin(), existing.end(), domain) != existing.end()) {
            return domain;
        }
    }
    return APPLICATION_ID_LATEST;
}

manager_preference_data manager_preference_access::read_manager_preference() {
    manager_preference_data data;
    read_flag(REGISTRY_KEY_MANAGER_PREFERENCE_AUTOMATICALLY_DISPLAY_CANDIDATE,
              data.automatically_displayed_candidate);
    read_unsigned(REGISTRY_KEY_MANAGER_PREFERENCE_PLUGIN_CANDIDATE_CHANGE_KEY,
                  data.key_plugin_candidate_change);
    read_text(REGISTRY_KEY_MANAGER_PREFERENCE_KEY_1_PLUGIN_NAME, data.key_1_plugin_name);
    read_text(REGISTRY_KEY_MANAGER_PREFERENCE_KEY_2_PLUGIN_NAME, data.key_2_plugin_name);
    read_text(REGISTRY_KEY_MANAGER_PREFERENCE_KEY_3_PLUGIN_NAME, data.key_3_plugin_name);
    read_text(REGISTRY_KEY_MANAGER_PREFERENCE_KEY_4_PLUGIN_NAME, data.key_4_plugin_name);
    read_text(REGISTRY_KEY_MANAGER_PREFERENCE_KEY_5_PLUGIN_NAME, data.key_5_plugin_name);
    read_flag(REGISTRY_KEY_MANAGER_PREFERENCE_ENABLE_PROXY, data.enable_proxy);
    read_text(REGISTRY_KEY_MANAGER_PREFERENCE_PROXY_ADDRESS, data.proxy_address);
    read_unsigned(REGISTRY_KEY_MANAGER_PREFERENCE_PROXY_PORT, data.proxy_port);
    read_flag(REGISTRY_KEY_MANAGER_PREFERENCE_ENABLE_AUTHENTICATION, data.enable_authentication);
    read_text(REGISTRY_KEY_MANAGER_PREFERENCE_PROXY_USERNAME, data.proxy_username);

    data.key_plugin_candidate_change =
        checked_candidate_change_key(data.key_plugin_candidate_change);

    // An empty user name is looked up too: the manager may have stored a password for it.
    if (const auto account = preferences::to_utf8(data.proxy_username)) {
        const auto password =
            utility::get_password_in_keychain(KEYCHAIN_SERVICE_PROXY_AUTH_PASSWORD, *account);
        data.proxy_password = preferences::convert_string(preference_value(password));
    }

    if (get_existing_latest_version_user_pref_application_id() != APPLICATION_ID_LATEST) {
        save_manager_preference(data);
    }
    return data;
}

bool manager_preference_access::save_manager_preference(const manager_preference_data& a_data) {
    const auto stored_username = preferences::convert_string(
        copy_user_value(REGISTRY_KEY_MANAGER_PREFERENCE_PROXY_USERNAME, APPLICATION_ID_LATEST));
    const bool no_credentials = a_data.proxy_username.empty() && a_data.proxy_password.empty();
    // The old user's password must not outlive the change of user.
    if (a_data.proxy_username != stored_username || no_credentials) {
        if (const auto account = preferences::to_utf8(stored_username)) {
            utility::delete_item_in_keychain(KEYCHAIN_SERVICE_PROXY_AUTH_PASSWORD, *account);
        }
    }

    write_flag(REGISTRY_KEY_MANAGER_PREFERENCE_AUTOMATICALLY_DISPLAY_CANDIDATE,
               a_data.automatically_displayed_candidate);
    write_latest(
        REGISTRY_KEY_MANAGER_PREFERENCE_PLUGIN_CANDIDATE_CHANGE_KEY,
        preference_value(checked_candidate_change_key(a_data.key_plugin_candidate_change)));
    write_text(REGISTRY_KEY_MANAGER_PREFERENCE_KEY_1_PLUGIN_NAME, a_data.key_1_plugin_name);
    write_text(REGISTRY_KEY_MANAGER_PREFERENCE_KEY_2_PLUGIN_NAME, a_data.key_2_plugin_name);
    write_text(REGISTRY_KEY_MANAGER_PREFERENCE_KEY_3_PLUGIN_NAME, a_data.key_3_plugin_name);
    write_text(REGISTRY_KEY_MANAGER_PREFERENCE_KEY_4_PLUGIN_NAME, a_data.key_4_plugin_name);
    write_text(REGISTRY_KEY_MANAGER_PREFERENCE_KEY_5_PLUGIN_NAME, a_data.key_5_plugin_name);
    write_flag(REGISTRY_KEY_MANAGER_PREFERENCE_ENABLE_PROXY, a_data.enable_proxy);
    write_text(REGISTRY_KEY_MANAGER_PREFERENCE_PROXY_ADDRESS, a_data.proxy_address);
    write_latest(REGISTRY_KEY_MANAGER_PREFERENCE_PROXY_PORT, preference_value(a_data.proxy_port));
    write_flag(REGISTRY_KEY_MANAGER_PREFERENCE_ENABLE_AUTHENTICATION, a_data.enable_authentication);
    write_text(REGISTRY_KEY_MANAGER_PREFERENCE_PROXY_USERNAME, a_data.proxy_username);

    if (!no_credentials) {
        const auto account = preferences::to_utf8(a_data.proxy_username);
        const auto password = preferences::to_utf8(a_data.proxy_password);
        if (account && password) {
            utility::set_password_in_keychain(KEYCHAIN_SERVICE_PROXY_AUTH_PASSWORD, *account,
                                              *password);
        }
    }
    return synchronize_latest();
}

} // namespace qiro_plugin
