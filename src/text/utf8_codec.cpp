#include "text/utf8_codec.hpp"

#include <cstdint>
#include <cstring>

namespace qiro_plugin::string_encode::detail {

namespace {

// Decodes strict UTF-8, handing each code point to a_emit; false at the first invalid sequence.
template <typename Emit> bool decode_utf8(std::string_view a_bytes, Emit&& a_emit) {
    const std::size_t size = a_bytes.size();
    std::size_t i = 0;
    while (i < size) {
        // Output is mostly ASCII: eight bytes at a time while it lasts.
        if (size - i >= 8) {
            std::uint64_t word = 0;
            std::memcpy(&word, a_bytes.data() + i, sizeof word);
            if ((word & 0x8080808080808080u) == 0) {
                for (std::size_t k = 0; k < 8; ++k) {
                    a_emit(static_cast<std::uint8_t>(a_bytes[i + k]));
                }
                i += 8;
                continue;
            }
        }
        const auto lead = static_cast<std::uint8_t>(a_bytes[i]);
        if (lead < 0x80) {
            a_emit(lead);
            ++i;
            continue;
        }
        std::size_t length = 0;
        std::uint32_t code = 0;
        std::uint32_t minimum = 0;
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
            code = lead & 0x1Fu;
            minimum = 0x80;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            code = lead & 0x0Fu;
            minimum = 0x800;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            code = lead & 0x07u;
            minimum = 0x10000;
        } else {
            return false;
        }
        if (size - i < length) {
            return false;
        }
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<std::uint8_t>(a_bytes[i + k]);
            if ((next & 0xC0u) != 0x80u) {
                return false;
            }
            code = (code << 6) | (next & 0x3Fu);
        }
        if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
            return false;
        }
        a_emit(code);
        i += length;
    }
    return true;
}

} // namespace

std::optional<utf16_string> utf8_to_utf16(std::string_view a_bytes) {
    // Never more units than bytes: written in place, then cut to length.
    utf16_string result(a_bytes.size(), u'\0');
    char16_t* out = result.data();
    const bool valid = decode_utf8(a_bytes, [&out](std::uint32_t a_code) {
        if (a_code >= 0x10000) {
            a_code -= 0x10000;
            *out++ = static_cast<char16_t>(0xD800 + (a_code >> 10));
            *out++ = static_cast<char16_t>(0xDC00 + (a_code & 0x3FFu));
        } else {
            *out++ = static_cast<char16_t>(a_code);
        }
    });
    if (!valid) {
        return std::nullopt;
    }
    result.resize(static_cast<std::size_t>(out - result.data()));
    return result;
}

bool is_valid_utf8(std::string_view a_bytes) {
    return decode_utf8(a_bytes, [](std::uint32_t) {});
}

std::optional<std::string> utf16_to_utf8(std::u16string_view a_text) {
    std::string result;
    result.reserve(a_text.size() * 3);
    const std::size_t size = a_text.size();
    for (std::size_t i = 0; i < size; ++i) {
        std::uint32_t code = a_text[i];
        if (code >= 0xD800 && code <= 0xDBFF) {
            if (i + 1 >= size || a_text[i + 1] < 0xDC00 || a_text[i + 1] > 0xDFFF) {
                return std::nullopt;
            }
            code = 0x10000 + ((code - 0xD800) << 10) + (a_text[i + 1] - 0xDC00u);
            ++i;
        } else if (code >= 0xDC00 && code <= 0xDFFF) {
            return std::nullopt;
        }
        append_utf8(result, code);
    }
    return result;
}

void append_utf8(std::string& a_text, std::uint32_t a_code) {
    if (a_code < 0x80) {
        a_text.push_back(static_cast<char>(a_code));
    } else if (a_code < 0x800) {
        a_text.push_back(static_cast<char>(0xC0 | (a_code >> 6)));
        a_text.push_back(static_cast<char>(0x80 | (a_code & 0x3F)));
    } else if (a_code < 0x10000) {
        a_text.push_back(static_cast<char>(0xE0 | (a_code >> 12)));
        a_text.push_back(static_cast<char>(0x80 | ((a_code >> 6) & 0x3F)));
        a_text.push_back(static_cast<char>(0x80 | (a_code & 0x3F)));
    } else {
        a_text.push_back(static_cast<char>(0xF0 | (a_code >> 18)));
        a_text.push_back(static_cast<char>(0x80 | ((a_code >> 12) & 0x3F)));
        a_text.push_back(static_cast<char>(0x80 | ((a_code >> 6) & 0x3F)));
        a_text.push_back(static_cast<char>(0x80 | (a_code & 0x3F)));
    }
}

} // namespace qiro_plugin::string_encode::detail
