#include "platform/running_commands.hpp"

#include "platform/command_runner.hpp"

#include <array>
#include <atomic>
#include <csignal>
#include <mutex>

namespace qiro_plugin::utility {

namespace detail {

namespace {

// A fixed table of lock-free slots: a signal handler may read it at any moment. Each holds a
// group and, in the upper half, the scope of the thread that started it.
std::array<std::atomic<std::uint64_t>, 64> g_running_groups{};
thread_local std::uint32_t g_thread_scope = 0;
std::atomic<std::uint32_t> g_last_scope{0};

pid_t group_of(std::uint64_t a_slot) {
    return static_cast<pid_t>(a_slot & 0xffffffffU);
}

// Kills the groups of a_scope, or all of them when a_scope is 0.
void kill_groups(std::uint32_t a_scope) noexcept {
    for (auto& slot : g_running_groups) {
        const std::uint64_t entry = slot.load();
        if (group_of(entry) > 0 && (a_scope == 0 || entry >> 32 == a_scope)) {
            ::kill(-group_of(entry), SIGKILL);
        }
    }
}
std::atomic<std::uint64_t> g_stop_count{0};
// Held by a stop while it counts and kills, and by a command while it starts, records its group
// and reads the count.
std::mutex g_stop_mutex;

} // namespace

bool add_running_group(pid_t a_group) noexcept {
    const std::uint64_t entry =
        std::uint64_t{g_thread_scope} << 32 | static_cast<std::uint32_t>(a_group);
    for (auto& slot : g_running_groups) {
        std::uint64_t empty = 0;
        if (slot.compare_exchange_strong(empty, entry)) {
            return true;
        }
    }
    return false;
}

void remove_running_group(pid_t a_group) noexcept {
    for (auto& slot : g_running_groups) {
        std::uint64_t entry = slot.load();
        if (group_of(entry) == a_group && slot.compare_exchange_strong(entry, 0)) {
            return;
        }
    }
}

void kill_running_groups() noexcept {
    kill_groups(0);
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

std::uint32_t new_command_scope() noexcept {
    return detail::g_last_scope.fetch_add(1) + 1;
}

command_scope_guard::command_scope_guard(std::uint32_t a_scope) noexcept
    : m_outer(detail::g_thread_scope) {
    detail::g_thread_scope = a_scope;
}

command_scope_guard::~command_scope_guard() {
    detail::g_thread_scope = m_outer;
}

void kill_commands_in(std::uint32_t a_scope) noexcept {
    if (a_scope != 0) {
        detail::kill_groups(a_scope);
    }
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
