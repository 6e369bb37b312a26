#pragma once
// Unguessable names for the temporary bridge files.

#include <string>

namespace qiro_plugin {

// 40 upper-case hexadecimal digits followed by the extension, or the empty string when a file
// of that name lies in the current folder or no random number could be drawn. The folder the
// file will be written to is not examined: writing it there settles a clash.
std::string get_unique_file_name(const std::string& a_folder, const std::string& a_extension);

} // namespace qiro_plugin
