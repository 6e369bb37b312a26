#pragma once
// The sandbox one plug-in's run gets: its own folder read-only, the data folder writable.

#include "core/plugin_discovery.hpp"
#include "platform/sandbox.hpp"

#include <string>
#include <variant>

namespace qiro_plugin::debugger {

// The layout that confines a run of a_plugin with the bwrap program a_tool, or, as a string,
// why it must not run confined: a plug-in folder that holds the home folder would show all of
// it. a_data_folder is where the bridge file is written and the command starts.
std::variant<utility::sandbox_layout, std::string>
make_run_sandbox(utility::sandbox_mode a_mode, const plugin_entry& a_plugin,
                 const std::string& a_data_folder, const std::string& a_tool);

} // namespace qiro_plugin::debugger
