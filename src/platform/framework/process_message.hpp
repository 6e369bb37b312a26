#pragma once
// Messages to the input method and to its plug-in manager, one way over the session bus.

#include "platform/framework/window_handle.hpp"

namespace qiro_plugin::utility {

// Where the messages go: the bus name of each receiver, and the object, interface and
// members both answer. Each call carries (u message, u long parameter) and expects no reply.
inline constexpr const char* input_method_service = "org.qiro.Q22S";
inline constexpr const char* plugin_manager_service = "org.qiro.Q22I";
inline constexpr const char* plugin_event_path = "/org/qiro/PluginEvent";
inline constexpr const char* plugin_event_interface = "org.qiro.PluginEvent";
inline constexpr const char* input_method_member = "PLUG";
inline constexpr const char* plugin_manager_member = "QIRO";

// Sends one of the messages for the input method (Result, update, palette send) with its
// long parameter; the handle and the short parameter are not transmitted. Returns 0 for
// any other message (nothing sent), else 1 whether or not anyone received it.
int sendQIRO(window_handle a_handle, int a_message, int a_short_parameter, int a_long_parameter);

// The same for the messages meant for the plug-in manager (the seven requests).
int sendManager(window_handle a_handle, int a_message, int a_short_parameter, int a_long_parameter);

// Sends a_message to whichever process it is meant for: 1 if either accepted it, else 0.
int post_message_to_other_process(window_handle a_handle, int a_message, int a_short_parameter,
                                  int a_long_parameter);

} // namespace qiro_plugin::utility
