#pragma once
// An output sink that keeps both panes as text in memory, for the command line and tests.

#include "debugger/core/run_sinks.hpp"

#include <cstddef>

namespace qiro_plugin::debugger {

class pane_text_sink : public run_output_sink {
public:
    void add_std_output_text(const utf16_string& a_text) override;
    void add_std_error_output_text(const utf16_string& a_text) override;
    void clear_std_output_text() override;
    void clear_std_error_output_text() override;
    void start_progress() override;
    void stop_progress() override;

    const utf16_string& std_output_text() const { return m_std_output; }
    const utf16_string& std_error_output_text() const { return m_std_error_output; }
    bool is_progress_running() const { return m_progress_running; }
    std::size_t progress_start_count() const { return m_progress_starts; }

private:
    utf16_string m_std_output;
    utf16_string m_std_error_output;
    bool m_progress_running = false;
    std::size_t m_progress_starts = 0;
};

} // namespace qiro_plugin::debugger
