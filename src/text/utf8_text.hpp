#pragma once
// Conversions for text that is shown or reported rather than handed on: a broken sequence
// becomes U+FFFD, so the fault stays visible instead of the whole text turning empty.

#include "text/utf16_string.hpp"

#include <string>
#include <string_view>

namespace qiro_plugin::string_encode {

// UTF-8 of the text; each lone surrogate becomes U+FFFD.
std::string to_utf8_marked(const utf16_string& a_text);

// UTF-16 of the bytes; each byte that does not belong to a well-formed UTF-8 sequence becomes
// U+FFFD.
utf16_string to_utf16_marked(std::string_view a_bytes);

} // namespace qiro_plugin::string_encode
