#pragma once
// Finding the plug-in files the debugger offers: the plugin folder beside the executable.

#include "text/utf16_string.hpp"

#include <string>
#include <utility>
#include <vector>

namespace qiro_plugin::debugger {

// First the folder (ending in "/"), second the file name as the file system lists it.
using plugin_entry = std::pair<utf16_string, utf16_string>;
using plugin_list = std::vector<plugin_entry>;

// "pl", "py", "rb": the extensions a reload asks for, in this order.
std::vector<std::string> plugin_extensions();

// True when the name's extension (after its last ".", a leading dot not counting) equals one
// of the list's entries, ASCII letters compared without case.
bool check_extension(const utf16_string& a_file_name, const std::vector<std::string>& a_extensions);

// The folder "plugin/" beside the running executable (from /proc/self/exe); empty when the
// executable's path cannot be read.
utf16_string default_plugin_folder();

// A folder given by the user made absolute (against the current folder), ending in "/".
utf16_string make_plugin_folder(const std::string& a_path);

// The folder that find_plugin_module(extensions) lists: the one set, else the default.
utf16_string plugin_folder();
void set_plugin_folder(const utf16_string& a_folder);

// The matching entries of the folder (sub-folders and hidden entries included), sorted by
// file name in code units with ASCII letters case-folded. A missing or unreadable folder
// gives an empty list.
plugin_list find_plugin_module(const utf16_string& a_folder,
                               const std::vector<std::string>& a_extensions);
plugin_list find_plugin_module(const std::vector<std::string>& a_extensions);

// The listing order: true when a comes before b.
bool plugin_file_name_less(const utf16_string& a_first, const utf16_string& a_second);

} // namespace qiro_plugin::debugger
