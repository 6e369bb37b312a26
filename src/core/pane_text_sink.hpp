#pragma once
// An output sink that keeps both panes as text in memory, for the command line and tests.

#include "core/run_sinks.hpp"

#include <cstddef>
#include <string>
#include <utility>

namespace qiro_plugin::debugger {

// The panes are kept in UTF-8, as the interpreter wrote them: a front end that prints them
// needs no UTF-16 copy, which for a flooded stream is twice its size.
class pane_text_sink : public run_output_sink {
public:
    void add_std_output_text(const utf16_string& a_text) override;
    void add_std_error_output_text(const utf16_string& a_text) override;
    void add_std_output_utf8(const std::string& a_text) override;
    void add_std_error_output_utf8(const std::string& a_text) override;
    void clear_std_output_text() override;
    void clear_std_error_output_text() override;
    void start_progress() override;
    void stop_progress() override;

    utf16_string std_output_text() const;
    utf16_string std_error_output_text() const;
    const std::string& std_output_utf8() const { return m_std_output; }
    const std::string& std_error_output_utf8() const { return m_std_error_output; }
    // Each moves its pane's text out, leaving the pane empty.
    std::string take_std_output_utf8() { return std::exchange(m_std_output, {}); }
    std::string take_std_error_output_utf8() { return std::exchange(m_std_error_output, {}); }
    bool is_progress_running() const { return m_progress_running; }
    std::size_t progress_start_count() const { return m_progress_starts; }

private:
    std::string m_std_output;
    std::string m_std_error_output;
    bool m_progress_running = false;
    std::size_t m_progress_starts = 0;
};

} // namespace qiro_plugin::debugger
