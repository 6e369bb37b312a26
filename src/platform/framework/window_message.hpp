#pragma once
// The numbers of the framework's registered message names.

namespace qiro_plugin::utility {

// The number of the message called a_name (matched byte for byte), or 0 for any name
// outside the framework's table, including a null pointer.
int register_window_message(const char* a_name);

} // namespace qiro_plugin::utility
