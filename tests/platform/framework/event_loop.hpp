#pragma once
// Turning the test's event loop until something happens.

#include <QCoreApplication>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

namespace qiro_test {

// Processes events until a_done answers true or a_limit has passed; returns a_done().
inline bool spin_until(const std::function<bool()>& a_done, std::chrono::milliseconds a_limit) {
    // A ticking timer keeps the blocking wait below from sleeping past the deadline.
    QTimer tick;
    tick.start(10);
    const auto deadline = std::chrono::steady_clock::now() + a_limit;
    while (!a_done() && std::chrono::steady_clock::now() < deadline) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return a_done();
}

inline void spin_for(std::chrono::milliseconds a_duration) {
    spin_until([] { return false; }, a_duration);
}

// Runs a_work on a thread of its own while this thread turns its event loop, as work that hops
// to the main thread needs; returns whether it finished within a_limit.
inline bool run_on_worker(const std::function<void()>& a_work,
                          std::chrono::milliseconds a_limit = std::chrono::seconds(20)) {
    std::atomic<bool> done{false};
    std::thread worker([&] {
        a_work();
        done = true;
    });
    const bool finished = spin_until([&] { return done.load(); }, a_limit);
    worker.join();
    return finished;
}

} // namespace qiro_test
