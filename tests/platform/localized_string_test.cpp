#include "platform/localized_string.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using qiro_plugin::utf16_string;
using qiro_plugin::utility::localized_string;
using qiro_plugin::utility::set_localized_string_provider;

TEST(localized_string, follows_the_installed_provider_even_while_it_is_replaced) {
    set_localized_string_provider([](const std::string& a_key) {
        return a_key == "AlertEmptyHyoki" ? utf16_string(u"\u8868\u8A18") : utf16_string();
    });
    EXPECT_EQ(localized_string("AlertEmptyHyoki"), u"\u8868\u8A18");
    EXPECT_TRUE(localized_string("NoSuchKey").empty());

    // A provider may look texts up itself without deadlocking.
    set_localized_string_provider([](const std::string& a_key) {
        return a_key == "outer" ? u"x" + localized_string("inner") : utf16_string(u"y");
    });
    EXPECT_EQ(localized_string("outer"), u"xy");

    // A lookup racing a replacement sees the old provider's text or the new one's.
    std::atomic<bool> stop{false};
    std::atomic<int> bad{0};
    std::thread reader([&] {
        while (!stop) {
            const auto text = localized_string("key");
            bad += text != u"y" && text != u"one" && text != u"two";
        }
    });
    for (int i = 0; i < 2000; ++i) {
        const utf16_string text = i % 2 == 0 ? u"one" : u"two";
        set_localized_string_provider([text](const std::string&) { return text; });
    }
    stop = true;
    reader.join();
    EXPECT_EQ(bad.load(), 0);

    set_localized_string_provider(nullptr);
    EXPECT_TRUE(localized_string("outer").empty());
}

} // namespace
