#include "cli/cli_support.hpp"

#include "platform/localized_string.hpp"
#include "text/string_encode.hpp"

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

std::string to_utf8(const utf16_string& a_text) {
    try {
        return string_encode::WideCharToMultiByteUTF8(a_text.c_str());
    } catch (const std::runtime_error&) {
        return {};
    }
}

void print_error(const std::string& a_text) {
    std::cerr << "qiro-lumen: " << a_text << '\n';
}

utf16_string chosen_plugin_folder(const std::string& a_option) {
    return a_option.empty() ? debugger::plugin_folder() : debugger::make_plugin_folder(a_option);
}

std::optional<debugger::plugin_entry> resolve_plugin(const std::string& a_plugin,
                                                     const std::string& a_folder_option) {
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path path;
    if (a_plugin.find('/') != std::string::npos) {
        path = fs::absolute(a_plugin, error).lexically_normal();
    } else {
        const std::string folder = to_utf8(chosen_plugin_folder(a_folder_option));
        path = fs::path(folder) / a_plugin;
        if (!fs::exists(path, error) && fs::exists(a_plugin, error)) {
            path = fs::absolute(a_plugin, error).lexically_normal();
        }
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
    const std::string text = to_utf8(utility::localized_string(a_key));
    print_error(text.empty() ? a_key : text);
}

} // namespace qiro_plugin::cli
