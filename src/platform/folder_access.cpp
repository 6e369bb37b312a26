#include "platform/folder_access.hpp"

#include <cerrno>
#include <sys/stat.h>

namespace qiro_plugin::utility::detail {

namespace {

constexpr mode_t default_folder_mode = 0777;

bool create_parents(const std::string& a_path) {
    std::string::size_type end = a_path.find_last_not_of('/');
    if (end == std::string::npos) {
        return true;
    }
    const std::string::size_type slash = a_path.rfind('/', end);
    if (slash == std::string::npos || slash == 0) {
        return true;
    }
    const std::string parent = a_path.substr(0, slash);
    if (find_entry(parent).exists) {
        return true;
    }
    return create_parents(parent) &&
           (::mkdir(parent.c_str(), default_folder_mode) == 0 || errno == EEXIST);
}

} // namespace

entry_kind find_entry(const std::string& a_path) {
    struct stat status {};
    if (a_path.empty() || ::stat(a_path.c_str(), &status) != 0) {
        return {};
    }
    return {true, S_ISDIR(status.st_mode)};
}

bool create_folder(const std::string& a_path, std::optional<mode_t> a_mode) {
    if (a_path.empty() || !create_parents(a_path)) {
        return false;
    }
    if (::mkdir(a_path.c_str(), a_mode.value_or(default_folder_mode)) != 0) {
        return false;
    }
    // mkdir honours the umask; a requested mode is meant exactly.
    return !a_mode || ::chmod(a_path.c_str(), *a_mode) == 0;
}

std::string with_final_slash(std::string a_path) {
    if (a_path.empty() || a_path.back() != '/') {
        a_path.push_back('/');
    }
    return a_path;
}

} // namespace qiro_plugin::utility::detail
