#pragma once
// Sinks that record every call in order, so tests can compare what a window would have seen.

#include "debugger/core/run_sinks.hpp"

#include <string>
#include <vector>

namespace qiro_plugin::debugger::testing {

class recording_sinks : public run_output_sink, public alert_sink {
public:
    void add_std_output_text(const utf16_string& a_text) override { record("out:", a_text); }
    void add_std_error_output_text(const utf16_string& a_text) override { record("err:", a_text); }
    void clear_std_output_text() override { events.emplace_back("clear out"); }
    void clear_std_error_output_text() override { events.emplace_back("clear err"); }
    void start_progress() override { events.emplace_back("start"); }
    void stop_progress() override { events.emplace_back("stop"); }
    void show_alert(const std::string& a_key) override { events.push_back("alert:" + a_key); }

    std::vector<std::string> events;

private:
    void record(const char* a_prefix, const utf16_string& a_text) {
        std::string text(a_prefix);
        for (const auto unit : a_text) {
            text += unit < 0x80 ? static_cast<char>(unit) : '?';
        }
        events.push_back(text);
    }
};

} // namespace qiro_plugin::debugger::testing
