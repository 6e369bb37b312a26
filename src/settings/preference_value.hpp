#pragma once
// One value of a preference domain: the property-list types, held by value.

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace qiro_plugin::preferences {

// A point in time as property lists keep it: seconds and microseconds since
// 2001-01-01 00:00:00 UTC.
struct preference_date {
    std::int32_t seconds = 0;
    std::int32_t microseconds = 0;
    bool operator==(const preference_date&) const = default;
};

class preference_value {
public:
    enum class kind { boolean, integer, real, string, date, data, array, dictionary };
    using data_type = std::vector<std::uint8_t>;
    using array_type = std::vector<preference_value>;
    // Entries keep the order in which the file lists them.
    using dictionary_type = std::vector<std::pair<std::string, preference_value>>;

    preference_value() : m_value(false) {}
    explicit preference_value(bool a_value) : m_value(a_value) {}
    // Property lists hold integers from -2^63 to 2^64-1: an unsigned value above the signed
    // range keeps that it is one, so that it is written back as the same number.
    template <std::integral T>
    requires(!std::same_as<T, bool>) explicit preference_value(T a_value)
        : m_value(static_cast<std::int64_t>(a_value)),
          m_is_large_unsigned(std::is_unsigned_v<T> &&
                              static_cast<std::uint64_t>(a_value) > INT64_MAX) {}
    explicit preference_value(double a_value) : m_value(a_value) {}
    explicit preference_value(std::string a_value) : m_value(std::move(a_value)) {}
    explicit preference_value(const char* a_value) : m_value(std::string(a_value)) {}
    explicit preference_value(preference_date a_value) : m_value(a_value) {}
    explicit preference_value(data_type a_value) : m_value(std::move(a_value)) {}
    explicit preference_value(array_type a_value) : m_value(std::move(a_value)) {}
    explicit preference_value(dictionary_type a_value) : m_value(std::move(a_value)) {}

    kind get_kind() const { return static_cast<kind>(m_value.index()); }

    // Null when the value is of another kind.
    const bool* get_boolean() const { return std::get_if<bool>(&m_value); }
    // An integer's bits; read them as unsigned when is_large_unsigned says so.
    const std::int64_t* get_integer() const { return std::get_if<std::int64_t>(&m_value); }
    bool is_large_unsigned() const { return m_is_large_unsigned; }
    const double* get_real() const { return std::get_if<double>(&m_value); }
    const std::string* get_string() const { return std::get_if<std::string>(&m_value); }
    const preference_date* get_date() const { return std::get_if<preference_date>(&m_value); }
    const data_type* get_data() const { return std::get_if<data_type>(&m_value); }
    const array_type* get_array() const { return std::get_if<array_type>(&m_value); }
    const dictionary_type* get_dictionary() const { return std::get_if<dictionary_type>(&m_value); }
    dictionary_type* get_dictionary() { return std::get_if<dictionary_type>(&m_value); }

    // The entry of a dictionary with that key; null for a missing key or a non-dictionary.
    const preference_value* find(const std::string& a_key) const;
    // Sets or replaces the entry in a dictionary (the value must be one).
    void set(const std::string& a_key, preference_value a_value);
    // Removes the entry from a dictionary; nothing happens when it is absent.
    void erase(const std::string& a_key);

    // The number answers of a stored object: booleans and numbers answer both, a string
    // answers only the boolean question, every other kind neither.
    std::optional<bool> bool_value() const;
    std::optional<std::uint32_t> unsigned_int_value() const;

    bool operator==(const preference_value& a_other) const;

private:
    std::variant<bool, std::int64_t, double, std::string, preference_date, data_type, array_type,
                 dictionary_type>
        m_value;
    bool m_is_large_unsigned = false;
};

// The boolean reading of a text: true when, after leading white space, an optional sign
// and leading zeros, it begins with Y, y, T, t or a digit from 1 to 9.
bool string_bool_value(const std::string& a_text);

} // namespace qiro_plugin::preferences
