#pragma once
// The process-wide lookup of user-visible texts by key, installed by the front end.

#include "text/utf16_string.hpp"

#include <functional>
#include <string>

namespace qiro_plugin::utility {

// The text for the key; empty when no provider is installed or the key is unknown.
utf16_string localized_string(const std::string& a_key);

// Installs the lookup (an empty function removes it); safe to call from any thread.
void set_localized_string_provider(std::function<utf16_string(const std::string&)> a_provider);

} // namespace qiro_plugin::utility
