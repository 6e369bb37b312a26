#pragma once
// Noticing that a plug-in or its companion document changed, and when to run it again.

#include "core/plugin_discovery.hpp"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <vector>

namespace qiro_plugin::debugger {

// The plug-in's file and its companion preference document (same name, ".xml").
std::vector<std::filesystem::path> watched_files(const plugin_entry& a_plugin);

// What the file system says of some files: size, modification time and whether they exist.
// Two snapshots differ when any file appeared, went, or was written.
class file_snapshot {
public:
    static file_snapshot take(const std::vector<std::filesystem::path>& a_files);
    bool operator==(const file_snapshot&) const = default;

private:
    struct state {
        bool exists = false;
        std::uintmax_t size = 0;
        std::int64_t modified_ns = 0;
        std::uint64_t inode = 0;
        bool operator==(const state&) const = default;
    };
    std::vector<state> m_states;
};

// Editors save in bursts (a temporary file, a rename, a second write), so a re-run waits until
// the files have been quiet for a while; and a change seen during a run waits for its end.
class change_debouncer {
public:
    using clock = std::chrono::steady_clock;

    explicit change_debouncer(std::chrono::milliseconds a_quiet = std::chrono::milliseconds(300))
        : m_quiet(a_quiet) {}

    void note_change(clock::time_point a_now);
    // True once per burst of changes, when they have been quiet long enough and no run is
    // going; the burst is then forgotten.
    bool take_due(clock::time_point a_now, bool a_running);
    bool is_pending() const { return m_last_change.has_value(); }
    std::chrono::milliseconds quiet() const { return m_quiet; }

private:
    std::chrono::milliseconds m_quiet;
    std::optional<clock::time_point> m_last_change;
};

} // namespace qiro_plugin::debugger
