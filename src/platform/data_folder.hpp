#pragma once
// The per-user folders under ~/Library/Preferences: the input method's and the plug-in feature's.

#include "text/utf16_string.hpp"

#include <string>

namespace qiro_plugin::utility {

// "~/Library/Preferences/QIRO22/" in the file system's encoding; not created here.
// Throws std::runtime_error when no home folder can be found.
std::string get_qiro_user_folder();

// "~/Library/Preferences/QIRO Lumen/", created when missing; throws std::runtime_error when
// there is no home folder or the folder cannot be created.
std::string get_qiro_lumen_data_folder();

// The settings folder of one plug-in inside the data folder, ending in "/", created (0700)
// when missing; empty when it cannot be created or the name is not one path component (it
// holds "/" or is "." or ".."). Errors of the data folder propagate.
utf16_string create_plugin_preference_path(const utf16_string& a_name);

} // namespace qiro_plugin::utility
