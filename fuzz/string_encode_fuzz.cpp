// Feeds arbitrary bytes to every conversion of string_encode, read once as a byte string and
// once as UTF-16 units: each either converts or throws its documented error, and what converts
// comes back unchanged.

#include "fuzz_require.hpp"
#include "text/string_encode.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

using namespace qiro_plugin;
using namespace qiro_plugin::string_encode;

using decoder = utf16_string (*)(const char*);
using encoder = std::string (*)(const qiro_plugin_utf16_t*);

struct codec {
    decoder decode;
    encoder encode;
    std::string_view decode_error;
    bool legacy; // a character the encoding lacks empties the output instead of failing
};

constexpr std::string_view k_encode_error = "::WideCharToMultiByteShiftJis() : failed";

const codec k_codecs[] = {
    {MultiByteShiftJisToWideChar, WideCharToMultiByteShiftJis,
     "::MultiByteShiftJisToWideChar() : failed", true},
    {MultiByteEucJpToWideChar, WideCharToMultiByteEucJp, "::MultiByteEucJpToWideChar() : failed",
     true},
    {MultiByteUTF8ToWideChar, WideCharToMultiByteUTF8, "::MultiByteUTF8ToWideChar() : failed",
     false},
};

bool is_well_formed(std::u16string_view a_text) {
    for (std::size_t i = 0; i < a_text.size(); ++i) {
        if (a_text[i] >= 0xD800 && a_text[i] <= 0xDBFF && i + 1 < a_text.size() &&
            a_text[i + 1] >= 0xDC00 && a_text[i + 1] <= 0xDFFF) {
            ++i;
        } else if (a_text[i] >= 0xD800 && a_text[i] <= 0xDFFF) {
            return false;
        }
    }
    return true;
}

template <typename call> auto expect_documented_failure(std::string_view a_error, call a_call) {
    try {
        return std::optional(a_call());
    } catch (const std::runtime_error& error) {
        require(error.what() == a_error);
        return decltype(std::optional(a_call()))();
    }
}

// Decoded text holds no zero unit, is well-formed, and encodes back to text that decodes to
// itself; UTF-8 is strict, so there the very bytes come back.
void check_decode(const codec& a_codec, const std::string& a_bytes) {
    const auto text = expect_documented_failure(a_codec.decode_error,
                                                [&] { return a_codec.decode(a_bytes.c_str()); });
    if (!text) {
        return;
    }
    require(text->find(u'\0') == utf16_string::npos && is_well_formed(*text));
    const std::string encoded = a_codec.encode(text->c_str());
    require(a_codec.decode(encoded.c_str()) == *text);
    if (!a_codec.legacy) {
        require(encoded == std::string_view(a_bytes.c_str()));
    }
}

// Encoding reads up to the first zero unit; what comes out decodes back to exactly that text,
// except that the legacy tables map a few characters to a look-alike (the yen sign to the
// backslash, the wave dash to the full-width tilde) as the input method's own tables do: there
// the bytes must decode, and that text must encode to the same bytes.
void check_encode(const codec& a_codec, const utf16_string& a_text) {
    const auto bytes =
        expect_documented_failure(k_encode_error, [&] { return a_codec.encode(a_text.c_str()); });
    const std::u16string_view units(a_text.c_str());
    if (!bytes) {
        require(!is_well_formed(units));
        return;
    }
    require(bytes->find('\0') == std::string::npos);
    if (a_codec.legacy && bytes->empty()) {
        return;
    }
    const utf16_string decoded = a_codec.decode(bytes->c_str());
    if (a_codec.legacy) {
        require(a_codec.encode(decoded.c_str()) == *bytes);
    } else {
        require(decoded == units);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size) {
    const std::string bytes(reinterpret_cast<const char*>(a_data), a_size);
    utf16_string units(a_size / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
        units[i] = static_cast<char16_t>(a_data[2 * i] | (a_data[2 * i + 1] << 8));
    }
    for (const codec& each : k_codecs) {
        check_decode(each, bytes);
        check_encode(each, units);
    }

    // File paths follow UTF-8 but answer failure with empty text instead of an exception.
    const auto utf8_text = expect_documented_failure(
        k_codecs[2].decode_error, [&] { return MultiByteUTF8ToWideChar(bytes.c_str()); });
    require(MultiByteFilePathToWideChar(bytes.c_str()) == utf8_text.value_or(utf16_string()));
    const auto utf8_bytes = expect_documented_failure(
        k_encode_error, [&] { return WideCharToMultiByteUTF8(units.c_str()); });
    require(WideCharToMultiByteFilePath(units.c_str()) == utf8_bytes.value_or(std::string()));
    return 0;
}
