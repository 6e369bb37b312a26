#pragma once
// The plug-in manager's preference domains, their keys and its keychain service name.

namespace qiro_plugin {

// Version 22 of the plug-in manager; every write goes here.
inline constexpr const char* APPLICATION_ID_LATEST = "org.qiro.Qiro22.PluginManager";
inline constexpr const char* APPLICATION_ID_21 = "org.qiro.Qiro21.PluginManager";

inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_AUTOMATICALLY_DISPLAY_CANDIDATE =
    "automatically_displayed_candidate";
inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_PLUGIN_CANDIDATE_CHANGE_KEY =
    "key_plugin_candidate_change";
inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_KEY_1_PLUGIN_NAME =
    "key_1_plugin_name";
inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_KEY_2_PLUGIN_NAME =
    "key_2_plugin_name";
inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_KEY_3_PLUGIN_NAME =
    "key_3_plugin_name";
inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_KEY_4_PLUGIN_NAME =
    "key_4_plugin_name";
inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_KEY_5_PLUGIN_NAME =
    "key_5_plugin_name";
inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_ENABLE_PROXY = "enable_proxy";
inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_PROXY_ADDRESS = "proxy_address";
inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_PROXY_PORT = "proxy_port";
inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_ENABLE_AUTHENTICATION =
    "enable_authentication";
inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_PROXY_USERNAME = "proxy_username";

inline constexpr const char* REGISTRY_PATH_PLUGIN_SETTING = "plugin";
inline constexpr const char* REGISTRY_KEY_MANAGER_PREFERENCE_PLUGIN_COUNT = "plugin_count";
inline constexpr const char* REGISTRY_PATH_PLUGIN_SETUP_INFO = "plugin_setup_info";
inline constexpr const char* REGISTRY_KEY_PLUGIN_PREFERENCE_PATH = "plugin_path";
inline constexpr const char* REGISTRY_KEY_PLUGIN_PREFERENCE_NAME = "plugin_name";
inline constexpr const char* REGISTRY_KEY_PLUGIN_PREFERENCE_ENABLE = "plugin_enable";
inline constexpr const char* REGISTRY_KEY_PLUGIN_PREFERENCE_ONLY_INDIVIDUAL_RUN =
    "only_individual_run";
inline constexpr const char* REGISTRY_KEY_PLUGIN_SETTING_ADD_POSITION = "add_position";

inline constexpr const char* KEYCHAIN_SERVICE_PROXY_AUTH_PASSWORD =
    "QIRO Lumen Proxy auth Password";

// The key code used when none, or an unassignable one, is stored: "tab" without modifiers.
inline constexpr unsigned QIRO_PLUGIN_MANAGER_DEFAULT_CANDIDATE_CHANGE_KEY = 265;

} // namespace qiro_plugin
