#include "text/url_xml_escape.hpp"

#include "text/wide_string.hpp"

#include <algorithm>
#include <cstdlib>

namespace qiro_plugin::utility {

namespace {

int hex_digit_value(char a_character) {
    if (a_character >= '0' && a_character <= '9') {
        return a_character - '0';
    }
    if (a_character >= 'A' && a_character <= 'F') {
        return a_character - 'A' + 10;
    }
    if (a_character >= 'a' && a_character <= 'f') {
        return a_character - 'a' + 10;
    }
    return -1;
}

} // namespace

std::string url_encode(const std::string& a_text) {
    static constexpr char k_hex[] = "0123456789ABCDEF";
    std::string result;
    result.reserve(a_text.size() * 3);
    for (const char byte : a_text) {
        const auto value = static_cast<unsigned char>(byte);
        if (byte == '.' || byte == '_' || byte == '-') {
            result.push_back(byte);
        } else if (byte == ' ') {
            result.push_back('+');
        } else {
            result.push_back('%');
            result.push_back(k_hex[value >> 4]);
            result.push_back(k_hex[value & 0x0F]);
        }
    }
    return result;
}

std::string url_decode(const std::string& a_text) {
    // Decoding never lengthens the text, so the bytes go straight into a buffer of its size:
    // every byte of an embedded bridge takes this loop, twice per Run.
    std::string result(a_text.size(), '\0');
    char* out = result.data();
    const char* const text = a_text.data();
    const std::size_t size = a_text.size();
    std::size_t i = 0;
    while (i < size) {
        const char byte = text[i];
        if (byte == '+') {
            *out++ = ' ';
            ++i;
        } else if (byte == '%' && i + 2 < size) {
            const int high = hex_digit_value(text[i + 1]);
            const int low = hex_digit_value(text[i + 2]);
            if (high >= 0 && low >= 0) {
                *out++ = static_cast<char>(high * 16 + low);
                i += 3;
                continue;
            }
            // The number reader's own rules (leading blanks, a sign) are part of the format.
            const char digits[3] = {text[i + 1], text[i + 2], '\0'};
            char* end = nullptr;
            const long value = std::strtol(digits, &end, 16);
            if (end == digits + 2 && value >= 0 && value <= 255) {
                *out++ = static_cast<char>(value);
            } else {
                out = std::copy(text + i, text + i + 3, out);
            }
            i += 3;
        } else {
            *out++ = byte;
            ++i;
        }
    }
    result.resize(static_cast<std::size_t>(out - result.data()));
    return result;
}

utf16_string convert_xml_entity(const utf16_string& a_text) {
    utf16_string result(a_text);
    replace_sub_string(true, result, u"&", u"&amp;");
    replace_sub_string(true, result, u"<", u"&lt;");
    replace_sub_string(true, result, u">", u"&gt;");
    replace_sub_string(true, result, u"'", u"&apos;");
    replace_sub_string(true, result, u"\"", u"&quot;");
    return result;
}

utf16_string convert_control_character(const utf16_string& a_text) {
    utf16_string result(a_text);
    for (auto& unit : result) {
        if (unit <= 31 || unit == 127) {
            unit = u' ';
        }
    }
    return result;
}

std::string escape_xml(std::string_view a_text) {
    std::string escaped;
    for (const char character : a_text) {
        switch (character) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        case '\n':
            escaped += "&#10;";
            break;
        case '\t':
            escaped += "&#9;";
            break;
        case '\r':
            escaped += "&#13;";
            break;
        default:
            escaped += character;
        }
    }
    return escaped;
}

} // namespace qiro_plugin::utility
