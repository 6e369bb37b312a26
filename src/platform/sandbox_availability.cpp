#include "platform/sandbox_availability.hpp"

#include "platform/command_runner.hpp"
#include "platform/sandbox.hpp"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace qiro_plugin::utility {

namespace {

constexpr const char* ready_mark = "sandbox-ready";

std::optional<std::string> read_setting(const std::string& a_folder, const std::string& a_name) {
    std::ifstream file(a_folder + "/" + a_name);
    std::string value;
    if (!file || !(file >> value)) {
        return std::nullopt;
    }
    return value;
}

std::string find_program(const std::string& a_path_variable, const std::string& a_name) {
    std::size_t start = 0;
    while (start <= a_path_variable.size()) {
        const std::size_t end = std::min(a_path_variable.find(':', start), a_path_variable.size());
        const std::string folder = a_path_variable.substr(start, end - start);
        // An empty or relative entry would make the sandbox depend on the current folder.
        if (!folder.empty() && folder.front() == '/') {
            const std::string candidate = folder + "/" + a_name;
            struct stat status {};
            if (::stat(candidate.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
                ::access(candidate.c_str(), X_OK) == 0) {
                return candidate;
            }
        }
        start = end + 1;
    }
    return {};
}

std::string shell_quoted(const std::string& a_text) {
    std::string quoted = "'";
    for (const char c : a_text) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

std::string first_line(const std::vector<char>& a_bytes) {
    std::string text(a_bytes.begin(), std::find(a_bytes.begin(), a_bytes.end(), '\0'));
    text = text.substr(0, text.find('\n'));
    return text.empty() ? std::string("it printed nothing") : text;
}

const char* const namespace_settings =
    "user namespaces must be open to unprivileged users: kernel.unprivileged_userns_clone=1 "
    "(Debian's older kernels), user.max_user_namespaces above 0 and, on kernels with "
    "AppArmor's restriction, kernel.apparmor_restrict_unprivileged_userns=0 or an AppArmor "
    "profile that lets bwrap create them";

} // namespace

sandbox_host sandbox_host::current_process() {
    sandbox_host host;
    const char* path = std::getenv("PATH");
    host.path_variable = path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin";
    host.sysctl_folder = "/proc/sys";
    host.privileged = ::geteuid() == 0;
    return host;
}

sandbox_availability check_sandbox(const sandbox_host& a_host) {
    sandbox_availability result;
    const std::string tool = find_program(a_host.path_variable, "bwrap");
    if (tool.empty()) {
        result.error = "the sandbox needs bubblewrap, and no bwrap program is on PATH: install "
                       "the package bubblewrap (sudo apt-get install bubblewrap)";
        return result;
    }
    if (!a_host.privileged) {
        const auto setting = [&a_host](const char* a_name) {
            return read_setting(a_host.sysctl_folder, a_name);
        };
        if (setting("kernel/unprivileged_userns_clone") == "0") {
            result.error = "the sandbox needs user namespaces, which this kernel keeps for root: "
                           "set kernel.unprivileged_userns_clone=1 (sudo sysctl -w "
                           "kernel.unprivileged_userns_clone=1; a file in /etc/sysctl.d/ keeps "
                           "it)";
            return result;
        }
        if (setting("user/max_user_namespaces") == "0") {
            result.error = "the sandbox needs user namespaces, and user.max_user_namespaces is "
                           "0: set it above 0 (sudo sysctl -w user.max_user_namespaces=10000; a "
                           "file in /etc/sysctl.d/ keeps it)";
            return result;
        }
    }
    result.tool = tool;
    return result;
}

sandbox_availability check_sandbox() {
    static std::mutex lock;
    static std::string working_tool;
    {
        std::lock_guard guard(lock);
        if (!working_tool.empty()) {
            return {working_tool, {}};
        }
    }
    auto result = check_sandbox(sandbox_host::current_process());
    if (result.error.empty()) {
        std::lock_guard guard(lock);
        working_tool = result.tool;
    }
    return result;
}

std::string sandbox_setup_error(const std::string& a_tool) {
    sandbox_layout layout;
    layout.mode = sandbox_mode::nonet;
    layout.tool = a_tool;
    std::string line;
    for (const auto& argument : sandbox_command(layout, "/", {"/bin/true"})) {
        line += shell_quoted(argument) + " ";
    }
    line += std::string("&& echo ") + ready_mark;
    std::vector<char> output;
    std::vector<char> error;
    const sandbox_scope unconfined{sandbox_layout{}};
    if (run_command(line, {}, output, error, true) != 0) {
        return "bubblewrap (" + a_tool + ") could not be started";
    }
    if (std::string(output.begin(), output.end()).find(ready_mark) != std::string::npos) {
        return {};
    }
    return "bubblewrap (" + a_tool + ") could not set up a sandbox: " + first_line(error) + "; " +
           namespace_settings;
}

} // namespace qiro_plugin::utility
