#pragma once
// What every qiro-lumen command shares: exit statuses, text conversion, finding the plug-in.

#include "core/plugin_discovery.hpp"
#include "core/run_sinks.hpp"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace qiro_plugin::cli {

enum exit_status : int {
    exit_success = 0,   // the output parsed as a result document (or the command did its job)
    exit_not_run = 1,   // the plug-in could not be run, or its output did not parse
    exit_bad_usage = 2, // missing file, refused input, unknown key
    exit_run_error = 3  // an exception ended the run
};

// UTF-8 argument text to UTF-16; nothing when it is not valid UTF-8.
std::optional<utf16_string> from_utf8(const std::string& a_text);

// The help of every --plugin-folder option.
inline constexpr const char* plugin_folder_help =
    "the plug-in folder (default: plugin/ beside this program)";

// Writes a line "qiro-lumen: <text>" to standard error.
void print_error(const std::string& a_text);

// The plug-in folder of the --plugin-folder option, else the one beside the executable.
utf16_string chosen_plugin_folder(const std::string& a_option);

// What a name typed for a plug-in (or its cases) names: a bare file name (no "/") is the file
// of that name in the plug-in folder when one is there, or when the current folder has none
// either; any other name is taken as it stands, from the current folder.
std::filesystem::path locate_named_file(const std::string& a_name,
                                        const std::string& a_folder_option);

// A plug-in given as a path (it holds "/") or as a file name in the plug-in folder (else in
// the current folder). Nothing, after an error line, when no file is there.
std::optional<debugger::plugin_entry> resolve_plugin(const std::string& a_plugin,
                                                     const std::string& a_folder_option);

// Alerts of the run logic shown as error lines with their localized text.
class stderr_alert_sink : public debugger::alert_sink {
public:
    void show_alert(const std::string& a_key) override;
    const std::vector<std::string>& keys() const { return m_keys; }

private:
    std::vector<std::string> m_keys;
};

} // namespace qiro_plugin::cli
