#pragma once
// Finds running processes by what their command lines hold, to see that none was left behind,
// and waits for processes to end.

#include "support/scratch_folder.hpp"

#include <cctype>
#include <chrono>
#include <functional>
#include <string>
#include <thread>

namespace test_support {

// Whether the process is gone, or only a zombie waiting for a reaper.
inline bool is_ended(const std::string& a_pid) {
    const std::string stat = read_file("/proc/" + a_pid + "/stat");
    return stat.empty() || stat.find(") Z") != std::string::npos;
}

// Waits up to a_limit for a_done to hold; whether it does.
inline bool wait_for(const std::function<bool()>& a_done, std::chrono::milliseconds a_limit) {
    for (auto deadline = std::chrono::steady_clock::now() + a_limit;
         !a_done() && std::chrono::steady_clock::now() < deadline;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return a_done();
}

// How many live processes (zombies aside) hold a_marker in their command line, or in another
// file of theirs under /proc such as "environ".
inline int processes_mentioning(const std::string& a_marker, const char* a_where = "cmdline") {
    int found = 0;
    std::error_code error;
    // Processes come and go while the folder is read: step on without throwing.
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        if (!std::isdigit(static_cast<unsigned char>(entry->path().filename().string()[0]))) {
            continue; // /proc/sys and the like, folders that cannot be read as files
        }
        const std::string stat = read_file(entry->path() / "stat");
        const auto state = stat.rfind(") ");
        found += state != std::string::npos && stat[state + 2] != 'Z' &&
                 read_file(entry->path() / a_where).find(a_marker) != std::string::npos;
    }
    return found;
}

} // namespace test_support
