#pragma once
// What a plug-in's companion preference document (NAME.xml beside it) offers.

#include "core/plugin_discovery.hpp"
#include "xml/script_preference.hpp"

#include <optional>

namespace qiro_plugin::debugger {

// The document's record; nothing when there is no document or it does not parse.
std::optional<xml_access_library::script_preference::plugin_preference_data>
read_companion_document(const plugin_entry& a_plugin);

} // namespace qiro_plugin::debugger
