#include "settings/plist_codec.hpp"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>

namespace qiro_plugin::preferences {

namespace {

struct plist_deleter {
    void operator()(plist_t a_node) const { plist_free(a_node); }
};
using plist_handle = std::unique_ptr<void, plist_deleter>;

struct malloc_deleter {
    void operator()(void* a_memory) const { std::free(a_memory); }
};

// Deep documents are refused rather than risking the stack on hostile files.
constexpr int max_depth = 256;

std::optional<preference_value> from_node(plist_t a_node, int a_depth);

std::optional<preference_value> from_array(plist_t a_node, int a_depth) {
    preference_value::array_type items;
    const std::uint32_t size = plist_array_get_size(a_node);
    items.reserve(size);
    for (std::uint32_t index = 0; index < size; ++index) {
        auto item = from_node(plist_array_get_item(a_node, index), a_depth + 1);
        if (!item) {
            return std::nullopt;
        }
        items.push_back(std::move(*item));
    }
    return preference_value(std::move(items));
}

std::optional<preference_value> from_dictionary(plist_t a_node, int a_depth) {
    preference_value::dictionary_type entries;
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(a_node, &iterator);
    std::unique_ptr<void, malloc_deleter> iterator_owner(iterator);
    while (true) {
        char* raw_key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(a_node, iterator, &raw_key, &value);
        std::unique_ptr<char, malloc_deleter> key(raw_key);
        if (value == nullptr) {
            break;
        }
        auto converted = from_node(value, a_depth + 1);
        if (!converted || !key) {
            return std::nullopt;
        }
        entries.emplace_back(key.get(), std::move(*converted));
    }
    return preference_value(std::move(entries));
}

// Whether an integer node holds a negative number, rather than one above 2^63-1 (both read
// back as the same 64 bits).
bool is_negative(plist_t a_node) {
#if QIRO_PLIST_HAS_SIGNED_INT
    return plist_int_val_is_negative(a_node) != 0;
#else
    // Before 2.3 libplist kept the sign but had no call to ask: plist_new_uint made signed
    // nodes there, so a node equal to one of the same bits is the negative number.
    std::uint64_t value = 0;
    plist_get_uint_val(a_node, &value);
    plist_handle as_signed(plist_new_uint(value));
    return plist_compare_node_value(a_node, as_signed.get()) != 0;
#endif
}

std::optional<preference_value> from_node(plist_t a_node, int a_depth) {
    if (a_node == nullptr || a_depth > max_depth) {
        return std::nullopt;
    }
    switch (plist_get_node_type(a_node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t value = 0;
        plist_get_bool_val(a_node, &value);
        return preference_value(value != 0);
    }
    case PLIST_UINT: {
        std::uint64_t value = 0;
        plist_get_uint_val(a_node, &value);
        if (value > INT64_MAX && !is_negative(a_node)) {
            return preference_value(value);
        }
        return preference_value(static_cast<std::int64_t>(value));
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(a_node, &value);
        return preference_value(value);
    }
    case PLIST_STRING: {
        std::uint64_t length = 0;
        const char* text = plist_get_string_ptr(a_node, &length);
        return preference_value(text == nullptr ? std::string() : std::string(text, length));
    }
    case PLIST_DATE: {
        preference_date value;
        plist_get_date_val(a_node, &value.seconds, &value.microseconds);
        return preference_value(value);
    }
    case PLIST_DATA: {
        std::uint64_t length = 0;
        const char* bytes = plist_get_data_ptr(a_node, &length);
        const auto* first = reinterpret_cast<const std::uint8_t*>(bytes);
        return preference_value(bytes == nullptr
                                    ? preference_value::data_type()
                                    : preference_value::data_type(first, first + length));
    }
    case PLIST_ARRAY:
        return from_array(a_node, a_depth);
    case PLIST_DICT:
        return from_dictionary(a_node, a_depth);
    default:
        // Keyed archiver identifiers and the like have no place in preferences.
        return std::nullopt;
    }
}

#if QIRO_PLIST_HAS_SIGNED_INT
plist_t new_integer(const preference_value& a_value) {
    const std::int64_t value = *a_value.get_integer();
    return a_value.is_large_unsigned() ? plist_new_uint(static_cast<std::uint64_t>(value))
                                       : plist_new_int(value);
}
#else
// Before 2.3 plist_new_uint made every node signed, so that an integer above 2^63-1 would be
// written as a negative number; the parser makes unsigned ones.
plist_t new_integer(const preference_value& a_value) {
    const auto value = static_cast<std::uint64_t>(*a_value.get_integer());
    if (!a_value.is_large_unsigned()) {
        return plist_new_uint(value);
    }
    std::string document = "<plist version=\"1.0\"><integer>";
    document.append(std::to_string(value)).append("</integer></plist>");
    plist_t node = nullptr;
    plist_from_xml(document.data(), static_cast<std::uint32_t>(document.size()), &node);
    return node;
}
#endif

plist_t to_node(const preference_value& a_value) {
    switch (a_value.get_kind()) {
    case preference_value::kind::boolean:
        return plist_new_bool(*a_value.get_boolean() ? 1 : 0);
    case preference_value::kind::integer:
        return new_integer(a_value);
    case preference_value::kind::real:
        return plist_new_real(*a_value.get_real());
    case preference_value::kind::string:
        return plist_new_string(a_value.get_string()->c_str());
    case preference_value::kind::date:
        return plist_new_date(a_value.get_date()->seconds, a_value.get_date()->microseconds);
    case preference_value::kind::data: {
        const auto& bytes = *a_value.get_data();
        return plist_new_data(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    case preference_value::kind::array: {
        plist_handle node(plist_new_array());
        for (const auto& item : *a_value.get_array()) {
            plist_array_append_item(node.get(), to_node(item));
        }
        return node.release();
    }
    case preference_value::kind::dictionary: {
        plist_handle node(plist_new_dict());
        for (const auto& [key, item] : *a_value.get_dictionary()) {
            plist_dict_set_item(node.get(), key.c_str(), to_node(item));
        }
        return node.release();
    }
    }
    return nullptr;
}

} // namespace

std::optional<parsed_plist> parse_plist(const std::string& a_bytes) {
    if (a_bytes.empty() || a_bytes.size() > std::numeric_limits<std::uint32_t>::max()) {
        return std::nullopt;
    }
    const auto length = static_cast<std::uint32_t>(a_bytes.size());
    const bool binary = plist_is_binary(a_bytes.data(), length) != 0;
    plist_t raw = nullptr;
    if (binary) {
        plist_from_bin(a_bytes.data(), length, &raw);
    } else {
        plist_from_xml(a_bytes.data(), length, &raw);
    }
    plist_handle root(raw);
    if (!root) {
        return std::nullopt;
    }
    auto value = from_node(root.get(), 0);
    if (!value) {
        return std::nullopt;
    }
    return parsed_plist{std::move(*value), binary ? plist_format::binary : plist_format::xml};
}

std::optional<std::string> write_plist(const preference_value& a_root, plist_format a_format) {
    plist_handle root(to_node(a_root));
    if (!root) {
        return std::nullopt;
    }
    char* raw = nullptr;
    std::uint32_t length = 0;
    if (a_format == plist_format::binary) {
        plist_to_bin(root.get(), &raw, &length);
    } else {
        plist_to_xml(root.get(), &raw, &length);
    }
    std::optional<std::string> result;
    if (raw != nullptr && length != 0) {
        result.emplace(raw, length);
    }
#if QIRO_PLIST_HAS_MEM_FREE
    plist_mem_free(raw);
#else
    if (a_format == plist_format::binary) {
        plist_to_bin_free(raw);
    } else {
        plist_to_xml_free(raw);
    }
#endif
    return result;
}

} // namespace qiro_plugin::preferences
