#pragma once
// Text between preference values, UTF-16 and the keychain's UTF-8.

#include "settings/preference_value.hpp"
#include "text/utf16_string.hpp"

#include <optional>
#include <string>

namespace qiro_plugin::preferences {

// The text of a string value; empty for no value, another kind, or text that is not UTF-8.
utf16_string convert_string(const preference_value* a_value);
utf16_string convert_string(const std::optional<preference_value>& a_value);

// A string value of the text (up to its first zero unit); nothing when the text holds an
// unpaired surrogate and so has no UTF-8 form.
std::optional<preference_value> make_string_value(const utf16_string& a_text);

// The UTF-8 form of the text; nothing for an unpaired surrogate.
std::optional<std::string> to_utf8(const utf16_string& a_text);

} // namespace qiro_plugin::preferences
