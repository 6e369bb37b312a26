#pragma once
// Checking the plug-in's companion document (my.xml beside my.py), which a run reads silently.

#include "diagnosis/stream_analysis.hpp"

#include <optional>
#include <string>

namespace qiro_plugin::diagnosis {

struct companion_fault {
    std::string path;
    std::optional<parse_fault> parse; // nothing when it could not be read at all
    std::string reason;               // why it could not be read
};

// The companion's path for a plug-in path: its extension replaced by ".xml".
std::string companion_path(const std::string& a_plugin_path);

// What is wrong with the companion document, or nothing when it is absent or parses.
std::optional<companion_fault> check_companion(const std::string& a_plugin_path);

} // namespace qiro_plugin::diagnosis
