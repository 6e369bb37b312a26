#pragma once
// A wall-clock time-out measured in milliseconds, and a plain blocking sleep.

#include <memory>

namespace qiro_plugin::utility {

class timeout_timer {
public:
    explicit timeout_timer(int a_timeout_milliseconds);
    ~timeout_timer();
    timeout_timer(const timeout_timer&) = delete;
    timeout_timer& operator=(const timeout_timer&) = delete;

    void reset();
    // Milliseconds left; 0 once the time-out has passed or when the clock went back.
    int get_wait_time() const;
    // True from the moment the elapsed time reaches the time-out; never throws.
    bool is_timeout() const;

private:
    struct impl;
    std::unique_ptr<impl> p_impl;
};

// Blocks the calling thread for the given number of milliseconds.
void sleep(int a_milliseconds);

} // namespace qiro_plugin::utility
