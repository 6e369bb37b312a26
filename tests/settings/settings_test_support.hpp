#pragma once
// A private home and machine preference folder for each test, and plist file helpers.

#include "settings/plist_codec.hpp"
#include "settings/preference_value.hpp"
#include "support/scratch_folder.hpp"

#include <filesystem>
#include <string>

namespace qiro_test {

// Points HOME and QIRO_MACHINE_PREFERENCES_DIR at a fresh folder for its lifetime; with
// a_isolate_keyring the session bus address leads nowhere, so no keyring can be reached.
class private_home {
public:
    explicit private_home(bool a_isolate_keyring = true);
    private_home(const private_home&) = delete;
    private_home& operator=(const private_home&) = delete;
    ~private_home();

    const std::filesystem::path& root() const { return m_root; }
    std::filesystem::path user_file(const std::string& a_domain) const;
    std::filesystem::path machine_file(const std::string& a_domain) const;

private:
    test_support::scratch_folder m_scratch{"qiro-settings"};
    const std::filesystem::path m_root = m_scratch.path();
};

// Writes the bytes, making the folders on the way.
void write_file(const std::filesystem::path& a_path, const std::string& a_bytes);
using test_support::read_file;
void write_plist_file(
    const std::filesystem::path& a_path, const qiro_plugin::preferences::preference_value& a_root,
    qiro_plugin::preferences::plist_format a_format = qiro_plugin::preferences::plist_format::xml);
// The file's root dictionary; fails the test when it cannot be parsed.
qiro_plugin::preferences::preference_value read_plist_file(const std::filesystem::path& a_path);

} // namespace qiro_test
