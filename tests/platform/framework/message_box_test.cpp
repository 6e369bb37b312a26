#include "platform/framework/message_box.hpp"
#include "platform/framework/platform_shims.hpp"

#include "platform/framework/event_loop.hpp"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QThread>
#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

using namespace std::chrono_literals;
using namespace qiro_plugin::utility;

namespace {

const qiro_plugin::utf16_string japanese_text = u"\u30D7\u30E9\u30B0\u30A4\u30F3 : [SCRIPT] x";

// Puts the default function back whatever a case installed.
class message_box_test : public ::testing::Test {
protected:
    void TearDown() override { set_message_box_function({}); }
};

struct seen_box {
    QString m_text;
    QString m_informative_text;
    bool m_modal = false;
    QStringList m_buttons;
};

} // namespace

TEST_F(message_box_test, an_installed_function_shows_the_text_on_the_main_thread) {
    std::vector<qiro_plugin::utf16_string> shown;
    std::vector<bool> on_main_thread;
    EXPECT_FALSE(set_message_box_function([&](const qiro_plugin::utf16_string& a_text) {
        shown.push_back(a_text);
        on_main_thread.push_back(QThread::currentThread() == qApp->thread());
    }));

    message_box(nullptr, japanese_text, u"caption", 0x40);
    std::atomic<bool> done{false};
    std::thread worker([&] {
        message_box(nullptr, u"from a worker", u"", 0);
        done = true;
    });
    ASSERT_TRUE(qiro_test::spin_until([&] { return done.load(); }, 20s));
    worker.join();

    EXPECT_THAT(shown, ::testing::ElementsAre(japanese_text, u"from a worker"));
    EXPECT_THAT(on_main_thread, ::testing::ElementsAre(true, true));

    // Installing another function hands back the one it replaces.
    auto previous = set_message_box_function([](const qiro_plugin::utf16_string&) {});
    ASSERT_TRUE(previous);
    previous(u"again");
    EXPECT_EQ(shown.size(), 3u);
}

TEST_F(message_box_test, the_default_is_a_modal_box_with_the_text_and_one_ok_button) {
    seen_box seen;
    bool found = false;
    // The box runs its own loop; this timer, running inside it, reads the box and closes it.
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [&] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* box = qobject_cast<QMessageBox*>(widget);
            if (box == nullptr || !box->isVisible()) {
                continue;
            }
            found = true;
            seen.m_text = box->text();
            seen.m_informative_text = box->informativeText();
            seen.m_modal = box->isModal();
            for (QAbstractButton* button : box->buttons()) {
                seen.m_buttons.push_back(button->text());
            }
            closer.stop();
            box->buttons().front()->click();
        }
    });
    closer.start(20);

    message_box(nullptr, japanese_text, u"ignored caption", 0);

    ASSERT_TRUE(found);
    EXPECT_EQ(seen.m_text.toStdU16String(), japanese_text);
    EXPECT_TRUE(seen.m_informative_text.isEmpty());
    EXPECT_TRUE(seen.m_modal);
    EXPECT_EQ(seen.m_buttons, QStringList{"OK"});
}

TEST(platform_shims, answer_as_every_supported_system_does) {
    EXPECT_TRUE(isLeopardOrUpper());
    EXPECT_TRUE(isLeopardOrUpper());
    EXPECT_TRUE(is_enable_window_handle(nullptr));
    EXPECT_TRUE(check_digital_signature(u"/no/such/plugin.py"));
    set_foreground_window(nullptr);
}
