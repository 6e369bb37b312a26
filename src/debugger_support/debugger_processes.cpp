#include "debugger_support/debugger_processes.hpp"

#include <csignal>
#include <dirent.h>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace qiro_plugin::debugger_support {

namespace {

constexpr std::chrono::milliseconds poll_step{20};
constexpr std::chrono::seconds kill_limit{5};

bool environment_holds(const std::string& a_file, const std::string& a_entry) {
    std::ifstream input(a_file, std::ios::binary);
    const std::string block((std::istreambuf_iterator<char>(input)),
                            std::istreambuf_iterator<char>());
    std::size_t start = 0;
    while (start < block.size()) {
        std::size_t end = block.find('\0', start);
        if (end == std::string::npos) {
            end = block.size();
        }
        if (block.compare(start, end - start, a_entry) == 0) {
            return true;
        }
        start = end + 1;
    }
    return false;
}

bool is_zombie(pid_t a_pid) {
    std::ifstream input("/proc/" + std::to_string(a_pid) + "/stat");
    std::string line;
    std::getline(input, line);
    const std::size_t name_end = line.rfind(')');
    return name_end != std::string::npos && name_end + 2 < line.size() && line[name_end + 2] == 'Z';
}

} // namespace

std::vector<pid_t> processes_with_environment(const std::string& a_entry) {
    std::vector<pid_t> found;
    DIR* proc = ::opendir("/proc");
    if (proc == nullptr) {
        return found;
    }
    const uid_t user = ::getuid();
    while (const dirent* entry = ::readdir(proc)) {
        char* end = nullptr;
        const long pid = std::strtol(entry->d_name, &end, 10);
        if (end == entry->d_name || *end != '\0' || pid <= 0 || pid == ::getpid()) {
            continue;
        }
        const std::string folder = std::string("/proc/") + entry->d_name;
        struct stat status {};
        if (::stat(folder.c_str(), &status) != 0 || status.st_uid != user) {
            continue;
        }
        if (environment_holds(folder + "/environ", a_entry) &&
            !is_zombie(static_cast<pid_t>(pid))) {
            found.push_back(static_cast<pid_t>(pid));
        }
    }
    ::closedir(proc);
    return found;
}

void end_processes_with_environment(const std::string& a_entry, std::chrono::milliseconds a_grace) {
    const auto grace_end = std::chrono::steady_clock::now() + a_grace;
    auto left = processes_with_environment(a_entry);
    while (!left.empty() && std::chrono::steady_clock::now() < grace_end) {
        std::this_thread::sleep_for(poll_step);
        left = processes_with_environment(a_entry);
    }
    const auto kill_end = std::chrono::steady_clock::now() + kill_limit;
    while (!left.empty() && std::chrono::steady_clock::now() < kill_end) {
        for (const pid_t pid : left) {
            ::kill(pid, SIGKILL);
        }
        std::this_thread::sleep_for(poll_step);
        left = processes_with_environment(a_entry);
    }
}

} // namespace qiro_plugin::debugger_support
