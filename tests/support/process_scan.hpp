#pragma once
// Finds running processes by what their command lines hold, to see that none was left behind.

#include "support/scratch_folder.hpp"

#include <cctype>
#include <string>

namespace test_support {

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
