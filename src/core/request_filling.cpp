#include "core/request_filling.hpp"

namespace qiro_plugin::debugger {

namespace {

// Proxy values reach the plug-in only when proxy use is on; a value too long for its buffer
// is left empty rather than cut, since a cut address or password would be wrong anyway.
template <typename Record>
void fill_proxy_fields(Record& a_record, const manager_preference_data& a_settings) {
    if (!a_settings.enable_proxy) {
        return;
    }
    if (a_settings.proxy_address.size() <= QIRO_PLUGIN_PROXY_ADDRESS_CAPACITY) {
        set_record_text(a_record.proxy_address, a_record.proxy_address_length,
                        a_settings.proxy_address);
    }
    a_record.proxy_port = a_settings.proxy_port;
    if (!a_settings.enable_authentication) {
        return;
    }
    if (a_settings.proxy_username.size() <= QIRO_PLUGIN_PROXY_ACCOUNT_CAPACITY) {
        set_record_text(a_record.proxy_username, a_record.proxy_username_length,
                        a_settings.proxy_username);
    }
    if (a_settings.proxy_password.size() <= QIRO_PLUGIN_PROXY_ACCOUNT_CAPACITY) {
        set_record_text(a_record.proxy_password, a_record.proxy_password_length,
                        a_settings.proxy_password);
    }
}

} // namespace

void fill_processing_request(qiro_plugin_request& a_request, const utf16_string& a_written_form,
                             const utf16_string& a_reading,
                             const manager_preference_data& a_settings) {
    a_request = qiro_plugin_request{};
    set_record_text(a_request.composition_string, a_request.composition_string_length,
                    a_written_form);
    set_record_text(a_request.reading_string, a_request.reading_string_length, a_reading);
    a_request.processing_type = 1;
    a_request.is_auto_search = 1;
    a_request.record_version = 1;
    fill_proxy_fields(a_request, a_settings);
}

void fill_callback_request(qiro_plugin_callback& a_callback, const utf16_string& a_candidate,
                           const utf16_string& a_written_form,
                           const manager_preference_data& a_settings) {
    a_callback = qiro_plugin_callback{};
    set_record_text(a_callback.candidate_string, a_callback.candidate_string_length, a_candidate);
    set_record_text(a_callback.composition_string, a_callback.composition_string_length,
                    a_written_form);
    fill_proxy_fields(a_callback, a_settings);
}

} // namespace qiro_plugin::debugger
