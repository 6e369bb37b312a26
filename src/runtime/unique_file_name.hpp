#pragma once
// Unguessable names for the temporary bridge files.

#include <string>

namespace qiro_plugin {

// 40 upper-case hexadecimal digits followed by the extension, or the empty string when a file
// of that name already lies in the folder or no random number could be drawn.
std::string get_unique_file_name(const std::string& a_folder, const std::string& a_extension);

} // namespace qiro_plugin
