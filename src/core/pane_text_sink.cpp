#include "core/pane_text_sink.hpp"

#include "text/string_encode.hpp"

namespace qiro_plugin::debugger {

namespace {

constexpr char line_end[] = "\r\n";

// Appends text and the line end in one allocation at most.
void append_line(std::string& a_pane, const char* a_text, std::size_t a_length) {
    a_pane.reserve(a_pane.size() + a_length + 2);
    a_pane.append(a_text, a_length);
    a_pane += line_end;
}

void append_utf16_line(std::string& a_pane, const utf16_string& a_text) {
    const std::string text = string_encode::WideCharToMultiByteUTF8(a_text.c_str());
    append_line(a_pane, text.data(), text.size());
}

} // namespace

void pane_text_sink::add_std_output_text(const utf16_string& a_text) {
    append_utf16_line(m_std_output, a_text);
}

void pane_text_sink::add_std_error_output_text(const utf16_string& a_text) {
    append_utf16_line(m_std_error_output, a_text);
}

void pane_text_sink::add_std_output_utf8(const std::string& a_text) {
    append_line(m_std_output, a_text.c_str(), string_encode::checked_utf8_length(a_text.c_str()));
}

void pane_text_sink::add_std_error_output_utf8(const std::string& a_text) {
    append_line(m_std_error_output, a_text.c_str(),
                string_encode::checked_utf8_length(a_text.c_str()));
}

utf16_string pane_text_sink::std_output_text() const {
    return string_encode::MultiByteUTF8ToWideChar(m_std_output.c_str());
}

utf16_string pane_text_sink::std_error_output_text() const {
    return string_encode::MultiByteUTF8ToWideChar(m_std_error_output.c_str());
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
