#include "platform/sandbox.hpp"

#include <algorithm>
#include <array>
#include <climits>
#include <sys/stat.h>
#include <unistd.h>

namespace qiro_plugin::utility {

namespace {

thread_local const sandbox_layout* innermost = nullptr;

// The top-level folders the interpreters and their libraries come from. On a merged-/usr
// system most are links into /usr and are recreated as the same links.
constexpr std::array<const char*, 6> system_roots{"/bin",   "/sbin",  "/lib",
                                                  "/lib32", "/lib64", "/libx32"};

void add(std::vector<std::string>& a_list, std::initializer_list<std::string> a_items) {
    a_list.insert(a_list.end(), a_items);
}

void add_system_root(std::vector<std::string>& a_arguments, const std::string& a_root) {
    struct stat status {};
    if (::lstat(a_root.c_str(), &status) != 0) {
        return;
    }
    if (S_ISLNK(status.st_mode)) {
        std::array<char, PATH_MAX> target{};
        const ssize_t length = ::readlink(a_root.c_str(), target.data(), target.size() - 1);
        if (length > 0) {
            add(a_arguments,
                {"--symlink", std::string(target.data(), static_cast<std::size_t>(length)),
                 a_root});
        }
    } else if (S_ISDIR(status.st_mode)) {
        add(a_arguments, {"--ro-bind", a_root, a_root});
    }
}

} // namespace

const char* sandbox_mode_name(sandbox_mode a_mode) {
    switch (a_mode) {
    case sandbox_mode::on:
        return "on";
    case sandbox_mode::nonet:
        return "nonet";
    case sandbox_mode::off:
        break;
    }
    return "off";
}

std::optional<sandbox_mode> sandbox_mode_from_name(std::string_view a_name) {
    for (const auto mode : {sandbox_mode::off, sandbox_mode::on, sandbox_mode::nonet}) {
        if (a_name == sandbox_mode_name(mode)) {
            return mode;
        }
    }
    return std::nullopt;
}

std::vector<std::string> sandbox_command(const sandbox_layout& a_layout,
                                         const std::string& a_working_folder,
                                         const std::vector<std::string>& a_command) {
    std::vector<std::string> arguments{a_layout.tool, "--ro-bind", "/usr", "/usr"};
    for (const char* root : system_roots) {
        add_system_root(arguments, root);
    }
    add(arguments, {"--ro-bind", "/etc", "/etc", "--ro-bind-try", "/opt", "/opt", "--proc", "/proc",
                    "--dev", "/dev", "--tmpfs", "/tmp"});
    if (a_layout.mode == sandbox_mode::on) {
        // Where /etc/resolv.conf points on systems that run systemd-resolved.
        add(arguments, {"--ro-bind-try", "/run/systemd/resolve", "/run/systemd/resolve"});
    }
    // Outer folders first: a folder inside another is mounted over it and keeps its own
    // access, whichever of the two is the writable one.
    std::vector<std::pair<std::string, const char*>> mounts;
    for (const auto& folder : a_layout.read_write) {
        mounts.emplace_back(folder, "--bind");
    }
    for (const auto& folder : a_layout.read_only) {
        mounts.emplace_back(folder, "--ro-bind");
    }
    std::stable_sort(mounts.begin(), mounts.end(), [](const auto& a_left, const auto& a_right) {
        return std::count(a_left.first.begin(), a_left.first.end(), '/') <
               std::count(a_right.first.begin(), a_right.first.end(), '/');
    });
    for (const auto& [folder, option] : mounts) {
        add(arguments, {option, folder, folder});
    }
    // The folders made on the way to the mounts (the home folder itself, say) stay empty.
    add(arguments, {"--remount-ro", "/"});
    // A session of its own keeps the plug-in off the host's terminal (no typing into it
    // through TIOCSTI); the group the runner signals is then bwrap's alone, and bwrap's end
    // takes the whole sandbox with it through --die-with-parent and the PID namespace.
    add(arguments, {"--unshare-pid", "--unshare-ipc", "--unshare-uts", "--unshare-cgroup-try",
                    "--die-with-parent", "--new-session", "--cap-drop", "ALL"});
    if (a_layout.mode == sandbox_mode::nonet) {
        arguments.emplace_back("--unshare-net");
    }
    add(arguments, {"--chdir", a_working_folder, "--"});
    arguments.insert(arguments.end(), a_command.begin(), a_command.end());
    return arguments;
}

sandbox_scope::sandbox_scope(sandbox_layout a_layout)
    : m_layout(std::move(a_layout)), m_outer(innermost) {
    innermost = &m_layout;
}

sandbox_scope::~sandbox_scope() {
    innermost = m_outer;
}

const sandbox_layout* current_sandbox() {
    return innermost != nullptr && innermost->mode != sandbox_mode::off ? innermost : nullptr;
}

} // namespace qiro_plugin::utility
