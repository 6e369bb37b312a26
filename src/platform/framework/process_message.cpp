#include "platform/framework/process_message.hpp"

#include "platform/framework/window_message.hpp"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>
#include <QVariant>

#include <algorithm>
#include <array>
#include <cstdint>

namespace qiro_plugin::utility {

namespace {

template <std::size_t t_count>
bool is_one_of(int a_message, const std::array<const char*, t_count>& a_names) {
    return std::any_of(a_names.begin(), a_names.end(), [a_message](const char* a_name) {
        return register_window_message(a_name) == a_message;
    });
}

// Fire and forget: QDBusConnection::send marks a method call as expecting no reply, and
// with activation off a missing receiver costs the bus nothing. Without a session bus the
// connection is simply not connected and the message is dropped.
void send_plugin_event(const char* a_service, const char* a_member, int a_message,
                       int a_long_parameter) {
    QDBusConnection connection = QDBusConnection::sessionBus();
    if (!connection.isConnected()) {
        return;
    }
    QDBusMessage message = QDBusMessage::createMethodCall(
        QString::fromLatin1(a_service), QString::fromLatin1(plugin_event_path),
        QString::fromLatin1(plugin_event_interface), QString::fromLatin1(a_member));
    message.setAutoStartService(false);
    message << QVariant::fromValue(static_cast<std::uint32_t>(a_message))
            << QVariant::fromValue(static_cast<std::uint32_t>(a_long_parameter));
    connection.send(message);
}

} // namespace

int sendQIRO(window_handle, int a_message, int, int a_long_parameter) {
    static const std::array<const char*, 3> names{
        "[PluginManager => Qiro] message for Result",
        "[PluginManager => Qiro] update message for manager preference and Load Plugin Info",
        "[PluginManager => Qiro] message for palette send",
    };
    if (!is_one_of(a_message, names)) {
        return 0;
    }
    send_plugin_event(input_method_service, input_method_member, a_message, a_long_parameter);
    return 1;
}

int sendManager(window_handle, int a_message, int, int a_long_parameter) {
    static const std::array<const char*, 7> names{
        "[Qiro => PluginManager] message for Request all plugin",
        "[Qiro => PluginManager] message for Request individually plugin",
        "[Qiro => PluginManager] message for Request all individually plugin",
        "[Qiro => PluginManager] message for Customize",
        "[Qiro => PluginManager] message for Request Cancel",
        "[Qiro => PluginManager] message for Callback Request",
        "[Qiro => PluginManager] message for process complete",
    };
    if (!is_one_of(a_message, names)) {
        return 0;
    }
    send_plugin_event(plugin_manager_service, plugin_manager_member, a_message, a_long_parameter);
    return 1;
}

int post_message_to_other_process(window_handle a_handle, int a_message, int a_short_parameter,
                                  int a_long_parameter) {
    if (sendQIRO(a_handle, a_message, a_short_parameter, a_long_parameter) != 0) {
        return 1;
    }
    return sendManager(a_handle, a_message, a_short_parameter, a_long_parameter) != 0 ? 1 : 0;
}

} // namespace qiro_plugin::utility
