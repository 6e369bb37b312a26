#pragma once
// The owner of a window's timers, which set_timer and kill_timer address.

#include <memory>

class QTimer;

namespace qiro_plugin {

class abstract_timer_owner {
public:
    virtual ~abstract_timer_owner() = default;

    // Keeps a_timer, already running on the main thread, under a_identifier until
    // delete_timer; destroying the timer cancels it. Called on the main thread.
    virtual void add_timer(int a_identifier, std::unique_ptr<QTimer> a_timer) = 0;
    // Cancels and forgets the timer kept under a_identifier, if any. Called on the main thread.
    virtual void delete_timer(int a_identifier) = 0;
    // Called on the main thread when the timer of a_identifier fires (once per set_timer).
    virtual void timer_timeout(int a_identifier) = 0;
};

} // namespace qiro_plugin
