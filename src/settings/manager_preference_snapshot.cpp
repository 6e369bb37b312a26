#include "settings/manager_preference_snapshot.hpp"

#include "settings/manager_preference_access.hpp"
#include "settings/preference_store.hpp"

#include <mutex>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace qiro_plugin {

namespace {

using preferences::preference_scope;

struct file_identity {
    bool exists = false;
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    long long modified_ns = 0;
    bool operator==(const file_identity&) const = default;
};

file_identity identity_of(const std::string& a_path) {
    file_identity identity;
    struct stat status {};
    if (::stat(a_path.c_str(), &status) == 0) {
        identity.exists = true;
        identity.device = status.st_dev;
        identity.inode = status.st_ino;
        identity.size = status.st_size;
        identity.modified_ns =
            static_cast<long long>(status.st_mtim.tv_sec) * 1000000000LL + status.st_mtim.tv_nsec;
    }
    return identity;
}

// Everything the reader's result depends on that has an identity: the folder it lists, the
// file of each domain it may choose, the unwritten changes. Nothing when the folder is unknown.
struct sources {
    std::string folder;
    std::vector<file_identity> files;
    std::uint64_t changes = 0;
    bool operator==(const sources&) const = default;
};

std::optional<sources> current_sources() {
    sources now;
    now.changes = preferences::change_count();
    now.folder = preferences::preferences_folder(preference_scope::current_user_any_host).string();
    if (now.folder.empty()) {
        return std::nullopt;
    }
    now.files.push_back(identity_of(now.folder));
    for (const auto& domain : manager_preference_access::get_all_version_application_id_array()) {
        const auto path =
            preferences::domain_file_path(domain, preference_scope::current_user_any_host);
        now.files.push_back(path ? identity_of(path->string()) : file_identity{});
    }
    return now;
}

} // namespace

struct manager_preference_snapshot::impl {
    std::mutex m_mutex;
    std::optional<sources> m_sources;
    manager_preference_data m_data;
};

manager_preference_snapshot::manager_preference_snapshot() : p_impl(std::make_unique<impl>()) {}

manager_preference_snapshot::~manager_preference_snapshot() = default;

manager_preference_data manager_preference_snapshot::read() {
    std::lock_guard lock(p_impl->m_mutex);
    // Taken before reading: a file replaced while it is read differs the next time.
    auto before = current_sources();
    if (before && p_impl->m_sources && *before == *p_impl->m_sources) {
        return p_impl->m_data;
    }
    p_impl->m_data = manager_preference_access::read_manager_preference();
    // Reading may itself write (settings carried from an older version): kept only when it
    // did not, so that the next read sees what it wrote.
    const auto after = current_sources();
    p_impl->m_sources = before && after && *before == *after ? before : std::nullopt;
    return p_impl->m_data;
}

} // namespace qiro_plugin
