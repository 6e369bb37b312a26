#include "platform/framework/timer.hpp"

#include "platform/framework/event_loop.hpp"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

using namespace std::chrono_literals;
using namespace qiro_plugin::utility;

namespace {

bool on_main_thread() {
    return QThread::currentThread() == QCoreApplication::instance()->thread();
}

// Keeps its timers by identifier, as a window would, and notes where each call ran.
class recording_owner : public qiro_plugin::abstract_timer_owner {
public:
    void add_timer(int a_identifier, std::unique_ptr<QTimer> a_timer) override {
        note_thread();
        EXPECT_TRUE(a_timer->isActive());
        EXPECT_TRUE(a_timer->isSingleShot());
        m_timers[a_identifier] = std::move(a_timer);
    }
    void delete_timer(int a_identifier) override {
        note_thread();
        m_timers.erase(a_identifier);
    }
    void timer_timeout(int a_identifier) override {
        note_thread();
        std::lock_guard lock(m_mutex);
        m_fired.push_back(a_identifier);
    }

    std::vector<int> fired() {
        std::lock_guard lock(m_mutex);
        return m_fired;
    }
    std::size_t timer_count() const { return m_timers.size(); }
    bool all_calls_on_main_thread() const { return !m_off_main_thread; }

private:
    void note_thread() {
        if (!on_main_thread()) {
            m_off_main_thread = true;
        }
    }

    std::map<int, std::unique_ptr<QTimer>> m_timers;
    std::mutex m_mutex;
    std::vector<int> m_fired;
    std::atomic<bool> m_off_main_thread{false};
};

// Runs a_work on a thread of its own while the main thread keeps its event loop turning,
// which the hop to the main thread needs.
template <typename t_work> void run_on_worker(t_work a_work) {
    std::atomic<bool> done{false};
    std::thread worker([&] {
        a_work();
        done = true;
    });
    const bool finished = qiro_test::spin_until([&] { return done.load(); }, 20s);
    worker.join();
    ASSERT_TRUE(finished);
}

} // namespace

TEST(timer, fires_once_with_its_identifier_from_any_thread) {
    recording_owner owner;
    EXPECT_EQ(set_timer(&owner, 7, 1500), 1);
    EXPECT_EQ(owner.timer_count(), 1u);
    int worker_result = 0;
    run_on_worker([&] { worker_result = set_timer(&owner, 8, 1500); });
    EXPECT_EQ(worker_result, 1);
    // The worker returned only after the owner had its timer.
    EXPECT_EQ(owner.timer_count(), 2u);
    EXPECT_TRUE(owner.fired().empty());

    ASSERT_TRUE(qiro_test::spin_until([&] { return owner.fired().size() >= 2; }, 20s));
    qiro_test::spin_for(1600ms);
    EXPECT_THAT(owner.fired(), ::testing::UnorderedElementsAre(7, 8));
    EXPECT_TRUE(owner.all_calls_on_main_thread());
}

TEST(timer, killed_timer_never_fires) {
    recording_owner owner;
    ASSERT_EQ(set_timer(&owner, 1, 300), 1);
    ASSERT_EQ(set_timer(&owner, 2, 300), 1);
    ASSERT_EQ(set_timer(&owner, 3, 300), 1);
    EXPECT_EQ(kill_timer(&owner, 1), 1);
    int worker_result = 0;
    run_on_worker([&] { worker_result = kill_timer(&owner, 2); });
    EXPECT_EQ(worker_result, 1);
    EXPECT_EQ(owner.timer_count(), 1u);

    ASSERT_TRUE(qiro_test::spin_until([&] { return !owner.fired().empty(); }, 20s));
    qiro_test::spin_for(1000ms);
    EXPECT_THAT(owner.fired(), ::testing::ElementsAre(3));
    EXPECT_TRUE(owner.all_calls_on_main_thread());
}

TEST(timer_death, null_handle_is_a_failed_assertion) {
    EXPECT_DEATH(set_timer(nullptr, 1, 10), "timer\\.cpp:[0-9]+: failed assertion `a_handle'\n");
    EXPECT_DEATH(kill_timer(nullptr, 1), "timer\\.cpp:[0-9]+: failed assertion `a_handle'\n");
}
