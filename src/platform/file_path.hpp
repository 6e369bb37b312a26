#pragma once
// Path canonicalisation and the small file-name helpers shared with other platforms.

#include "text/utf16_string.hpp"

namespace qiro_plugin::utility {

// Resolves folder + name to its canonical form (links resolved) and splits it back into a
// folder ending in "/" and a last component. False, and both unchanged, when it does not exist.
bool makeFilePath(utf16_string& a_folder, utf16_string& a_file_name);

// True when a file or folder exists at the path.
bool check_file_existence(const utf16_string& a_path);
// The file name unchanged: names are stored as given on this platform.
utf16_string get_real_file_name(const utf16_string& a_folder, const utf16_string& a_file_name);
// The path unchanged.
utf16_string get_convert_path(const utf16_string& a_path);
// The key under which two file names count as the same file: the name in upper case.
utf16_string convert_unique_file_name(const utf16_string& a_file_name);
// True when the name holds no "/".
bool check_file_spec(const utf16_string& a_file_name);

} // namespace qiro_plugin::utility
