#include "text/utf8_text.hpp"

#include "text/utf8_codec.hpp"

#include <cstdint>

namespace qiro_plugin::string_encode {

namespace {

constexpr std::uint32_t replacement = 0xFFFD;

bool is_high(std::uint32_t a_unit) {
    return a_unit >= 0xD800 && a_unit <= 0xDBFF;
}

bool is_low(std::uint32_t a_unit) {
    return a_unit >= 0xDC00 && a_unit <= 0xDFFF;
}

} // namespace

std::string to_utf8_marked(const utf16_string& a_text) {
    std::string bytes;
    bytes.reserve(a_text.size());
    for (std::size_t index = 0; index < a_text.size(); ++index) {
        std::uint32_t code = a_text[index];
        if (is_high(code) && index + 1 < a_text.size() && is_low(a_text[index + 1])) {
            code = 0x10000 + ((code - 0xD800) << 10) + (a_text[index + 1] - 0xDC00u);
            ++index;
        } else if (is_high(code) || is_low(code)) {
            code = replacement;
        }
        detail::append_utf8(bytes, code);
    }
    return bytes;
}

utf16_string to_utf16_marked(std::string_view a_bytes) {
    if (auto whole = detail::utf8_to_utf16(a_bytes)) {
        return std::move(*whole);
    }
    // Sequence by sequence: a well-formed one is kept, any other byte is marked.
    utf16_string text;
    std::size_t index = 0;
    while (index < a_bytes.size()) {
        const auto lead = static_cast<unsigned char>(a_bytes[index]);
        const std::size_t length = lead < 0x80 ? 1 : lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
        if (index + length <= a_bytes.size()) {
            if (auto piece = detail::utf8_to_utf16(a_bytes.substr(index, length))) {
                text += *piece;
                index += length;
                continue;
            }
        }
        text.push_back(static_cast<qiro_plugin_utf16_t>(replacement));
        ++index;
    }
    return text;
}

} // namespace qiro_plugin::string_encode
