#include "runtime/bridge_values.hpp"

#include <string>

namespace qiro_plugin {

namespace {

template <typename request_record>
std::vector<bridge_value> values_of(const utf16_string& a_first, const utf16_string& a_second,
                                    const request_record& a_record) {
    const std::string port = std::to_string(a_record.proxy_port);
    return {
        {a_first, false},
        {a_second, false},
        {get_record_text(a_record.proxy_address, a_record.proxy_address_length), false},
        {utf16_string(port.begin(), port.end()), true},
        {get_record_text(a_record.proxy_username, a_record.proxy_username_length), false},
        {get_record_text(a_record.proxy_password, a_record.proxy_password_length), false},
    };
}

} // namespace

std::vector<bridge_value> bridge_values_of(const qiro_plugin_request& a_request) {
    return values_of(
        get_record_text(a_request.composition_string, a_request.composition_string_length),
        get_record_text(a_request.reading_string, a_request.reading_string_length), a_request);
}

std::vector<bridge_value> bridge_values_of(const qiro_plugin_callback& a_callback) {
    return values_of(
        get_record_text(a_callback.candidate_string, a_callback.candidate_string_length),
        get_record_text(a_callback.composition_string, a_callback.composition_string_length),
        a_callback);
}

} // namespace qiro_plugin
