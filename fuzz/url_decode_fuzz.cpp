// Feeds arbitrary bytes to the URL decoder and encoder: the encoder's alphabet, the decoder's
// number-reader rule for every escape, and the round trip through both.

#include "fuzz_require.hpp"
#include "text/url_xml_escape.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

// The decoder answers every escape with what the C number reader makes of its two characters;
// its own hexadecimal fast path must agree with that reading everywhere.
std::string decode_by_number_reader(std::string_view a_text) {
    std::string result;
    for (std::size_t i = 0; i < a_text.size();) {
        if (a_text[i] == '+') {
            result.push_back(' ');
            ++i;
        } else if (a_text[i] == '%' && i + 2 < a_text.size()) {
            const char digits[3] = {a_text[i + 1], a_text[i + 2], '\0'};
            char* end = nullptr;
            const long value = std::strtol(digits, &end, 16);
            if (end == digits + 2 && value >= 0 && value <= 255) {
                result.push_back(static_cast<char>(value));
            } else {
                result.append(a_text.substr(i, 3));
            }
            i += 3;
        } else {
            result.push_back(a_text[i]);
            ++i;
        }
    }
    return result;
}

bool is_encoded_alphabet(std::string_view a_text) {
    for (const char byte : a_text) {
        const bool allowed = byte == '%' || byte == '+' || byte == '.' || byte == '_' ||
                             byte == '-' || (byte >= '0' && byte <= '9') ||
                             (byte >= 'A' && byte <= 'F');
        if (!allowed) {
            return false;
        }
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size) {
    const std::string text(reinterpret_cast<const char*>(a_data), a_size);
    using qiro_plugin::utility::url_decode;
    using qiro_plugin::utility::url_encode;

    const std::string decoded = url_decode(text);
    require(decoded.size() <= text.size());
    require(decoded == decode_by_number_reader(text));

    const std::string encoded = url_encode(text);
    require(is_encoded_alphabet(encoded));
    require(url_decode(encoded) == text);
    return 0;
}
