#pragma once
// Existence tests and folder creation on file-system paths (byte strings).

#include <optional>
#include <string>
#include <sys/types.h>

namespace qiro_plugin::utility::detail {

struct entry_kind {
    bool exists = false;
    bool is_folder = false;
};

// What lies at the path, links followed.
entry_kind find_entry(const std::string& a_path);

// Creates the folder, and any missing folder above it with default permissions. The folder
// itself gets exactly a_mode when one is given, else the default permissions.
bool create_folder(const std::string& a_path, std::optional<mode_t> a_mode);

// The path with a final "/" appended when it has none.
std::string with_final_slash(std::string a_path);

} // namespace qiro_plugin::utility::detail
