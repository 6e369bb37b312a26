#pragma once
// Finds running processes by what their command lines hold, to see that none was left behind.

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace test_support {

// How many live processes (zombies aside) hold a_marker in their command line.
inline int processes_mentioning(const std::string& a_marker) {
    int found = 0;
    std::error_code error;
    // Processes come and go while the folder is read: step on without throwing.
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().filename().string().find_first_not_of("0123456789") !=
            std::string::npos) {
            continue;
        }
        std::ifstream command_file(entry->path() / "cmdline", std::ios::binary);
        const std::string command{std::istreambuf_iterator<char>(command_file), {}};
        std::ifstream stat_file(entry->path() / "stat");
        const std::string stat{std::istreambuf_iterator<char>(stat_file), {}};
        const auto state = stat.rfind(") ");
        const bool zombie = state != std::string::npos && stat.compare(state + 2, 1, "Z") == 0;
        found += !zombie && command.find(a_marker) != std::string::npos ? 1 : 0;
    }
    return found;
}

} // namespace test_support
