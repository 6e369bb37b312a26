#pragma once
// A scratch home, file modes and a view of this process's children for the tests.

#include "support/scratch_folder.hpp"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace platform_test {

using test_support::mode_of;
using test_support::read_file;
using test_support::scratch_folder;
using test_support::write_file;

// HOME pointed at a fresh scratch folder for the lifetime of the object, then restored.
class scratch_home : public scratch_folder {
public:
    scratch_home() {
        if (const char* previous = std::getenv("HOME")) {
            m_previous = previous;
        }
        ::setenv("HOME", path().c_str(), 1);
    }
    ~scratch_home() { m_previous ? ::setenv("HOME", m_previous->c_str(), 1) : ::unsetenv("HOME"); }

private:
    std::optional<std::string> m_previous;
};

// How many of this process's children (a_group 0, zombies included) or living members of
// a_group exist: a dead member orphaned by its shell waits as a zombie for init, which some
// containers' init never reaps, yet it is gone all the same.
inline std::size_t count_processes(pid_t a_group = 0) {
    std::size_t count = 0;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
        if (entry.path().filename().string().find_first_not_of("0123456789") != std::string::npos) {
            continue;
        }
        const std::string stat = read_file(entry.path() / "stat");
        // The command name may hold blanks and parentheses; the fields follow the last ")".
        // A process gone meanwhile leaves an empty text, and npos + 1 is 0.
        std::istringstream fields(stat.substr(stat.rfind(')') + 1));
        char state = '?';
        pid_t parent = 0;
        pid_t group = 0;
        fields >> state >> parent >> group;
        count += fields && (a_group == 0 ? parent == ::getpid()
                                         : group == a_group && state != 'Z' && state != 'X');
    }
    return count;
}

// The count_processes(a_group) still there after waiting up to 5 s for them to go.
inline std::size_t processes_left(pid_t a_group = 0) {
    for (int i = 0; i < 250 && count_processes(a_group) > 0; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return count_processes(a_group);
}

// Waits until a_condition holds; false if it still does not after a minute, which only bounds a
// test that would otherwise hang.
template <typename condition> bool eventually(condition a_condition) {
    const auto give_up = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!a_condition()) {
        if (std::chrono::steady_clock::now() > give_up) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return true;
}

} // namespace platform_test
