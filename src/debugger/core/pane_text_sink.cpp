#include "debugger/core/pane_text_sink.hpp"

namespace qiro_plugin::debugger {

namespace {
const utf16_string line_end = u"\r\n";
}

void pane_text_sink::add_std_output_text(const utf16_string& a_text) {
    m_std_output += a_text;
    m_std_output += line_end;
}

void pane_text_sink::add_std_error_output_text(const utf16_string& a_text) {
    m_std_error_output += a_text;
    m_std_error_output += line_end;
}

void pane_text_sink::clear_std_output_text() {
    m_std_output.clear();
}

void pane_text_sink::clear_std_error_output_text() {
    m_std_error_output.clear();
}

void pane_text_sink::start_progress() {
    m_progress_running = true;
    ++m_progress_starts;
}

void pane_text_sink::stop_progress() {
    m_progress_running = false;
}

} // namespace qiro_plugin::debugger
