#pragma once
// The session's last runs, and the difference between the candidates of two of them.

#include "core/plugin_discovery.hpp"
#include "core/run_report.hpp"

#include <chrono>
#include <cstddef>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace qiro_plugin::debugger {

// One run as the author started it, with everything it produced.
struct history_entry {
    plugin_entry plugin;
    utf16_string written_form;
    utf16_string reading;
    std::chrono::system_clock::time_point time;
    run_report report;
    std::string entry = "run"; // "run", "callback" or "preference"
    bool outputs_cut = false;  // the kept outputs were cut to output_limit
    bool stopped = false;      // Stop ended the run before its time-out
};

// A few words on how a run ended: "parsed", "not parsed", "not run", "failed", "refused".
std::string outcome_word(const run_report& a_report);

class run_history {
public:
    static constexpr std::size_t capacity = 20;
    // Each kept run holds at most this much of each output stream, so twenty runs of a
    // plug-in that prints megabytes do not hold gigabytes.
    static constexpr std::size_t output_limit = 1024 * 1024;

    // Adds the run as the newest; the oldest is dropped beyond the capacity.
    void add(history_entry a_entry);
    // Newest first.
    const std::deque<history_entry>& entries() const { return m_entries; }
    void clear() { m_entries.clear(); }

private:
    std::deque<history_entry> m_entries;
};

// How the candidates of a second run differ from those of a first, matched by title (the
// n-th candidate of a title with the n-th of the same title in the other run).
struct candidate_difference {
    std::vector<message_script::candidate> removed; // only in the first
    std::vector<message_script::candidate> added;   // only in the second
    // Same title, some other field differs: first, then second.
    std::vector<std::pair<message_script::candidate, message_script::candidate>> changed;
    bool order_changed = false; // the titles both hold are in another order

    bool empty() const { return removed.empty() && added.empty() && changed.empty(); }
};

candidate_difference compare_candidates(const std::vector<message_script::candidate>& a_first,
                                        const std::vector<message_script::candidate>& a_second);

} // namespace qiro_plugin::debugger
