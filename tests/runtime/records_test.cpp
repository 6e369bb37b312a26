#include "runtime/plugin_records.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>

using namespace qiro_plugin;

TEST(plugin_records, buffers_have_their_fixed_capacities_in_interface_order) {
    const qiro_plugin_request request{};
    EXPECT_EQ(std::size(request.composition_string), 200U);
    EXPECT_EQ(std::size(request.reading_string), 200U);
    EXPECT_EQ(std::size(request.proxy_address), 512U);
    EXPECT_EQ(std::size(request.proxy_username), 100U);
    EXPECT_EQ(std::size(request.proxy_password), 100U);
    EXPECT_EQ(std::size(request.reserved_words), 4U);
    EXPECT_EQ(offsetof(qiro_plugin_request, composition_string_length), 400U);
    EXPECT_LT(offsetof(qiro_plugin_request, reading_string_length),
              offsetof(qiro_plugin_request, processing_type));
    EXPECT_LT(offsetof(qiro_plugin_request, processing_type),
              offsetof(qiro_plugin_request, is_auto_search));
    EXPECT_LT(offsetof(qiro_plugin_request, is_auto_search),
              offsetof(qiro_plugin_request, record_version));
    EXPECT_LT(offsetof(qiro_plugin_request, record_version),
              offsetof(qiro_plugin_request, proxy_address));
    EXPECT_EQ(offsetof(qiro_plugin_request, proxy_port),
              offsetof(qiro_plugin_request, proxy_address_length) + 4);
    EXPECT_EQ(sizeof(qiro_plugin_request), offsetof(qiro_plugin_request, reserved_words) + 16);

    const qiro_plugin_callback callback{};
    EXPECT_EQ(std::size(callback.candidate_string), 200U);
    EXPECT_EQ(std::size(callback.composition_string), 200U);
    EXPECT_EQ(std::size(callback.proxy_address), 512U);
    EXPECT_EQ(std::size(callback.proxy_username), 100U);
    EXPECT_EQ(std::size(callback.proxy_password), 100U);
    EXPECT_EQ(offsetof(qiro_plugin_callback, composition_string),
              offsetof(qiro_plugin_callback, candidate_string_length) + 12);

    const qiro_plugin_receive_data receive;
    EXPECT_TRUE(receive.xml_string.empty());
    EXPECT_TRUE(receive.additional_string.empty());
    EXPECT_EQ(receive.return_type, 0U);
}

TEST(plugin_records, texts_are_stored_and_read_within_their_capacity) {
    qiro_plugin_request request{};
    EXPECT_TRUE(
        set_record_text(request.composition_string, request.composition_string_length, u"変換"));
    EXPECT_EQ(request.composition_string_length, 2U);
    EXPECT_EQ(get_record_text(request.composition_string, request.composition_string_length),
              u"変換");

    const utf16_string long_text(250, u'x');
    EXPECT_FALSE(
        set_record_text(request.composition_string, request.composition_string_length, long_text));
    EXPECT_EQ(request.composition_string_length, 200U);
    EXPECT_EQ(get_record_text(request.composition_string, request.composition_string_length),
              utf16_string(200, u'x'));

    // A host that stores a length beyond the buffer must not make the reader run past it.
    request.proxy_username_length = 100000;
    EXPECT_EQ(get_record_text(request.proxy_username, request.proxy_username_length).size(), 100U);
}
