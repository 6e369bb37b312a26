#include "platform/framework/window_message.hpp"

#include <array>
#include <cstring>

namespace qiro_plugin::utility {

namespace {

struct message_name {
    int m_number;
    const char* m_name;
};

// 1 to 7 travel from the input method to its plug-in manager, 9 to 11 back; 8 was never
// given out, and the numbers are part of the protocol both processes share.
constexpr std::array<message_name, 10> message_names{{
    {1, "[Qiro => PluginManager] message for Request all plugin"},
    {2, "[Qiro => PluginManager] message for Request individually plugin"},
    {3, "[Qiro => PluginManager] message for Request all individually plugin"},
    {4, "[Qiro => PluginManager] message for Customize"},
    {5, "[Qiro => PluginManager] message for Request Cancel"},
    {6, "[Qiro => PluginManager] message for Callback Request"},
    {7, "[Qiro => PluginManager] message for process complete"},
    {9, "[PluginManager => Qiro] message for Result"},
    {10, "[PluginManager => Qiro] update message for manager preference and Load Plugin Info"},
    {11, "[PluginManager => Qiro] message for palette send"},
}};

} // namespace

int register_window_message(const char* a_name) {
    if (a_name == nullptr) {
        return 0;
    }
    for (const message_name& entry : message_names) {
        if (std::strcmp(entry.m_name, a_name) == 0) {
            return entry.m_number;
        }
    }
    return 0;
}

} // namespace qiro_plugin::utility
