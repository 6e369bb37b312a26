#include "platform/framework/message_box.hpp"

#include "platform/framework/event_loop.hpp"

#include <QCoreApplication>
#include <QThread>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

using namespace qiro_plugin::utility;

TEST(message_box, an_installed_function_shows_the_text_on_the_main_thread) {
    const qiro_plugin::utf16_string text = u"\u30D7\u30E9\u30B0\u30A4\u30F3 : [SCRIPT] x";
    std::vector<qiro_plugin::utf16_string> shown;
    EXPECT_FALSE(set_message_box_function([&](const qiro_plugin::utf16_string& a_text) {
        const bool main = QThread::currentThread() == QCoreApplication::instance()->thread();
        shown.push_back(main ? a_text : u"off main thread");
    }));

    message_box(nullptr, text, u"caption", 0x40);
    ASSERT_TRUE(qiro_test::run_on_worker([] { message_box(nullptr, u"from a worker", u"", 0); }));
    EXPECT_THAT(shown, ::testing::ElementsAre(text, u"from a worker"));

    // Installing another function, here the default, hands back the one it replaces.
    auto previous = set_message_box_function({});
    ASSERT_TRUE(previous);
    previous(u"again");
    EXPECT_EQ(shown.size(), 3u);
}
