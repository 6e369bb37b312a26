#pragma once
// The command that opens a file at a line in the author's editor.

#include <cstdint>
#include <string>
#include <vector>

namespace qiro_plugin::debugger {

// $VISUAL, else $EDITOR (split at blanks, so "code -w" works), followed by "+LINE" and the
// file; empty when neither is set, so the caller falls back to the desktop's default
// application.
std::vector<std::string> editor_command(const std::string& a_file, std::uint32_t a_line);

} // namespace qiro_plugin::debugger
