#pragma once
// Framework functions that other platforms need and this one answers trivially.

#include "platform/framework/window_handle.hpp"
#include "text/utf16_string.hpp"

namespace qiro_plugin::utility {

// Whether the system is Mac OS X 10.5 or later in the framework's terms: every system
// this runs on is newer, so true. The answer is found once and remembered.
bool isLeopardOrUpper();

// Every window handle counts as usable here: true.
bool is_enable_window_handle(window_handle a_handle);

// Raising another process's window is left to the window manager: does nothing.
void set_foreground_window(window_handle a_handle);

// Plug-in files carry no signature on this system: true.
bool check_digital_signature(const utf16_string& a_plugin_file_path);

} // namespace qiro_plugin::utility
