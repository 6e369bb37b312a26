#pragma once
// The framework's modal alert, shown through a replaceable function.

#include "platform/framework/window_handle.hpp"
#include "text/utf16_string.hpp"

#include <functional>

namespace qiro_plugin::utility {

// Shows an alert with a_text and waits until it is dismissed.
using message_box_function = std::function<void(const utf16_string& a_text)>;

// Installs the function message_box uses and returns the one it replaces; an empty function
// brings back the default, a modal QMessageBox with the text and one "OK" button (or a
// line on standard error when the process has no widget application).
message_box_function set_message_box_function(message_box_function a_function);

// Shows a_text in a modal alert on the main thread; the handle, the caption and the type are
// not used.
void message_box(window_handle a_handle, const utf16_string& a_text, const utf16_string& a_caption,
                 unsigned int a_type = 0);

} // namespace qiro_plugin::utility
