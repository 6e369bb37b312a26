#pragma once
// The three language bridges as the runtime carries them: URL-encoded bytes of each script.

#include <string>

namespace qiro_plugin::bridge {

const std::string& perl_script();   // URL-encoded, as stored
const std::string& ruby_script();   // URL-encoded, as stored
const std::string& python_script(); // URL-encoded, as stored

} // namespace qiro_plugin::bridge
