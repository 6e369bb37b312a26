#pragma once
// A private home and machine preference folder for each test, and plist file helpers.

#include "settings/plist_codec.hpp"
#include "settings/preference_keys.hpp"
#include "settings/preference_store.hpp"
#include "settings/preference_value.hpp"
#include "support/scratch_folder.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>

namespace qiro_test {

namespace prefs = qiro_plugin::preferences;

using test_support::read_file;
using test_support::write_file;

inline void write_plist_file(const std::filesystem::path& a_path,
                             const prefs::preference_value& a_root,
                             prefs::plist_format a_format = prefs::plist_format::xml) {
    write_file(a_path, prefs::write_plist(a_root, a_format).value());
}

// The file's root dictionary; fails the test when it cannot be parsed.
inline prefs::preference_value read_plist_file(const std::filesystem::path& a_path) {
    auto parsed = prefs::parse_plist(read_file(a_path));
    EXPECT_TRUE(parsed.has_value()) << a_path;
    return parsed ? parsed->root : prefs::preference_value();
}

// Points HOME and QIRO_MACHINE_PREFERENCES_DIR at a fresh folder for its lifetime; with
// a_isolate_keyring the session bus address leads nowhere, so no keyring can be reached.
class private_home {
public:
    explicit private_home(bool a_isolate_keyring = true) {
        std::filesystem::create_directories(m_root / "home");
        setenv("HOME", (m_root / "home").c_str(), 1);
        setenv("QIRO_MACHINE_PREFERENCES_DIR", (m_root / "machine").c_str(), 1);
        if (a_isolate_keyring) {
            setenv("DBUS_SESSION_BUS_ADDRESS",
                   ("unix:path=" + (m_root / "no-bus").string()).c_str(), 1);
        }
        forget_unwritten_changes();
    }
    private_home(const private_home&) = delete;
    private_home& operator=(const private_home&) = delete;
    ~private_home() { forget_unwritten_changes(); }

    const std::filesystem::path& root() const { return m_root; }
    std::filesystem::path user_file(const std::string& a_domain) const {
        return m_root / "home" / "Library" / "Preferences" / (a_domain + ".plist");
    }
    std::filesystem::path machine_file(const std::string& a_domain) const {
        return m_root / "machine" / (a_domain + ".plist");
    }
    // Writes the entries as the domain's preference file of the user, or of the machine.
    void write_user(const std::string& a_domain,
                    prefs::preference_value::dictionary_type a_entries) const {
        write_plist_file(user_file(a_domain), prefs::preference_value(std::move(a_entries)));
    }
    void write_machine(const std::string& a_domain,
                       prefs::preference_value::dictionary_type a_entries) const {
        write_plist_file(machine_file(a_domain), prefs::preference_value(std::move(a_entries)));
    }

private:
    // The store keeps unwritten changes per domain for the whole process; one test's must not
    // reach the next.
    static void forget_unwritten_changes() {
        for (const char* domain :
             {qiro_plugin::APPLICATION_ID_LATEST, qiro_plugin::APPLICATION_ID_21}) {
            prefs::discard_changes(domain, prefs::preference_scope::current_user_any_host);
            prefs::discard_changes(domain, prefs::preference_scope::any_user_current_host);
        }
    }

    test_support::scratch_folder m_scratch{"qiro-settings"};
    const std::filesystem::path m_root = m_scratch.path();
};

} // namespace qiro_test
