#pragma once
// The text type of the whole system: every length limit counts UTF-16 code units.

#include <string>

namespace qiro_plugin {

using qiro_plugin_utf16_t = char16_t;
using utf16_string = std::basic_string<qiro_plugin_utf16_t>;

} // namespace qiro_plugin
