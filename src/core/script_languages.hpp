#pragma once
// The three script languages a plug-in file is tried with, in the order they are tried.

#include "text/utf16_string.hpp"

#include <span>
#include <string>

namespace qiro_plugin::debugger {

struct script_language {
    std::string command_name;              // the interpreter: "perl", "ruby", "python"
    std::string extension;                 // ".pl", ".rb", ".py"
    utf16_string module_type;              // "Perl", "Ruby", "Python"
    const std::string& (*bridge_script)(); // the bridge, URL-encoded as stored
};

// Perl, then Ruby, then Python.
std::span<const script_language> script_language_table();

} // namespace qiro_plugin::debugger
