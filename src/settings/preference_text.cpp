#include "settings/preference_text.hpp"

#include "text/string_encode.hpp"

#include <stdexcept>

namespace qiro_plugin::preferences {

utf16_string convert_string(const preference_value* a_value) {
    if (a_value == nullptr || a_value->get_string() == nullptr) {
        return {};
    }
    try {
        return string_encode::MultiByteUTF8ToWideChar(a_value->get_string()->c_str());
    } catch (const std::runtime_error&) {
        return {};
    }
}

utf16_string convert_string(const std::optional<preference_value>& a_value) {
    return convert_string(a_value ? &*a_value : nullptr);
}

std::optional<std::string> to_utf8(const utf16_string& a_text) {
    try {
        return string_encode::WideCharToMultiByteUTF8(a_text.c_str());
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
}

std::optional<preference_value> make_string_value(const utf16_string& a_text) {
    auto bytes = to_utf8(a_text);
    if (!bytes) {
        return std::nullopt;
    }
    return preference_value(std::move(*bytes));
}

} // namespace qiro_plugin::preferences
