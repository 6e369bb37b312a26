#pragma once
// Reading the raw streams of a run: UTF-8 validity, text around the result document, parser
// positions.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qiro_plugin::diagnosis {

struct utf8_fault {
    // What the bytes are: no character at all, or a character that UTF-8 may not carry,
    // written in the lax form that Perl and Python's "surrogatepass" use.
    enum class kind { invalid, surrogate, above_unicode };
    std::uint64_t offset = 0; // of the first byte that does not belong
    std::string bad_bytes;    // up to four bytes from there, as "0x82 0xA0"
    kind what = kind::invalid;
};

// The first place where the bytes are not UTF-8 (overlong forms, surrogates and values above
// U+10FFFF included), or nothing when they all are.
std::optional<utf8_fault> find_utf8_fault(std::string_view a_bytes);

// A run of lines of standard output that the plug-in wrote, not the bridge.
struct stray_text {
    std::uint32_t first_line = 1; // 1-based lines of the stream
    std::uint32_t last_line = 1;
    std::uint64_t offset = 0; // byte offset in the stream
    std::string text;
};

// The plug-in's own text before and after the bridge's result document in standard output.
// Empty when the document is not there at all.
std::vector<stray_text> find_stray_output(std::string_view a_std_output);

// True when the output holds the bridge's document header.
bool has_document_header(std::string_view a_std_output);

struct parse_fault {
    std::uint32_t line = 0; // 1-based, in the parsed text
    std::uint32_t column = 0;
    std::uint64_t offset = 0; // byte offset of that place in the parsed text
    std::string message;      // the parser's own words
};

// Where the XML parser gives up on the text, or nothing when it is well-formed. The parser
// loads nothing from outside (no network, no DTD, no entity substitution).
std::optional<parse_fault> find_parse_fault(std::string_view a_text);

} // namespace qiro_plugin::diagnosis
