#include "core/request_filling.hpp"

#include <gtest/gtest.h>

#include <cstring>

namespace qiro_plugin::debugger {
namespace {

TEST(request_filling, marks_three_fields_and_leaves_every_other_byte_zero) {
    qiro_plugin_request request;
    std::memset(&request, 0xAB, sizeof request); // what was there before must not survive
    fill_processing_request(request, u"変換", u"へんかん", manager_preference_data{});

    qiro_plugin_request expected{};
    set_record_text(expected.composition_string, expected.composition_string_length, u"変換");
    set_record_text(expected.reading_string, expected.reading_string_length, u"へんかん");
    expected.processing_type = 1;
    expected.is_auto_search = 1;
    expected.record_version = 1;
    EXPECT_EQ(std::memcmp(&request, &expected, sizeof request), 0);
}

// Each proxy value goes to the plug-in whole or not at all; the callback record gets the same.
TEST(request_filling, proxy_values_follow_the_switches_and_the_limits) {
    struct proxy_case {
        int proxy, authentication;
        std::size_t address, username, password; // lengths in the settings
        bool address_sent, port_sent, username_sent, password_sent;
    };
    for (const auto& c : {proxy_case{1, 1, 512, 100, 100, true, true, true, true},
                          proxy_case{1, 1, 513, 101, 100, false, true, false, true},
                          proxy_case{1, 1, 512, 100, 101, true, true, true, false},
                          proxy_case{0, 1, 10, 10, 10, false, false, false, false},
                          proxy_case{1, 0, 10, 10, 10, true, true, false, false}}) {
        SCOPED_TRACE(testing::Message() << c.proxy << c.authentication << " " << c.address << "/"
                                        << c.username << "/" << c.password);
        manager_preference_data settings;
        settings.enable_proxy = c.proxy;
        settings.enable_authentication = c.authentication;
        settings.proxy_address.assign(c.address, u'あ');
        settings.proxy_port = 8080;
        settings.proxy_username.assign(c.username, u'u');
        settings.proxy_password.assign(c.password, u'p');
        qiro_plugin_request request;
        std::memset(&request, 0xAB, sizeof request);
        fill_processing_request(request, u"a", u"", settings);
        qiro_plugin_callback callback;
        std::memset(&callback, 0xCD, sizeof callback);
        fill_callback_request(callback, u"候補", u"こうほ", settings);

        const auto check = [&](const auto& a_record) {
            EXPECT_EQ(get_record_text(a_record.proxy_address, a_record.proxy_address_length),
                      c.address_sent ? settings.proxy_address : u"");
            EXPECT_EQ(a_record.proxy_address[0] == 0, !c.address_sent);
            EXPECT_EQ(a_record.proxy_port, c.port_sent ? 8080U : 0U);
            EXPECT_EQ(get_record_text(a_record.proxy_username, a_record.proxy_username_length),
                      c.username_sent ? settings.proxy_username : u"");
            EXPECT_EQ(get_record_text(a_record.proxy_password, a_record.proxy_password_length),
                      c.password_sent ? settings.proxy_password : u"");
        };
        check(request);
        check(callback);
    }
}

} // namespace
} // namespace qiro_plugin::debugger
