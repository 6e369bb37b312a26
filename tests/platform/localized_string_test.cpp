#include "platform/localized_string.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

using qiro_plugin::utf16_string;
using qiro_plugin::utility::localized_string;
using qiro_plugin::utility::set_localized_string_provider;

TEST(localized_string, follows_the_installed_provider) {
    set_localized_string_provider(nullptr);
    EXPECT_TRUE(localized_string("AlertEmptyHyoki").empty());

    set_localized_string_provider([](const std::string& a_key) {
        return a_key == "AlertEmptyHyoki" ? utf16_string(u"\u8868\u8A18") : utf16_string();
    });
    EXPECT_EQ(localized_string("AlertEmptyHyoki"), u"\u8868\u8A18");
    EXPECT_TRUE(localized_string("NoSuchKey").empty());

    // A provider may look texts up itself without deadlocking.
    set_localized_string_provider([](const std::string& a_key) {
        return a_key == "outer" ? utf16_string(u"x") + localized_string("inner")
                                : utf16_string(u"y");
    });
    EXPECT_EQ(localized_string("outer"), u"xy");

    set_localized_string_provider(nullptr);
    EXPECT_TRUE(localized_string("outer").empty());
}

TEST(localized_string, replacing_the_provider_while_others_look_up_is_safe) {
    std::atomic<bool> stop{false};
    std::atomic<int> bad{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i) {
        readers.emplace_back([&] {
            while (!stop) {
                const auto text = localized_string("key");
                if (!text.empty() && text != u"one" && text != u"two") {
                    ++bad;
                }
            }
        });
    }
    for (int i = 0; i < 2000; ++i) {
        const utf16_string text = i % 2 == 0 ? u"one" : u"two";
        set_localized_string_provider([text](const std::string&) { return text; });
    }
    stop = true;
    for (auto& reader : readers) {
        reader.join();
    }
    set_localized_string_provider(nullptr);
    EXPECT_EQ(bad.load(), 0);
}

} // namespace
