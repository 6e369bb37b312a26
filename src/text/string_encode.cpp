#include "text/string_encode.hpp"

#include "text/iconv_cache.hpp"
#include "text/utf8_codec.hpp"

#include <cerrno>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

namespace qiro_plugin::string_encode {

namespace {

constexpr const char* k_shift_jis = "CP932";
constexpr const char* k_euc_jp = "EUC-JP";
constexpr const char* k_utf16 = "UTF-16LE";

std::string_view bytes_of(const char* a_text) {
    return a_text == nullptr ? std::string_view() : std::string_view(a_text);
}

std::u16string_view units_of(const qiro_plugin_utf16_t* a_text) {
    return a_text == nullptr ? std::u16string_view() : std::u16string_view(a_text);
}

// Whole-input conversion; nullopt when iconv rejects a byte sequence (invalid, truncated or
// not representable), since no conversion here may substitute characters.
std::optional<std::string> run_iconv(const char* a_to, const char* a_from, std::string_view a_in) {
    iconv_t handle = detail::cached_iconv(a_to, a_from);
    if (handle == reinterpret_cast<iconv_t>(-1)) {
        return std::nullopt;
    }
    std::string out(a_in.size() * 2 + 16, '\0');
    char* in_pointer = const_cast<char*>(a_in.data());
    std::size_t in_left = a_in.size();
    std::size_t used = 0;
    while (true) {
        char* out_pointer = out.data() + used;
        std::size_t out_left = out.size() - used;
        const std::size_t status = iconv(handle, &in_pointer, &in_left, &out_pointer, &out_left);
        used = out.size() - out_left;
        if (status != static_cast<std::size_t>(-1)) {
            char* flush_pointer = out.data() + used;
            std::size_t flush_left = out.size() - used;
            if (iconv(handle, nullptr, nullptr, &flush_pointer, &flush_left) ==
                static_cast<std::size_t>(-1)) {
                return std::nullopt;
            }
            used = out.size() - flush_left;
            out.resize(used);
            return out;
        }
        if (errno != E2BIG) {
            return std::nullopt;
        }
        out.resize(out.size() * 2);
    }
}

utf16_string cut_at_zero(utf16_string a_text) {
    const auto zero = a_text.find(u'\0');
    if (zero != utf16_string::npos) {
        a_text.resize(zero);
    }
    return a_text;
}

std::string cut_at_zero(std::string a_text) {
    const auto zero = a_text.find('\0');
    if (zero != std::string::npos) {
        a_text.resize(zero);
    }
    return a_text;
}

utf16_string legacy_to_wide(const char* a_encoding, const char* a_text, const char* a_error) {
    const auto bytes = run_iconv(k_utf16, a_encoding, bytes_of(a_text));
    if (!bytes) {
        throw std::runtime_error(a_error);
    }
    utf16_string result(bytes->size() / 2, u'\0');
    for (std::size_t i = 0; i < result.size(); ++i) {
        result[i] = static_cast<char16_t>(static_cast<unsigned char>((*bytes)[2 * i]) |
                                          (static_cast<unsigned char>((*bytes)[2 * i + 1]) << 8));
    }
    return cut_at_zero(std::move(result));
}

bool is_well_formed(std::u16string_view a_text) {
    for (std::size_t i = 0; i < a_text.size(); ++i) {
        const char16_t unit = a_text[i];
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            if (i + 1 >= a_text.size() || a_text[i + 1] < 0xDC00 || a_text[i + 1] > 0xDFFF) {
                return false;
            }
            ++i;
        } else if (unit >= 0xDC00 && unit <= 0xDFFF) {
            return false;
        }
    }
    return true;
}

constexpr const char* k_wide_to_multibyte_error = "::WideCharToMultiByteShiftJis() : failed";
constexpr const char* k_utf8_to_wide_error = "::MultiByteUTF8ToWideChar() : failed";

// A lone surrogate, like a character the legacy encoding lacks, has no bytes there: either
// empties the whole result.
std::string wide_to_legacy(const char* a_encoding, const qiro_plugin_utf16_t* a_text) {
    const auto units = units_of(a_text);
    if (!is_well_formed(units)) {
        return std::string();
    }
    std::string little_endian(units.size() * 2, '\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
        little_endian[2 * i] = static_cast<char>(units[i] & 0xFF);
        little_endian[2 * i + 1] = static_cast<char>(units[i] >> 8);
    }
    auto bytes = run_iconv(a_encoding, k_utf16, little_endian);
    if (!bytes) {
        return std::string();
    }
    return cut_at_zero(std::move(*bytes));
}

} // namespace

utf16_string MultiByteShiftJisToWideChar(const char* a_text) {
    return legacy_to_wide(k_shift_jis, a_text, "::MultiByteShiftJisToWideChar() : failed");
}

utf16_string MultiByteEucJpToWideChar(const char* a_text) {
    return legacy_to_wide(k_euc_jp, a_text, "::MultiByteEucJpToWideChar() : failed");
}

utf16_string MultiByteUTF8ToWideChar(const char* a_text) {
    auto result = detail::utf8_to_utf16(bytes_of(a_text));
    if (!result) {
        throw std::runtime_error(k_utf8_to_wide_error);
    }
    return cut_at_zero(std::move(*result));
}

utf16_string MultiByteFilePathToWideChar(const char* a_path) {
    // Linux file names are UTF-8 by convention; a name that is not gives empty text.
    auto result = detail::utf8_to_utf16(bytes_of(a_path));
    return result ? cut_at_zero(std::move(*result)) : utf16_string();
}

std::size_t checked_utf8_length(const char* a_text) {
    const auto bytes = bytes_of(a_text);
    check_utf8(bytes);
    return bytes.size();
}

void check_utf8(std::string_view a_bytes) {
    if (!detail::is_valid_utf8(a_bytes)) {
        throw std::runtime_error(k_utf8_to_wide_error);
    }
}

std::string WideCharToMultiByteShiftJis(const qiro_plugin_utf16_t* a_text) {
    return wide_to_legacy(k_shift_jis, a_text);
}

std::string WideCharToMultiByteEucJp(const qiro_plugin_utf16_t* a_text) {
    return wide_to_legacy(k_euc_jp, a_text);
}

std::string WideCharToMultiByteUTF8(const qiro_plugin_utf16_t* a_text) {
    auto result = detail::utf16_to_utf8(units_of(a_text));
    if (!result) {
        throw std::runtime_error(k_wide_to_multibyte_error);
    }
    return std::move(*result);
}

std::string WideCharToMultiByteFilePath(const qiro_plugin_utf16_t* a_text) {
    auto result = detail::utf16_to_utf8(units_of(a_text));
    return result ? std::move(*result) : std::string();
}

} // namespace qiro_plugin::string_encode
