#include "platform/framework/timer.hpp"

#include "platform/framework/event_loop.hpp"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <string>
#include <vector>

using namespace std::chrono_literals;
using namespace qiro_plugin::utility;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;

namespace {

// Keeps its timers by identifier, as a window would, and notes whether any call ran off the
// main thread.
class recording_owner : public qiro_plugin::abstract_timer_owner {
public:
    void add_timer(int a_identifier, std::unique_ptr<QTimer> a_timer) override {
        m_timers[a_identifier] = std::move(a_timer);
        note("add");
    }
    void delete_timer(int a_identifier) override {
        m_timers.erase(a_identifier);
        note("delete");
    }
    void timer_timeout(int a_identifier) override { note(std::to_string(a_identifier)); }

    std::map<int, std::unique_ptr<QTimer>> m_timers;
    // What each call was, or "off main thread"; only the main thread should ever write here.
    std::vector<std::string> m_calls;

private:
    void note(const std::string& a_call) {
        const bool main = QThread::currentThread() == QCoreApplication::instance()->thread();
        m_calls.push_back(main ? a_call : "off main thread");
    }
};

} // namespace

TEST(timer, fires_once_with_its_identifier_unless_killed_from_any_thread) {
    // A null handle is a failed assertion.
    EXPECT_DEATH(set_timer(nullptr, 1, 10), "timer\\.cpp:[0-9]+: failed assertion `a_handle'\n");
    EXPECT_DEATH(kill_timer(nullptr, 1), "timer\\.cpp:[0-9]+: failed assertion `a_handle'\n");
    recording_owner owner;
    for (int identifier : {7, 1, 2}) {
        EXPECT_EQ(set_timer(&owner, identifier, 1500), 1);
    }
    EXPECT_EQ(kill_timer(&owner, 1), 1);
    int worker_result = 0;
    ASSERT_TRUE(qiro_test::run_on_worker(
        [&] { worker_result = set_timer(&owner, 8, 1500) + kill_timer(&owner, 2); }));
    EXPECT_EQ(worker_result, 2);
    // Each call returned only after the owner had acted on it.
    EXPECT_THAT(owner.m_calls, ElementsAre("add", "add", "add", "delete", "add", "delete"));

    ASSERT_TRUE(qiro_test::spin_until([&] { return owner.m_calls.size() >= 8; }, 20s));
    // Long enough for a repeat of either, or a killed timer, to show.
    qiro_test::spin_for(1600ms);
    EXPECT_THAT(std::vector(owner.m_calls.begin() + 6, owner.m_calls.end()),
                UnorderedElementsAre("7", "8"));
}
