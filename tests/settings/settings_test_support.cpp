#include "settings/settings_test_support.hpp"

#include "settings/preference_keys.hpp"
#include "settings/preference_store.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace qiro_test {

namespace {

// The store keeps unwritten changes per domain for the whole process; one test's must not
// reach the next.
void forget_unwritten_changes() {
    using qiro_plugin::preferences::preference_scope;
    for (const char* domain :
         {qiro_plugin::APPLICATION_ID_LATEST, qiro_plugin::APPLICATION_ID_21}) {
        for (auto scope :
             {preference_scope::current_user_any_host, preference_scope::any_user_current_host}) {
            qiro_plugin::preferences::discard_changes(domain, scope);
        }
    }
}

} // namespace

private_home::private_home(bool a_isolate_keyring) {
    std::filesystem::create_directories(m_root / "home");
    setenv("HOME", (m_root / "home").c_str(), 1);
    setenv("QIRO_MACHINE_PREFERENCES_DIR", (m_root / "machine").c_str(), 1);
    if (a_isolate_keyring) {
        setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + (m_root / "no-bus").string()).c_str(),
               1);
    }
    forget_unwritten_changes();
}

private_home::~private_home() {
    forget_unwritten_changes();
}

std::filesystem::path private_home::user_file(const std::string& a_domain) const {
    return m_root / "home" / "Library" / "Preferences" / (a_domain + ".plist");
}

std::filesystem::path private_home::machine_file(const std::string& a_domain) const {
    return m_root / "machine" / (a_domain + ".plist");
}

void write_file(const std::filesystem::path& a_path, const std::string& a_bytes) {
    std::filesystem::create_directories(a_path.parent_path());
    test_support::write_file(a_path, a_bytes);
}

void write_plist_file(const std::filesystem::path& a_path,
                      const qiro_plugin::preferences::preference_value& a_root,
                      qiro_plugin::preferences::plist_format a_format) {
    write_file(a_path, qiro_plugin::preferences::write_plist(a_root, a_format).value());
}

qiro_plugin::preferences::preference_value read_plist_file(const std::filesystem::path& a_path) {
    auto parsed = qiro_plugin::preferences::parse_plist(read_file(a_path));
    EXPECT_TRUE(parsed.has_value()) << a_path;
    return parsed ? parsed->root : qiro_plugin::preferences::preference_value();
}

} // namespace qiro_test
