#include "cli/cli_support.hpp"

#include "platform/localized_string.hpp"
#include "text/string_encode.hpp"
#include "text/utf8_text.hpp"

#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <system_error>

namespace qiro_plugin::cli {

std::optional<utf16_string> from_utf8(const std::string& a_text) {
    if (a_text.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    try {
        return string_encode::MultiByteUTF8ToWideChar(a_text.c_str());
    } catch (const std::runtime_error&) {
        return std::nullopt;
    }
}

void print_error(const std::string& a_text) {
    std::cerr << "qiro-lumen: " << a_text << '\n';
}

utf16_string chosen_plugin_folder(const std::string& a_option) {
    return a_option.empty() ? debugger::plugin_folder() : debugger::make_plugin_folder(a_option);
}

std::filesystem::path locate_named_file(const std::string& a_name,
                                        const std::string& a_folder_option) {
    namespace fs = std::filesystem;
    if (a_name.find('/') != std::string::npos || a_name == "." || a_name == "..") {
        return a_name;
    }
    std::error_code error;
    fs::path in_folder =
        fs::path(string_encode::to_utf8_marked(chosen_plugin_folder(a_folder_option))) / a_name;
    if (fs::exists(in_folder, error) || !fs::exists(a_name, error)) {
        return in_folder;
    }
    return a_name;
}

std::optional<debugger::plugin_entry> resolve_plugin(const std::string& a_plugin,
                                                     const std::string& a_folder_option) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path path = locate_named_file(a_plugin, a_folder_option);
    if (path.is_relative()) {
        path = fs::absolute(path, error).lexically_normal();
    }
    if (a_plugin.empty() || path.filename().empty() || !fs::exists(path, error)) {
        print_error("no plug-in file \"" + a_plugin + "\" (looked at " + path.string() +
                    "); give a path to the file, or a file name that \"qiro-lumen list\" shows");
        return std::nullopt;
    }
    std::string folder_path = path.parent_path().string();
    if (folder_path.empty() || folder_path.back() != '/') {
        folder_path += '/';
    }
    const auto folder = string_encode::MultiByteFilePathToWideChar(folder_path.c_str());
    const auto name = string_encode::MultiByteFilePathToWideChar(path.filename().string().c_str());
    if (folder.empty() || name.empty()) {
        print_error("the path of \"" + a_plugin + "\" is not valid text in this locale");
        return std::nullopt;
    }
    return debugger::plugin_entry{folder, name};
}

void stderr_alert_sink::show_alert(const std::string& a_key) {
    m_keys.push_back(a_key);
    const std::string text = string_encode::to_utf8_marked(utility::localized_string(a_key));
    print_error(text.empty() ? a_key : text);
}

} // namespace qiro_plugin::cli
