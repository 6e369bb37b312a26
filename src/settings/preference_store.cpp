#include "settings/preference_store.hpp"

#include "settings/plist_codec.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qiro_plugin::preferences {

namespace {

// Larger files are not preference files; reading them would only cost memory.
constexpr std::size_t max_file_size = 64U * 1024U * 1024U;
constexpr const char* plist_extension = ".plist";

std::filesystem::path home_folder() {
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
        return home;
    }
    long size = sysconf(_SC_GETPW_R_SIZE_MAX);
    std::string buffer(size > 0 ? static_cast<std::size_t>(size) : 16384U, '\0');
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 &&
        found != nullptr && found->pw_dir != nullptr && *found->pw_dir != '\0') {
        return found->pw_dir;
    }
    return {};
}

enum class file_state { missing, readable, damaged };

struct domain_file {
    file_state state = file_state::missing;
    preference_value root{preference_value::dictionary_type()};
    plist_format format = plist_format::xml;
    mode_t mode = 0600;
};

class file_descriptor {
public:
    explicit file_descriptor(int a_descriptor) : m_descriptor(a_descriptor) {}
    file_descriptor(const file_descriptor&) = delete;
    file_descriptor& operator=(const file_descriptor&) = delete;
    ~file_descriptor() {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }
    int get() const { return m_descriptor; }

private:
    int m_descriptor;
};

domain_file read_domain_file(const std::filesystem::path& a_path) {
    domain_file result;
    file_descriptor descriptor(open(a_path.c_str(), O_RDONLY | O_CLOEXEC));
    if (descriptor.get() < 0) {
        result.state = errno == ENOENT ? file_state::missing : file_state::damaged;
        return result;
    }
    result.state = file_state::damaged;
    struct stat status {};
    if (fstat(descriptor.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<std::size_t>(status.st_size) > max_file_size) {
        return result;
    }
    result.mode = status.st_mode & 07777;
    std::string bytes;
    char buffer[65536];
    while (true) {
        const ssize_t count = read(descriptor.get(), buffer, sizeof buffer);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return result;
        }
        if (count == 0) {
            break;
        }
        bytes.append(buffer, static_cast<std::size_t>(count));
        if (bytes.size() > max_file_size) {
            return result;
        }
    }
    auto parsed = parse_plist(bytes);
    if (!parsed || parsed->root.get_kind() != preference_value::kind::dictionary) {
        return result;
    }
    result.state = file_state::readable;
    result.root = std::move(parsed->root);
    result.format = parsed->format;
    return result;
}

bool write_all(int a_descriptor, const std::string& a_bytes) {
    std::size_t written = 0;
    while (written < a_bytes.size()) {
        const ssize_t count =
            write(a_descriptor, a_bytes.data() + written, a_bytes.size() - written);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return false;
        }
        written += static_cast<std::size_t>(count);
    }
    return true;
}

// Readers see either the old file or the new one, never a part of it.
bool replace_file_atomically(const std::filesystem::path& a_path, const std::string& a_bytes,
                             mode_t a_mode) {
    std::error_code error;
    std::filesystem::create_directories(a_path.parent_path(), error);
    if (error) {
        return false;
    }
    std::string pattern = a_path.string() + ".XXXXXX";
    const int raw = mkostemp(pattern.data(), O_CLOEXEC);
    if (raw < 0) {
        return false;
    }
    bool done = false;
    {
        file_descriptor descriptor(raw);
        done = fchmod(descriptor.get(), a_mode) == 0 && write_all(descriptor.get(), a_bytes) &&
               fsync(descriptor.get()) == 0;
    }
    if (done) {
        done = rename(pattern.c_str(), a_path.c_str()) == 0;
    }
    if (!done) {
        unlink(pattern.c_str());
    }
    return done;
}

using change_list = std::vector<std::pair<std::string, std::optional<preference_value>>>;
using pending_key = std::pair<preference_scope, std::string>;

std::mutex& pending_mutex() {
    static std::mutex mutex;
    return mutex;
}

// Moved under the pending mutex with every change of the pending map.
std::uint64_t pending_generation = 0;

std::map<pending_key, change_list>& pending_changes() {
    static std::map<pending_key, change_list> changes;
    return changes;
}

void apply_changes(preference_value& a_root, const change_list& a_changes) {
    for (const auto& [key, value] : a_changes) {
        if (value) {
            a_root.set(key, *value);
        } else {
            a_root.erase(key);
        }
    }
}

// The file's dictionary with this process's changes; empty for a damaged file.
preference_value current_root(const std::string& a_domain, preference_scope a_scope) {
    preference_value root{preference_value::dictionary_type()};
    const auto path = domain_file_path(a_domain, a_scope);
    if (!path) {
        return root;
    }
    auto file = read_domain_file(*path);
    if (file.state == file_state::readable) {
        root = std::move(file.root);
    }
    std::lock_guard lock(pending_mutex());
    const auto found = pending_changes().find({a_scope, a_domain});
    if (found != pending_changes().end()) {
        apply_changes(root, found->second);
    }
    return root;
}

} // namespace

std::filesystem::path preferences_folder(preference_scope a_scope) {
    if (a_scope == preference_scope::any_user_current_host) {
        if (const char* folder = std::getenv("QIRO_MACHINE_PREFERENCES_DIR");
            folder != nullptr && *folder != '\0') {
            return folder;
        }
        return "/Library/Preferences";
    }
    auto home = home_folder();
    if (home.empty()) {
        return {};
    }
    return home / "Library" / "Preferences";
}

std::optional<std::filesystem::path> domain_file_path(const std::string& a_domain,
                                                      preference_scope a_scope) {
    if (a_domain.empty() || a_domain == "." || a_domain == ".." ||
        a_domain.find('/') != std::string::npos || a_domain.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    auto folder = preferences_folder(a_scope);
    if (folder.empty()) {
        return std::nullopt;
    }
    return folder / (a_domain + plist_extension);
}

std::optional<preference_value> copy_value(const std::string& a_key, const std::string& a_domain,
                                           preference_scope a_scope) {
    const auto root = current_root(a_domain, a_scope);
    if (const auto* value = root.find(a_key)) {
        return *value;
    }
    return std::nullopt;
}

preference_value::dictionary_type copy_domain(const std::string& a_domain,
                                              preference_scope a_scope) {
    auto root = current_root(a_domain, a_scope);
    return std::move(*root.get_dictionary());
}

void set_value(const std::string& a_key, std::optional<preference_value> a_value,
               const std::string& a_domain, preference_scope a_scope) {
    if (!domain_file_path(a_domain, a_scope)) {
        return;
    }
    std::lock_guard lock(pending_mutex());
    pending_changes()[{a_scope, a_domain}].emplace_back(a_key, std::move(a_value));
    ++pending_generation;
}

bool synchronize(const std::string& a_domain, preference_scope a_scope) {
    const auto path = domain_file_path(a_domain, a_scope);
    if (!path) {
        return false;
    }
    std::lock_guard lock(pending_mutex());
    const auto found = pending_changes().find({a_scope, a_domain});
    if (found == pending_changes().end()) {
        return true;
    }
    auto file = read_domain_file(*path);
    if (file.state == file_state::damaged) {
        return false;
    }
    apply_changes(file.root, found->second);
    const auto bytes = write_plist(file.root, file.format);
    if (!bytes || !replace_file_atomically(*path, *bytes, file.mode)) {
        return false;
    }
    pending_changes().erase(found);
    ++pending_generation;
    return true;
}

void discard_changes(const std::string& a_domain, preference_scope a_scope) {
    std::lock_guard lock(pending_mutex());
    pending_changes().erase({a_scope, a_domain});
    ++pending_generation;
}

std::uint64_t change_count() {
    std::lock_guard lock(pending_mutex());
    return pending_generation;
}

std::vector<std::string> copy_application_list(preference_scope a_scope) {
    std::vector<std::string> domains;
    const auto folder = preferences_folder(a_scope);
    if (folder.empty()) {
        return domains;
    }
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const auto name = entry->path().filename().string();
        const std::string extension = plist_extension;
        if (name.size() > extension.size() && name.ends_with(extension) &&
            entry->is_regular_file(error)) {
            domains.push_back(name.substr(0, name.size() - extension.size()));
        }
    }
    std::sort(domains.begin(), domains.end());
    return domains;
}

bool is_domain_damaged(const std::string& a_domain, preference_scope a_scope) {
    const auto path = domain_file_path(a_domain, a_scope);
    return path && read_domain_file(*path).state == file_state::damaged;
}

} // namespace qiro_plugin::preferences
