#include "core/run_sinks.hpp"

#include "text/string_encode.hpp"

namespace qiro_plugin::debugger {

void run_output_sink::add_std_output_utf8(const std::string& a_text) {
    add_std_output_text(string_encode::MultiByteUTF8ToWideChar(a_text.c_str()));
}

void run_output_sink::add_std_error_output_utf8(const std::string& a_text) {
    add_std_error_output_text(string_encode::MultiByteUTF8ToWideChar(a_text.c_str()));
}

void run_output_sink::show_std_error_so_far(const std::string&) {}

} // namespace qiro_plugin::debugger
