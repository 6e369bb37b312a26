#pragma once
// The messages and hints of the findings, in English and Japanese, with numbered fields.

#include <initializer_list>
#include <string>
#include <string_view>

namespace qiro_plugin::diagnosis {

enum class ui_language { english, japanese };

// The text of the key in the language with "{0}", "{1}", ... replaced by the values; the key
// itself when it is unknown, so a missing text shows up instead of vanishing.
std::string text(std::string_view a_key, ui_language a_language,
                 std::initializer_list<std::string_view> a_values = {});

} // namespace qiro_plugin::diagnosis
