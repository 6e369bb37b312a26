#pragma once
// The plug-in manager's settings: candidate display, key assignments and the proxy.

#include "text/utf16_string.hpp"

#include <cstdint>

namespace qiro_plugin {

struct manager_preference_data {
    // Carried for the manager's own use; this program leaves it 0.
    std::uint32_t reserved = 0;
    std::uint32_t automatically_displayed_candidate = 1;
    std::uint32_t key_plugin_candidate_change = 265;
    utf16_string key_1_plugin_name;
    utf16_string key_2_plugin_name;
    utf16_string key_3_plugin_name;
    utf16_string key_4_plugin_name;
    utf16_string key_5_plugin_name;
    std::uint32_t enable_proxy = 0;
    utf16_string proxy_address;
    std::uint32_t proxy_port = 0;
    std::uint32_t enable_authentication = 0;
    utf16_string proxy_username;
    // Kept in the keychain, never in the preference file.
    utf16_string proxy_password;

    bool operator==(const manager_preference_data&) const = default;
};

} // namespace qiro_plugin
