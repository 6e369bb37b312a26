#include "platform/running_commands.hpp"

#include "platform/command_runner.hpp"

#include <array>
#include <atomic>
#include <csignal>
#include <mutex>

namespace qiro_plugin::utility {

namespace detail {

namespace {

// A fixed table of lock-free slots: a signal handler may read it at any moment.
std::array<std::atomic<pid_t>, 64> g_running_groups{};
std::atomic<std::uint64_t> g_stop_count{0};
// Held by a stop while it counts and kills, and by a command while it starts, records its group
// and reads the count.
std::mutex g_stop_mutex;

} // namespace

bool add_running_group(pid_t a_group) noexcept {
    for (auto& slot : g_running_groups) {
        pid_t empty = 0;
        if (slot.compare_exchange_strong(empty, a_group)) {
            return true;
        }
    }
    return false;
}

void remove_running_group(pid_t a_group) noexcept {
    for (auto& slot : g_running_groups) {
        pid_t expected = a_group;
        if (slot.compare_exchange_strong(expected, 0)) {
            return;
        }
    }
}

void kill_running_groups() noexcept {
    for (auto& slot : g_running_groups) {
        const pid_t group = slot.load();
        if (group > 0) {
            ::kill(-group, SIGKILL);
        }
    }
}

std::unique_lock<std::mutex> hold_stops() {
    return std::unique_lock(g_stop_mutex);
}

std::uint64_t stop_count() noexcept {
    return g_stop_count.load();
}

} // namespace detail

void kill_running_commands() noexcept {
    detail::kill_running_groups();
}

void stop_running_commands() noexcept {
    // Counted before the kill, so that a command woken by the kill already sees the stop; both
    // under the lock, so that a command starting meanwhile is either killed and sees the count
    // change, or starts after both.
    const std::lock_guard lock(detail::g_stop_mutex);
    detail::g_stop_count.fetch_add(1);
    detail::kill_running_groups();
}

} // namespace qiro_plugin::utility
