#include "platform/running_commands.hpp"

#include "platform/command_runner.hpp"

#include <array>
#include <atomic>
#include <csignal>

namespace qiro_plugin::utility {

namespace detail {

namespace {

// A fixed table of lock-free slots: a signal handler may read it at any moment.
std::array<std::atomic<pid_t>, 64> g_running_groups{};
std::atomic<std::uint64_t> g_stop_count{0};

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

std::uint64_t stop_count() noexcept {
    return g_stop_count.load();
}

} // namespace detail

void kill_running_commands() noexcept {
    detail::kill_running_groups();
}

void stop_running_commands() noexcept {
    // Counted before the kill, so that a command woken by the kill already sees the stop.
    detail::g_stop_count.fetch_add(1);
    detail::kill_running_groups();
}

} // namespace qiro_plugin::utility
