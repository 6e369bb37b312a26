#pragma once
// Private state of qiro_plugin_instance_script and the operations its runs share.

#include "platform/command_runner.hpp"
#include "runtime/plugin_instance_script.hpp"
#include "text/utf16_string.hpp"
#include "xml/script_preference.hpp"

#include <cstdint>
#include <string>

namespace qiro_plugin {

struct qiro_plugin_instance_script::impl {
    utf16_string m_load_error_message;
    std::string m_script_command_name;   // "perl", "ruby" or "python"
    std::string m_scripy_extension_name; // ".pl", ".rb" or ".py"
    std::string m_script_code;           // the bridge script, URL-encoded as stored
    utf16_string m_plugin_file_path;     // folder + file name
    std::string m_data_folder;           // ends in "/"
    utf16_string m_plugin_file_name;
    utf16_string m_module_type; // "Perl", "Ruby" or "Python"
    std::int32_t m_is_load = 0;
    xml_access_library::script_preference::plugin_preference_data m_plugin_preference_data;
    std::string m_last_std_output;
    std::string m_last_std_err_output;
    bool m_is_last_document_parsed = false;
    utility::run_command_report m_last_command_report;
    int m_last_command_result = -1;

    // Runs the bridge with the method and the already quoted arguments; returns the command's
    // standard output, empty on any failure.
    std::string run_command_rapper(const std::string& a_method, const std::string& a_arguments,
                                   bool a_is_timeout);
    // The companion document beside the plug-in file; empty data when it is missing or bad.
    xml_access_library::script_preference::plugin_preference_data get_plugin_preference() const;
    // The plug-in's settings folder as a quoted, URL-encoded command-line argument.
    std::string make_preference_path_argument() const;
};

// One command-line value between the two quoting constants.
std::string quote_argument(const std::string& a_value);
// A record text as UTF-8, URL-encoded and quoted.
std::string make_text_argument(const utf16_string& a_text);

} // namespace qiro_plugin
