#pragma once
// Listing the plug-in menu and printing a decoded bridge script.

#include <string>

namespace qiro_plugin::cli {

int command_list(const std::string& a_plugin_folder);
// a_language is "perl", "ruby" or "python".
int command_bridge(const std::string& a_language);

} // namespace qiro_plugin::cli
