#pragma once
// Strict UTF-8 <-> UTF-16 conversion: overlong forms, surrogates and lone surrogates fail.

#include "text/utf16_string.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace qiro_plugin::string_encode::detail {

std::optional<utf16_string> utf8_to_utf16(std::string_view a_bytes);
std::optional<std::string> utf16_to_utf8(std::u16string_view a_text);

} // namespace qiro_plugin::string_encode::detail
