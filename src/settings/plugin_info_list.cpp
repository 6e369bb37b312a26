#include "settings/manager_preference_access.hpp"

#include "platform/file_path.hpp"
#include "settings/preference_keys.hpp"
#include "settings/preference_store.hpp"
#include "settings/preference_text.hpp"

#include <set>

namespace qiro_plugin {

namespace {

using preferences::preference_scope;
using preferences::preference_value;

// The manager offers no more plug-ins than this; longer stored lists are cut.
constexpr std::size_t max_plugin_count = 100;

void read_flag(const preference_value& a_entry, const char* a_key, std::uint32_t& a_field) {
    if (const auto* value = a_entry.find(a_key)) {
        if (const auto flag = value->bool_value()) {
            a_field = *flag ? 1U : 0U;
        }
    }
}

qiro_plugin_module_info read_entry(const preference_value& a_entry) {
    qiro_plugin_module_info info;
    info.plugin_name =
        preferences::convert_string(a_entry.find(REGISTRY_KEY_PLUGIN_PREFERENCE_NAME));
    info.plugin_path =
        preferences::convert_string(a_entry.find(REGISTRY_KEY_PLUGIN_PREFERENCE_PATH));
    read_flag(a_entry, REGISTRY_KEY_PLUGIN_PREFERENCE_ENABLE, info.plugin_enable);
    read_flag(a_entry, REGISTRY_KEY_PLUGIN_PREFERENCE_ONLY_INDIVIDUAL_RUN,
              info.only_individual_run);
    return info;
}

} // namespace

std::vector<qiro_plugin_module_info> manager_preference_access::read_plugin_info_list() {
    std::vector<qiro_plugin_module_info> list;
    // The newest domain that has the key decides, even when its value is unusable.
    std::optional<preference_value> stored;
    for (const auto& domain : get_all_version_application_id_array()) {
        stored = preferences::copy_value(REGISTRY_PATH_PLUGIN_SETTING, domain,
                                         preference_scope::current_user_any_host);
        if (stored) {
            break;
        }
    }
    const auto* entries = stored ? stored->get_array() : nullptr;
    if (entries == nullptr) {
        return list;
    }
    const std::size_t count = std::min(entries->size(), max_plugin_count);
    for (std::size_t index = 0; index < count; ++index) {
        const auto& entry = (*entries)[index];
        if (entry.get_dictionary() == nullptr) {
            continue;
        }
        auto info = read_entry(entry);
        if (utility::makeFilePath(info.plugin_path, info.plugin_name)) {
            list.push_back(std::move(info));
        }
    }
    return list;
}

bool manager_preference_access::save_plugin_info_list(
    const std::vector<qiro_plugin_module_info>& a_list) {
    preference_value::array_type entries;
    for (const auto& info : a_list) {
        auto path = preferences::make_string_value(info.plugin_path);
        auto name = preferences::make_string_value(info.plugin_name);
        if (!path || !name) {
            continue;
        }
        entries.emplace_back(preference_value::dictionary_type{
            {REGISTRY_KEY_PLUGIN_PREFERENCE_PATH, std::move(*path)},
            {REGISTRY_KEY_PLUGIN_PREFERENCE_NAME, std::move(*name)},
            {REGISTRY_KEY_PLUGIN_PREFERENCE_ENABLE, preference_value(info.plugin_enable != 0)},
            {REGISTRY_KEY_PLUGIN_PREFERENCE_ONLY_INDIVIDUAL_RUN,
             preference_value(info.only_individual_run != 0)},
        });
    }
    // The count is the size of the list given, even when entries were left out above.
    preferences::set_value(REGISTRY_KEY_MANAGER_PREFERENCE_PLUGIN_COUNT,
                           preference_value(static_cast<std::uint32_t>(a_list.size())),
                           APPLICATION_ID_LATEST, preference_scope::current_user_any_host);
    preferences::set_value(REGISTRY_PATH_PLUGIN_SETTING, preference_value(std::move(entries)),
                           APPLICATION_ID_LATEST, preference_scope::current_user_any_host);
    return preferences::synchronize(APPLICATION_ID_LATEST, preference_scope::current_user_any_host);
}

std::vector<qiro_plugin_module_info> manager_preference_access::read_plugin_setup_info_list() {
    // A multiset inserts equal elements after those already there, so ties keep the order
    // in which they were found.
    std::multiset<qiro_plugin_module_info, qiro_plugin_setup_info_compare> found;
    for (const auto& domain : get_all_version_application_id_array()) {
        const auto stored = preferences::copy_value(REGISTRY_PATH_PLUGIN_SETUP_INFO, domain,
                                                    preference_scope::any_user_current_host);
        const auto* entries = stored ? stored->get_dictionary() : nullptr;
        if (entries == nullptr) {
            continue;
        }
        for (const auto& [key, entry] : *entries) {
            if (key.empty()) {
                break;
            }
            if (entry.get_dictionary() == nullptr) {
                continue;
            }
            auto info = read_entry(entry);
            if (const auto* position = entry.find(REGISTRY_KEY_PLUGIN_SETTING_ADD_POSITION)) {
                if (const auto number = position->unsigned_int_value()) {
                    info.add_position = *number;
                }
            }
            if (utility::makeFilePath(info.plugin_path, info.plugin_name)) {
                found.insert(std::move(info));
            }
        }
    }
    return {found.begin(), found.end()};
}

} // namespace qiro_plugin
