#pragma once
// One plug-in registered with the plug-in manager, and the order of the setup list.

#include "text/utf16_string.hpp"

#include <cstdint>

namespace qiro_plugin {

struct qiro_plugin_module_info {
    // The folder that holds the plug-in file.
    utf16_string plugin_path;
    // The plug-in's file name.
    utf16_string plugin_name;
    std::uint32_t plugin_enable = 0;
    std::uint32_t only_individual_run = 0;
    // Never stored; copied with the record for the manager's own use.
    std::uint32_t reserved = 0;
    // Where a set-up plug-in goes in the user's list; all bits set for no position.
    std::uint32_t add_position = 0xFFFFFFFFU;

    bool operator==(const qiro_plugin_module_info&) const = default;
};

// Orders by plugin_path followed directly by plugin_name, unit by unit; a prefix first.
struct qiro_plugin_setup_info_compare {
    bool operator()(const qiro_plugin_module_info& a_first,
                    const qiro_plugin_module_info& a_second) const;
};

} // namespace qiro_plugin
