#include "debugger/core/request_filling.hpp"

#include <gtest/gtest.h>

#include <cstring>

namespace qiro_plugin::debugger {
namespace {

manager_preference_data proxy_settings() {
    manager_preference_data settings;
    settings.enable_proxy = 1;
    settings.proxy_address = u"proxy.example.jp";
    settings.proxy_port = 8080;
    settings.enable_authentication = 1;
    settings.proxy_username = u"太郎";
    settings.proxy_password = u"secret";
    return settings;
}

TEST(request_filling, marks_three_fields_and_leaves_every_other_byte_zero) {
    qiro_plugin_request request;
    std::memset(&request, 0xAB, sizeof request); // what was there before must not survive
    fill_processing_request(request, u"変換", u"へんかん", manager_preference_data{});

    EXPECT_EQ(get_record_text(request.composition_string, request.composition_string_length),
              u"変換");
    EXPECT_EQ(get_record_text(request.reading_string, request.reading_string_length), u"へんかん");
    EXPECT_EQ(request.processing_type, 1U);
    EXPECT_EQ(request.is_auto_search, 1U);
    EXPECT_EQ(request.record_version, 1U);

    qiro_plugin_request expected{};
    set_record_text(expected.composition_string, expected.composition_string_length, u"変換");
    set_record_text(expected.reading_string, expected.reading_string_length, u"へんかん");
    expected.processing_type = 1;
    expected.is_auto_search = 1;
    expected.record_version = 1;
    EXPECT_EQ(std::memcmp(&request, &expected, sizeof request), 0);
}

TEST(request_filling, proxy_values_follow_the_settings) {
    qiro_plugin_request request{};
    fill_processing_request(request, u"a", u"", proxy_settings());
    EXPECT_EQ(get_record_text(request.proxy_address, request.proxy_address_length),
              u"proxy.example.jp");
    EXPECT_EQ(request.proxy_port, 8080U);
    EXPECT_EQ(get_record_text(request.proxy_username, request.proxy_username_length), u"太郎");
    EXPECT_EQ(get_record_text(request.proxy_password, request.proxy_password_length), u"secret");

    // Proxy use off: nothing, whatever the other settings say.
    auto off = proxy_settings();
    off.enable_proxy = 0;
    fill_processing_request(request, u"a", u"", off);
    EXPECT_EQ(request.proxy_address_length, 0U);
    EXPECT_EQ(request.proxy_port, 0U);
    EXPECT_EQ(request.proxy_username_length, 0U);
    EXPECT_EQ(request.proxy_password_length, 0U);
    EXPECT_EQ(request.proxy_address[0], 0);

    // Authentication off: address and port only.
    auto no_authentication = proxy_settings();
    no_authentication.enable_authentication = 0;
    fill_processing_request(request, u"a", u"", no_authentication);
    EXPECT_EQ(request.proxy_address_length, 16U);
    EXPECT_EQ(request.proxy_port, 8080U);
    EXPECT_EQ(request.proxy_username_length, 0U);
    EXPECT_EQ(request.proxy_password_length, 0U);
}

TEST(request_filling, too_long_proxy_values_are_left_empty_not_cut) {
    auto settings = proxy_settings();
    settings.proxy_address.assign(513, u'a');
    settings.proxy_username.assign(101, u'u');
    settings.proxy_password.assign(100, u'p');
    qiro_plugin_request request{};
    fill_processing_request(request, u"a", u"", settings);
    EXPECT_EQ(request.proxy_address_length, 0U);
    EXPECT_EQ(request.proxy_address[0], 0);
    EXPECT_EQ(request.proxy_port, 8080U) << "the port is filled in all the same";
    EXPECT_EQ(request.proxy_username_length, 0U);
    EXPECT_EQ(request.proxy_password_length, 100U) << "each value is judged on its own";

    settings.proxy_address.assign(512, u'a');
    settings.proxy_password.assign(101, u'p');
    settings.proxy_username.assign(100, u'u');
    fill_processing_request(request, u"a", u"", settings);
    EXPECT_EQ(request.proxy_address_length, 512U);
    EXPECT_EQ(request.proxy_username_length, 100U);
    EXPECT_EQ(request.proxy_password_length, 0U);
}

TEST(request_filling, callback_record_carries_candidate_form_and_proxy) {
    qiro_plugin_callback callback;
    std::memset(&callback, 0xCD, sizeof callback);
    auto settings = proxy_settings();
    settings.proxy_address.assign(513, u'a');
    fill_callback_request(callback, u"候補", u"こうほ", settings);
    EXPECT_EQ(get_record_text(callback.candidate_string, callback.candidate_string_length),
              u"候補");
    EXPECT_EQ(get_record_text(callback.composition_string, callback.composition_string_length),
              u"こうほ");
    EXPECT_EQ(callback.plugin_index, 0U);
    EXPECT_EQ(callback.candidate_index, 0U);
    EXPECT_EQ(callback.proxy_address_length, 0U);
    EXPECT_EQ(callback.proxy_port, 8080U);
    EXPECT_EQ(get_record_text(callback.proxy_password, callback.proxy_password_length), u"secret");
}

} // namespace
} // namespace qiro_plugin::debugger
