#include "platform/platform_test_support.hpp"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <unistd.h>

namespace platform_test {

scratch_folder::scratch_folder() {
    std::string pattern =
        (std::filesystem::temp_directory_path() / "qiro_platform_XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("mkdtemp failed");
    }
    m_path = pattern;
}

scratch_folder::~scratch_folder() {
    std::error_code ignored;
    // Tests may leave read-only folders behind; open them up so that removal succeeds.
    for (auto it = std::filesystem::recursive_directory_iterator(m_path, ignored);
         it != std::filesystem::recursive_directory_iterator(); it.increment(ignored)) {
        if (it->is_directory(ignored) && !it->is_symlink(ignored)) {
            std::filesystem::permissions(it->path(), std::filesystem::perms::owner_all,
                                         std::filesystem::perm_options::add, ignored);
        }
    }
    std::filesystem::remove_all(m_path, ignored);
}

environment_override::environment_override(const char* a_name,
                                           const std::optional<std::string>& a_value)
    : m_name(a_name) {
    if (const char* previous = std::getenv(a_name)) {
        m_previous = previous;
    }
    if (a_value) {
        ::setenv(a_name, a_value->c_str(), 1);
    } else {
        ::unsetenv(a_name);
    }
}

environment_override::~environment_override() {
    if (m_previous) {
        ::setenv(m_name.c_str(), m_previous->c_str(), 1);
    } else {
        ::unsetenv(m_name.c_str());
    }
}

std::vector<process_entry> list_processes() {
    std::vector<process_entry> entries;
    std::error_code ignored;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
        const std::string name = entry.path().filename().string();
        if (name.find_first_not_of("0123456789") != std::string::npos) {
            continue;
        }
        const std::string stat = read_file(entry.path() / "stat");
        // The command name may hold blanks and parentheses; the fields follow the last ")".
        const auto close = stat.rfind(')');
        if (close == std::string::npos) {
            continue;
        }
        std::istringstream fields(stat.substr(close + 1));
        process_entry process{static_cast<pid_t>(std::stol(name)), '?', 0, 0};
        fields >> process.state >> process.parent >> process.group;
        if (fields) {
            entries.push_back(process);
        }
    }
    return entries;
}

std::vector<process_entry> own_children() {
    std::vector<process_entry> children;
    for (const auto& process : list_processes()) {
        if (process.parent == ::getpid()) {
            children.push_back(process);
        }
    }
    return children;
}

std::vector<process_entry> group_members(pid_t a_group) {
    std::vector<process_entry> members;
    for (const auto& process : list_processes()) {
        if (process.group == a_group) {
            members.push_back(process);
        }
    }
    return members;
}

std::string read_file(const std::filesystem::path& a_path) {
    std::ifstream stream(a_path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void write_file(const std::filesystem::path& a_path, const std::string& a_bytes) {
    std::ofstream stream(a_path, std::ios::binary | std::ios::trunc);
    stream.write(a_bytes.data(), static_cast<std::streamsize>(a_bytes.size()));
}

} // namespace platform_test
