#include "platform/framework/platform_shims.hpp"

#include <atomic>

namespace qiro_plugin::utility {

bool isLeopardOrUpper() {
    // Two first calls at once both compute the same answer, so nothing needs a lock.
    static std::atomic<bool> bFirst{true};
    static std::atomic<bool> bLeopardOrUpper{false};
    if (bFirst.load(std::memory_order_acquire)) {
        // Every system this program runs on is newer than Mac OS X 10.5, whose test this was.
        bLeopardOrUpper.store(true, std::memory_order_relaxed);
        bFirst.store(false, std::memory_order_release);
    }
    return bLeopardOrUpper.load(std::memory_order_relaxed);
}

bool is_enable_window_handle(window_handle) {
    return true;
}

void set_foreground_window(window_handle) {}

bool check_digital_signature(const utf16_string&) {
    return true;
}

} // namespace qiro_plugin::utility
