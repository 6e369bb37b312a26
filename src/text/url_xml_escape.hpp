#pragma once
// URL coding of command-line values and escaping of text written into XML.

#include "text/utf16_string.hpp"

#include <string>
#include <string_view>

namespace qiro_plugin::utility {

// Every byte but ".", "_" and "-" is escaped (a blank becomes "+"), so the result is safe
// inside shell double quotes.
std::string url_encode(const std::string& a_text);
std::string url_decode(const std::string& a_text);
utf16_string convert_xml_entity(const utf16_string& a_text);
utf16_string convert_control_character(const utf16_string& a_text);
// UTF-8 text made safe inside an XML element or a double-quoted attribute: the markup
// characters, the quote and the blanks an attribute would fold become references.
std::string escape_xml(std::string_view a_text);

} // namespace qiro_plugin::utility
