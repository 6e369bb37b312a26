#pragma once
// The records that cross the plug-in interface: processing request, callback request, result.

#include "text/utf16_string.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

namespace qiro_plugin {

inline constexpr std::size_t QIRO_PLUGIN_REQUEST_STRING_CAPACITY = 200;
inline constexpr std::size_t QIRO_PLUGIN_PROXY_ADDRESS_CAPACITY = 512;
inline constexpr std::size_t QIRO_PLUGIN_PROXY_ACCOUNT_CAPACITY = 100;

// Buffers are not terminated: only the length that follows each one counts. Hosts clear the
// whole record (value-initialise it) before filling it.
struct qiro_plugin_request {
    qiro_plugin_utf16_t composition_string[QIRO_PLUGIN_REQUEST_STRING_CAPACITY];
    std::uint32_t composition_string_length;
    qiro_plugin_utf16_t reading_string[QIRO_PLUGIN_REQUEST_STRING_CAPACITY];
    std::uint32_t reading_string_length;

    // Block used by other plug-in kinds; script plug-ins never read it.
    std::uint32_t processing_type; // detailed processing asked for; 1 = get candidates
    std::uint8_t is_auto_search;   // 1 when the search was started without a key press
    std::uint8_t reserved_flags[3];
    qiro_plugin_utf16_t surrounding_string[QIRO_PLUGIN_REQUEST_STRING_CAPACITY]; // context text
    std::uint32_t surrounding_string_length;
    std::uint32_t caret_position; // caret offset inside the surrounding text
    std::uint32_t record_version; // layout version of this record; 1
    std::uint32_t reserved_block_word;

    qiro_plugin_utf16_t proxy_address[QIRO_PLUGIN_PROXY_ADDRESS_CAPACITY];
    std::uint32_t proxy_address_length;
    std::uint32_t proxy_port;
    qiro_plugin_utf16_t proxy_username[QIRO_PLUGIN_PROXY_ACCOUNT_CAPACITY];
    std::uint32_t proxy_username_length;
    qiro_plugin_utf16_t proxy_password[QIRO_PLUGIN_PROXY_ACCOUNT_CAPACITY];
    std::uint32_t proxy_password_length;

    std::uint32_t reserved_words[4]; // not read by script plug-ins
};

struct qiro_plugin_callback {
    qiro_plugin_utf16_t candidate_string[QIRO_PLUGIN_REQUEST_STRING_CAPACITY];
    std::uint32_t candidate_string_length;
    std::uint32_t plugin_index;    // index of the plug-in that offered the candidate (unread)
    std::uint32_t candidate_index; // the candidate's position in its list (unread)
    qiro_plugin_utf16_t composition_string[QIRO_PLUGIN_REQUEST_STRING_CAPACITY];
    std::uint32_t composition_string_length;
    qiro_plugin_utf16_t proxy_address[QIRO_PLUGIN_PROXY_ADDRESS_CAPACITY];
    std::uint32_t proxy_address_length;
    std::uint32_t proxy_port;
    qiro_plugin_utf16_t proxy_username[QIRO_PLUGIN_PROXY_ACCOUNT_CAPACITY];
    std::uint32_t proxy_username_length;
    qiro_plugin_utf16_t proxy_password[QIRO_PLUGIN_PROXY_ACCOUNT_CAPACITY];
    std::uint32_t proxy_password_length;
};

static_assert(std::is_trivially_copyable_v<qiro_plugin_request> &&
              std::is_standard_layout_v<qiro_plugin_request>);
static_assert(std::is_trivially_copyable_v<qiro_plugin_callback> &&
              std::is_standard_layout_v<qiro_plugin_callback>);

struct qiro_plugin_receive_data {
    std::string xml_string;        // the candidate list document
    std::string additional_string; // left empty by script plug-ins
    std::uint32_t return_type = 0; // copied from the message
};

// The palette result; script plug-ins have no palette and never produce one.
struct qiro_plugin_receive_palette_data {
    std::string xml_string;
    std::uint32_t return_type = 0;
};

// Text of one record buffer; a stored length above the capacity is clamped to it.
template <std::size_t N>
utf16_string get_record_text(const qiro_plugin_utf16_t (&a_buffer)[N], std::uint32_t a_length) {
    return utf16_string(a_buffer, std::min<std::size_t>(a_length, N));
}

// Stores a text into a record buffer and its length; false when it had to be cut.
template <std::size_t N>
bool set_record_text(qiro_plugin_utf16_t (&a_buffer)[N], std::uint32_t& a_length,
                     const utf16_string& a_text) {
    const std::size_t count = std::min(a_text.size(), N);
    std::copy_n(a_text.data(), count, a_buffer);
    std::fill(a_buffer + count, a_buffer + N, qiro_plugin_utf16_t{0});
    a_length = static_cast<std::uint32_t>(count);
    return count == a_text.size();
}

} // namespace qiro_plugin
