#pragma once
// The manager's settings read once and kept while the files they came from stay the same.

#include "settings/manager_preference_data.hpp"

#include <memory>

namespace qiro_plugin {

// What read_manager_preference gives, read again only when the user's preferences folder (its
// listing chooses the domain), a domain's file or this process's unwritten changes differ
// from when it was last read: files are compared by device, inode, size and modification
// time in nanoseconds. The keychain has no such identity; its password is read again with the
// files, and the manager writes the preference file whenever it stores one. For the many runs
// of one soak or test; a run on its own reads the settings as they are. Safe between threads.
class manager_preference_snapshot {
public:
    manager_preference_snapshot();
    ~manager_preference_snapshot();
    manager_preference_snapshot(const manager_preference_snapshot&) = delete;
    manager_preference_snapshot& operator=(const manager_preference_snapshot&) = delete;

    manager_preference_data read();

private:
    struct impl;
    std::unique_ptr<impl> p_impl;
};

} // namespace qiro_plugin
