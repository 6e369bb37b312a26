#pragma once
// Translation between preference values and the bytes of XML or binary property lists.

#include "settings/preference_value.hpp"

#include <optional>
#include <string>

namespace qiro_plugin::preferences {

enum class plist_format { xml, binary };

struct parsed_plist {
    preference_value root;
    plist_format format = plist_format::xml;
};

// The document held in the bytes; nothing when they are not a property list.
std::optional<parsed_plist> parse_plist(const std::string& a_bytes);

// The document as bytes of the given format; nothing when it cannot be written.
std::optional<std::string> write_plist(const preference_value& a_root, plist_format a_format);

} // namespace qiro_plugin::preferences
