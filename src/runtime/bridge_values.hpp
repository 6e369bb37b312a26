#pragma once
// The values a bridge reads after the method name, in the order it reads them: the two texts,
// then the proxy address, port, user name and password. The runtime's command line and the
// author-side probes both take them from here.

#include "runtime/plugin_records.hpp"

#include <vector>

namespace qiro_plugin {

struct bridge_value {
    utf16_string text;
    // The port: its decimal digits, which the bridges read as they are, not URL-encoded.
    bool is_port = false;
};

// The written form and the reading, then the proxy values.
std::vector<bridge_value> bridge_values_of(const qiro_plugin_request& a_request);
// The committed candidate and the written form, then the proxy values.
std::vector<bridge_value> bridge_values_of(const qiro_plugin_callback& a_callback);

} // namespace qiro_plugin
