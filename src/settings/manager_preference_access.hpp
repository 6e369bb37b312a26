#pragma once
// Reading and writing the plug-in manager's settings record and its lists of plug-ins.

#include "settings/manager_preference_data.hpp"
#include "settings/qiro_plugin_module_info.hpp"

#include <string>
#include <vector>

namespace qiro_plugin {

class manager_preference_access {
public:
    // The domains of every version, newest first: the search order of all readers.
    static std::vector<std::string> get_all_version_application_id_array();
    // The newest domain that has preferences for the user, else the latest one.
    static std::string get_existing_latest_version_user_pref_application_id();

    // The settings with defaults for what is missing or unusable, and the proxy password
    // from the keychain. Settings found only under an older version are copied into the
    // latest one. Never throws for bad stored data.
    static manager_preference_data read_manager_preference();
    // Writes every field to the latest domain and the password to the keychain. True when
    // the preference file was written; keychain results do not count.
    static bool save_manager_preference(const manager_preference_data& a_data);

    // The user's registered plug-ins whose files still exist, at most 100, in stored order.
    static std::vector<qiro_plugin_module_info> read_plugin_info_list();
    // Replaces the user's list in the latest domain. True when the file was written.
    static bool save_plugin_info_list(const std::vector<qiro_plugin_module_info>& a_list);
    // The machine's set-up plug-ins of every version whose files exist, sorted by
    // qiro_plugin_setup_info_compare, equal entries in the order found.
    static std::vector<qiro_plugin_module_info> read_plugin_setup_info_list();
};

} // namespace qiro_plugin
