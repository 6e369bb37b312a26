#include "core/run_request.hpp"

namespace qiro_plugin::debugger {

run_request processing_request(const plugin_entry& a_plugin, const utf16_string& a_written_form,
                               const utf16_string& a_reading) {
    run_request request;
    request.plugin = a_plugin;
    request.written_form = a_written_form;
    request.reading = a_reading;
    return request;
}

run_request callback_request(const plugin_entry& a_plugin, const utf16_string& a_candidate,
                             const utf16_string& a_written_form) {
    run_request request;
    request.entry = diagnosis::entry_kind::callback;
    request.plugin = a_plugin;
    request.candidate = a_candidate;
    request.written_form = a_written_form;
    return request;
}

run_request preference_request(const plugin_entry& a_plugin) {
    run_request request;
    request.entry = diagnosis::entry_kind::preference;
    request.plugin = a_plugin;
    return request;
}

} // namespace qiro_plugin::debugger
