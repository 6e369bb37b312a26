#include "platform/data_folder.hpp"

#include "platform/folder_access.hpp"
#include "text/string_encode.hpp"

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <pwd.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace qiro_plugin::utility {

namespace {

constexpr mode_t plugin_folder_mode = 0700;

std::optional<std::string> home_folder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        return std::string(home);
    }
    long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size > 0 ? static_cast<std::size_t>(size) : 16384);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 ||
        found == nullptr || found->pw_dir == nullptr || *found->pw_dir == '\0') {
        return std::nullopt;
    }
    return std::string(found->pw_dir);
}

// The user's preferences folder joined with one name, ending in "/"; none without a home.
std::optional<std::string> preferences_subfolder(const char* a_name) {
    auto home = home_folder();
    if (!home) {
        return std::nullopt;
    }
    while (home->size() > 1 && home->back() == '/') {
        home->pop_back();
    }
    if (*home == "/") {
        home->clear();
    }
    return detail::with_final_slash(*home + "/Library/Preferences/" + a_name);
}

} // namespace

std::string get_qiro_user_folder() {
    auto folder = preferences_subfolder("QIRO22");
    if (!folder) {
        throw std::runtime_error("utility::get_qiro_user_folder() call error");
    }
    return *folder;
}

std::string get_qiro_lumen_data_folder() {
    auto folder = preferences_subfolder("QIRO Lumen");
    if (!folder) {
        throw std::runtime_error("utility::get_qiro_user_folder() call error1");
    }
    // Whatever already lies there is taken as it is; only a missing entry is created.
    // Another run in this process may create it at the same moment: that one counts too.
    if (!detail::find_entry(*folder).exists && !detail::create_folder(*folder, std::nullopt) &&
        !detail::find_entry(*folder).is_folder) {
        throw std::runtime_error("utility::get_qiro_user_folder() call error2");
    }
    return *folder;
}

utf16_string create_plugin_preference_path(const utf16_string& a_name) {
    const std::string data_folder = get_qiro_lumen_data_folder();
    std::string name = string_encode::WideCharToMultiByteFilePath(a_name.c_str());
    if (name.empty() && !a_name.empty()) {
        return {};
    }
    // The name comes from the plug-in's own document: it must stay one folder inside the data
    // folder, never reach outside it or make a tree.
    if (name.find('/') != std::string::npos || name == "." || name == "..") {
        return {};
    }
    const std::string folder = detail::with_final_slash(data_folder + name);
    if (!detail::find_entry(folder).exists) {
        // Only this folder is made: its parent, the data folder, exists by now. Another run may
        // make it at the same moment, which is as good.
        if (::mkdir(folder.c_str(), plugin_folder_mode) == 0) {
            if (::chmod(folder.c_str(), plugin_folder_mode) != 0) {
                return {};
            }
        } else if (errno != EEXIST || !detail::find_entry(folder).is_folder) {
            return {};
        }
    }
    return string_encode::MultiByteFilePathToWideChar(folder.c_str());
}

} // namespace qiro_plugin::utility
