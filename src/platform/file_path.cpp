#include "platform/file_path.hpp"

#include "platform/folder_access.hpp"
#include "text/string_encode.hpp"
#include "text/wide_string.hpp"

#include <climits>
#include <cstdlib>
#include <memory>

namespace qiro_plugin::utility {

namespace {

std::string to_path(const utf16_string& a_path) {
    return string_encode::WideCharToMultiByteFilePath(a_path.c_str());
}

} // namespace

bool makeFilePath(utf16_string& a_folder, utf16_string& a_file_name) {
    utf16_string joined = a_folder;
    if (!joined.empty() && joined.back() != u'/' && !a_file_name.empty()) {
        joined.push_back(u'/');
    }
    joined += a_file_name;
    const std::string path = to_path(joined);
    if (path.empty()) {
        return false;
    }
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr),
                                                               &std::free);
    if (!resolved) {
        return false;
    }
    const std::string canonical(resolved.get());
    const auto slash = canonical.rfind('/');
    const std::string folder = canonical.substr(0, slash + 1);
    const std::string name = canonical.substr(slash + 1);
    utf16_string wide_folder = string_encode::MultiByteFilePathToWideChar(folder.c_str());
    utf16_string wide_name = string_encode::MultiByteFilePathToWideChar(name.c_str());
    // A canonical path that cannot be shown as text is no better than none.
    if (wide_folder.empty() || (wide_name.empty() && !name.empty())) {
        return false;
    }
    a_folder = std::move(wide_folder);
    a_file_name = std::move(wide_name);
    return true;
}

bool check_file_existence(const utf16_string& a_path) {
    return detail::find_entry(to_path(a_path)).exists;
}

utf16_string get_real_file_name(const utf16_string& /*a_folder*/, const utf16_string& a_file_name) {
    return a_file_name;
}

utf16_string get_convert_path(const utf16_string& a_path) {
    return a_path;
}

utf16_string convert_unique_file_name(const utf16_string& a_file_name) {
    return toupper_string(a_file_name);
}

bool check_file_spec(const utf16_string& a_file_name) {
    return a_file_name.find(u'/') == utf16_string::npos;
}

} // namespace qiro_plugin::utility
