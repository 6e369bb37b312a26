#include "core/run_history.hpp"

#include <map>

namespace qiro_plugin::debugger {

namespace {

bool same_candidate(const message_script::candidate& a_first,
                    const message_script::candidate& a_second) {
    return a_first.title == a_second.title && a_first.comment == a_second.comment &&
           a_first.alternative == a_second.alternative &&
           a_first.alternative_alias == a_second.alternative_alias &&
           a_first.alternative_type == a_second.alternative_type && a_first.info == a_second.info;
}

// Cuts at a character boundary, so the kept text stays valid UTF-8.
bool cut_utf8(std::string& a_text, std::size_t a_limit) {
    if (a_text.size() <= a_limit) {
        return false;
    }
    std::size_t end = a_limit;
    while (end > 0 && (static_cast<unsigned char>(a_text[end]) & 0xC0) == 0x80) {
        --end;
    }
    a_text.resize(end);
    return true;
}

} // namespace

std::string outcome_word(const run_report& a_report) {
    switch (a_report.result) {
    case run_report::outcome::completed:
        return a_report.document_parsed ? "parsed" : "not parsed";
    case run_report::outcome::not_run:
        return "not run";
    case run_report::outcome::failed:
        return "failed";
    case run_report::outcome::entry_not_enabled:
    case run_report::outcome::refused:
        break;
    }
    return "refused";
}

void run_history::add(history_entry a_entry) {
    const bool output_cut = cut_utf8(a_entry.report.run_std_output, output_limit);
    const bool error_cut = cut_utf8(a_entry.report.run_std_error, output_limit);
    a_entry.outputs_cut = output_cut || error_cut;
    m_entries.push_front(std::move(a_entry));
    while (m_entries.size() > capacity) {
        m_entries.pop_back();
    }
}

candidate_difference compare_candidates(const std::vector<message_script::candidate>& a_first,
                                        const std::vector<message_script::candidate>& a_second) {
    candidate_difference difference;
    // Positions in the second run of each title, consumed in order by the first run's.
    std::map<utf16_string, std::deque<std::size_t>> positions;
    for (std::size_t index = 0; index < a_second.size(); ++index) {
        positions[a_second[index].title].push_back(index);
    }
    std::vector<bool> matched(a_second.size(), false);
    std::vector<std::size_t> matched_order;
    for (const auto& candidate : a_first) {
        auto& queue = positions[candidate.title];
        if (queue.empty()) {
            difference.removed.push_back(candidate);
            continue;
        }
        const std::size_t index = queue.front();
        queue.pop_front();
        matched[index] = true;
        matched_order.push_back(index);
        if (!same_candidate(candidate, a_second[index])) {
            difference.changed.emplace_back(candidate, a_second[index]);
        }
    }
    for (std::size_t index = 0; index < a_second.size(); ++index) {
        if (!matched[index]) {
            difference.added.push_back(a_second[index]);
        }
    }
    for (std::size_t index = 1; index < matched_order.size(); ++index) {
        if (matched_order[index] < matched_order[index - 1]) {
            difference.order_changed = true;
        }
    }
    return difference;
}

} // namespace qiro_plugin::debugger
