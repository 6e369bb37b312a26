#include "core/change_watch.hpp"

#include "text/string_encode.hpp"

#include <sys/stat.h>

namespace qiro_plugin::debugger {

std::vector<std::filesystem::path> watched_files(const plugin_entry& a_plugin) {
    const std::filesystem::path file(
        string_encode::WideCharToMultiByteFilePath((a_plugin.first + a_plugin.second).c_str()));
    std::filesystem::path document = file;
    document.replace_extension(".xml");
    return {file, document};
}

file_snapshot file_snapshot::take(const std::vector<std::filesystem::path>& a_files) {
    file_snapshot snapshot;
    for (const auto& file : a_files) {
        state current;
        struct stat status {};
        if (::stat(file.c_str(), &status) == 0) {
            current.exists = true;
            current.size = static_cast<std::uintmax_t>(status.st_size);
            current.modified_ns = static_cast<std::int64_t>(status.st_mtim.tv_sec) * 1000000000 +
                                  status.st_mtim.tv_nsec;
            current.inode = static_cast<std::uint64_t>(status.st_ino);
        }
        snapshot.m_states.push_back(current);
    }
    return snapshot;
}

void change_debouncer::note_change(clock::time_point a_now) {
    m_last_change = a_now;
}

bool change_debouncer::take_due(clock::time_point a_now, bool a_running) {
    if (!m_last_change || a_running || a_now - *m_last_change < m_quiet) {
        return false;
    }
    m_last_change.reset();
    return true;
}

} // namespace qiro_plugin::debugger
