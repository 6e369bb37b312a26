#pragma once
// Strict UTF-8 <-> UTF-16 conversion: overlong forms, surrogates and lone surrogates fail.

#include "text/utf16_string.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qiro_plugin::string_encode::detail {

std::optional<utf16_string> utf8_to_utf16(std::string_view a_bytes);
std::optional<std::string> utf16_to_utf8(std::u16string_view a_text);
// True when utf8_to_utf16 would accept the bytes.
bool is_valid_utf8(std::string_view a_bytes);
// Appends the UTF-8 form of one code point (at most U+10FFFF; surrogates are not checked).
void append_utf8(std::string& a_text, std::uint32_t a_code);

} // namespace qiro_plugin::string_encode::detail
