#pragma once
// Where each value of a JSON text starts, so that errors about a value can name its line.

#include <cstddef>
#include <map>
#include <string>

namespace qiro_plugin::cases {

struct text_position {
    std::size_t line = 1;   // 1-based
    std::size_t column = 1; // 1-based, in characters (a UTF-8 sequence counts one)
};

// The line and column of a byte offset; an offset past the end names the end.
text_position position_of_offset(const std::string& a_text, std::size_t a_offset);

// The byte offset of every value of a text that already parsed as JSON, by JSON pointer
// ("" for the root, "/cases/0/name").
std::map<std::string, std::size_t> value_offsets(const std::string& a_text);

} // namespace qiro_plugin::cases
