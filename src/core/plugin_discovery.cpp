#include "core/plugin_discovery.hpp"

#include "text/string_encode.hpp"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace qiro_plugin::debugger {

namespace {

qiro_plugin_utf16_t fold_ascii(qiro_plugin_utf16_t a_unit) {
    return (a_unit >= u'A' && a_unit <= u'Z') ? static_cast<qiro_plugin_utf16_t>(a_unit + 32)
                                              : a_unit;
}

utf16_string with_final_slash(utf16_string a_folder) {
    if (a_folder.empty() || a_folder.back() != u'/') {
        a_folder += u'/';
    }
    return a_folder;
}

utf16_string& configured_folder() {
    static utf16_string folder;
    return folder;
}

} // namespace

std::vector<std::string> plugin_extensions() {
    return {"pl", "py", "rb"};
}

bool check_extension(const utf16_string& a_file_name,
                     const std::vector<std::string>& a_extensions) {
    const auto last_slash = a_file_name.find_last_of(u'/');
    const utf16_string name =
        last_slash == utf16_string::npos ? a_file_name : a_file_name.substr(last_slash + 1);
    const auto dot = name.find_last_of(u'.');
    if (dot == utf16_string::npos || dot == 0) {
        return false;
    }
    const utf16_string extension = name.substr(dot + 1);
    for (const auto& candidate : a_extensions) {
        if (candidate.size() != extension.size()) {
            continue;
        }
        const bool same =
            std::equal(extension.begin(), extension.end(), candidate.begin(),
                       [](qiro_plugin_utf16_t a_unit, char a_byte) {
                           return fold_ascii(a_unit) == fold_ascii(static_cast<qiro_plugin_utf16_t>(
                                                            static_cast<unsigned char>(a_byte)));
                       });
        if (same) {
            return true;
        }
    }
    return false;
}

utf16_string default_plugin_folder() {
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error || executable.empty()) {
        return {};
    }
    const auto folder = (executable.parent_path() / "plugin").string();
    return with_final_slash(string_encode::MultiByteFilePathToWideChar(folder.c_str()));
}

utf16_string make_plugin_folder(const std::string& a_path) {
    std::error_code error;
    auto absolute = std::filesystem::absolute(a_path, error);
    if (error) {
        absolute = a_path;
    }
    return with_final_slash(
        string_encode::MultiByteFilePathToWideChar(absolute.lexically_normal().string().c_str()));
}

utf16_string plugin_folder() {
    return configured_folder().empty() ? default_plugin_folder() : configured_folder();
}

void set_plugin_folder(const utf16_string& a_folder) {
    configured_folder() = a_folder.empty() ? a_folder : with_final_slash(a_folder);
}

bool plugin_file_name_less(const utf16_string& a_first, const utf16_string& a_second) {
    const std::size_t common = std::min(a_first.size(), a_second.size());
    for (std::size_t i = 0; i < common; ++i) {
        const auto first = fold_ascii(a_first[i]);
        const auto second = fold_ascii(a_second[i]);
        if (first != second) {
            return first < second;
        }
    }
    if (a_first.size() != a_second.size()) {
        return a_first.size() < a_second.size();
    }
    // Names equal but for letter case still need one fixed order.
    return a_first < a_second;
}

plugin_list find_plugin_module(const utf16_string& a_folder,
                               const std::vector<std::string>& a_extensions) {
    plugin_list result;
    if (a_folder.empty()) {
        return result;
    }
    const utf16_string folder = with_final_slash(a_folder);
    const std::string folder_path = string_encode::WideCharToMultiByteFilePath(folder.c_str());
    if (folder_path.empty()) {
        return result;
    }
    std::error_code error;
    const std::filesystem::directory_iterator end;
    for (std::filesystem::directory_iterator entry(folder_path, error); !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        const utf16_string wide_name = string_encode::MultiByteFilePathToWideChar(name.c_str());
        if (!wide_name.empty() && check_extension(wide_name, a_extensions)) {
            result.emplace_back(folder, wide_name);
        }
    }
    std::sort(result.begin(), result.end(), [](const plugin_entry& a, const plugin_entry& b) {
        return plugin_file_name_less(a.second, b.second);
    });
    return result;
}

plugin_list find_plugin_module(const std::vector<std::string>& a_extensions) {
    return find_plugin_module(plugin_folder(), a_extensions);
}

} // namespace qiro_plugin::debugger
