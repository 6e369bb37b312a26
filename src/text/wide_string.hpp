#pragma once
// Marker-delimited extraction, splitting, substitution and case folding over UTF-16 text.

#include "text/utf16_string.hpp"

#include <cstdint>
#include <string>
#include <vector>

namespace qiro_plugin::utility {

utf16_string find_sub_string_range(const utf16_string& a_text, const utf16_string& a_begin,
                                   const utf16_string& a_end, bool a_include_markers);
std::vector<utf16_string> find_sub_string_range_all(const utf16_string& a_text,
                                                    const utf16_string& a_begin,
                                                    const utf16_string& a_end,
                                                    bool a_include_markers);
// The separator must not be empty.
std::vector<utf16_string> split_string(const utf16_string& a_text, const utf16_string& a_separator);
void delete_sub_string(bool a_all, utf16_string& a_text, const utf16_string& a_pattern);
// Returns the text as it was, from the begin marker to the end of the whole text.
utf16_string delete_sub_string_range_first(utf16_string& a_text, const utf16_string& a_begin,
                                           const utf16_string& a_end);
void delete_sub_string_range_all(utf16_string& a_text, const utf16_string& a_begin,
                                 const utf16_string& a_end);
// The result carries no meaning; it is kept for callers written against it.
bool replace_sub_string(bool a_all, utf16_string& a_text, const utf16_string& a_pattern,
                        const utf16_string& a_replacement);
void replace_sub_string_range_all(utf16_string& a_text, const utf16_string& a_begin,
                                  const utf16_string& a_end, const utf16_string& a_replacement);
utf16_string toupper_string(const utf16_string& a_text);
std::string toupper_string(const std::string& a_text);
bool is_same_extensions(const utf16_string& a_first, const utf16_string& a_second);
utf16_string convert_integer_to_string(std::int32_t a_value);
// The first a_limit code units, one fewer when the cut would split a surrogate pair, so that
// a limit never turns a character outside the BMP into text no encoder accepts.
utf16_string cut_code_units(const utf16_string& a_text, std::size_t a_limit);

} // namespace qiro_plugin::utility
