#include "settings/preference_value.hpp"

#include <cmath>
#include <stdexcept>

namespace qiro_plugin::preferences {

const preference_value* preference_value::find(const std::string& a_key) const {
    const auto* dictionary = get_dictionary();
    if (dictionary == nullptr) {
        return nullptr;
    }
    for (const auto& entry : *dictionary) {
        if (entry.first == a_key) {
            return &entry.second;
        }
    }
    return nullptr;
}

void preference_value::set(const std::string& a_key, preference_value a_value) {
    auto* dictionary = get_dictionary();
    if (dictionary == nullptr) {
        throw std::logic_error("preference_value::set() : not a dictionary");
    }
    for (auto& entry : *dictionary) {
        if (entry.first == a_key) {
            entry.second = std::move(a_value);
            return;
        }
    }
    dictionary->emplace_back(a_key, std::move(a_value));
}

void preference_value::erase(const std::string& a_key) {
    auto* dictionary = get_dictionary();
    if (dictionary == nullptr) {
        return;
    }
    std::erase_if(*dictionary, [&](const auto& a_entry) { return a_entry.first == a_key; });
}

bool string_bool_value(const std::string& a_text) {
    std::size_t position = 0;
    while (position < a_text.size() &&
           (a_text[position] == ' ' || a_text[position] == '\t' || a_text[position] == '\n' ||
            a_text[position] == '\r' || a_text[position] == '\v' || a_text[position] == '\f')) {
        ++position;
    }
    if (position < a_text.size() && (a_text[position] == '+' || a_text[position] == '-')) {
        ++position;
    }
    while (position < a_text.size() && a_text[position] == '0') {
        ++position;
    }
    if (position == a_text.size()) {
        return false;
    }
    const char first = a_text[position];
    return first == 'Y' || first == 'y' || first == 'T' || first == 't' ||
           (first >= '1' && first <= '9');
}

std::optional<bool> preference_value::bool_value() const {
    if (const auto* value = get_boolean()) {
        return *value;
    }
    if (const auto* value = get_integer()) {
        return *value != 0;
    }
    if (const auto* value = get_real()) {
        return *value != 0.0;
    }
    if (const auto* value = get_string()) {
        return string_bool_value(*value);
    }
    return std::nullopt;
}

std::optional<std::uint32_t> preference_value::unsigned_int_value() const {
    if (const auto* value = get_boolean()) {
        return *value ? 1U : 0U;
    }
    if (const auto* value = get_integer()) {
        // Like a C conversion to unsigned: the low 32 bits.
        return static_cast<std::uint32_t>(static_cast<std::uint64_t>(*value));
    }
    if (const auto* value = get_real()) {
        // Truncated toward zero and wrapped like an integer; values no 64-bit integer can
        // hold give 0 rather than undefined behaviour.
        if (!std::isfinite(*value) || *value >= 9.2e18 || *value <= -9.2e18) {
            return 0U;
        }
        return static_cast<std::uint32_t>(
            static_cast<std::uint64_t>(static_cast<std::int64_t>(*value)));
    }
    return std::nullopt;
}

bool preference_value::operator==(const preference_value& a_other) const {
    return m_value == a_other.m_value && m_is_large_unsigned == a_other.m_is_large_unsigned;
}

} // namespace qiro_plugin::preferences
