#pragma once
// Conversions between UTF-16 text and the byte encodings of the outside world.

#include "text/utf16_string.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace qiro_plugin::string_encode {

// Byte string to UTF-16; each throws std::runtime_error "::<name>() : failed" on invalid
// input. The result ends at the first U+0000 of the converted text.
utf16_string MultiByteShiftJisToWideChar(const char* a_text);
utf16_string MultiByteEucJpToWideChar(const char* a_text);
utf16_string MultiByteUTF8ToWideChar(const char* a_text);
// The length up to the first zero byte of text that MultiByteUTF8ToWideChar accepts; throws as
// it would otherwise. For keeping UTF-8 text as it is, with the same rule.
std::size_t checked_utf8_length(const char* a_text);
// The same rule for a part of such text cut between characters: throws as the conversion would.
void check_utf8(std::string_view a_bytes);
// Never throws: a path that is not valid in the file system's encoding gives empty text.
utf16_string MultiByteFilePathToWideChar(const char* a_path);

// UTF-16 to bytes. The input ends at its first zero unit. The legacy encodings give an
// empty result when one character cannot be represented; all three that can fail throw
// "::WideCharToMultiByteShiftJis() : failed".
std::string WideCharToMultiByteShiftJis(const qiro_plugin_utf16_t* a_text);
std::string WideCharToMultiByteEucJp(const qiro_plugin_utf16_t* a_text);
std::string WideCharToMultiByteUTF8(const qiro_plugin_utf16_t* a_text);
// Never throws: text that cannot be represented gives the empty string.
std::string WideCharToMultiByteFilePath(const qiro_plugin_utf16_t* a_text);

} // namespace qiro_plugin::string_encode
