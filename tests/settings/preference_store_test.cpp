#include "settings/preference_store.hpp"
#include "settings/settings_test_support.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

using namespace qiro_plugin::preferences;
using qiro_test::private_home;

constexpr auto user = preference_scope::current_user_any_host;
constexpr auto machine = preference_scope::any_user_current_host;
const std::string domain = "org.example.Store";

std::size_t files_in(const std::filesystem::path& a_folder) {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(a_folder)) {
        ++count;
    }
    return count;
}

TEST(preference_store_test, domains_live_in_the_user_and_machine_folders) {
    private_home home;
    EXPECT_EQ(domain_file_path(domain, user), home.user_file(domain));
    EXPECT_EQ(domain_file_path(domain, machine), home.machine_file(domain));
    for (const char* bad : {"", ".", "..", "a/b", "../x"}) {
        EXPECT_FALSE(domain_file_path(bad, user).has_value()) << bad;
        set_value("k", preference_value(1), bad, user);
        EXPECT_FALSE(synchronize(bad, user)) << bad;
    }
    unsetenv("QIRO_MACHINE_PREFERENCES_DIR");
    EXPECT_EQ(preferences_folder(machine), "/Library/Preferences");
}

TEST(preference_store_test, values_are_seen_before_and_after_synchronising) {
    private_home home;
    EXPECT_FALSE(copy_value("count", domain, user).has_value());
    set_value("count", preference_value(3), domain, user);
    set_value("name", preference_value("first"), domain, user);
    EXPECT_EQ(copy_value("count", domain, user), preference_value(3));
    EXPECT_FALSE(std::filesystem::exists(home.user_file(domain)));
    EXPECT_FALSE(copy_value("count", domain, machine).has_value());

    ASSERT_TRUE(synchronize(domain, user));
    const auto stored = qiro_test::read_plist_file(home.user_file(domain));
    EXPECT_EQ(stored, preference_value(preference_value::dictionary_type{
                          {"count", preference_value(3)}, {"name", preference_value("first")}}));
    struct stat status {};
    ASSERT_EQ(stat(home.user_file(domain).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);

    set_value("name", std::nullopt, domain, user);
    EXPECT_FALSE(copy_value("name", domain, user).has_value());
    ASSERT_TRUE(synchronize(domain, user));
    EXPECT_EQ(qiro_test::read_plist_file(home.user_file(domain)).find("name"), nullptr);
    EXPECT_EQ(files_in(home.user_file(domain).parent_path()), 1U);
}

TEST(preference_store_test, writing_keeps_other_keys_and_the_file_format) {
    private_home home;
    const preference_value original(preference_value::dictionary_type{
        {"foreign", preference_value(preference_value::array_type{preference_value(1.5)})},
        {"changed", preference_value("old")},
        {"when", preference_value(preference_date{12345, 0})},
    });
    qiro_test::write_plist_file(home.user_file(domain), original, plist_format::binary);
    set_value("changed", preference_value("new"), domain, user);
    set_value("added", preference_value(true), domain, user);
    // Another program writes to the file before this one synchronises.
    auto concurrent = original;
    concurrent.set("late", preference_value(7));
    qiro_test::write_plist_file(home.user_file(domain), concurrent, plist_format::binary);
    ASSERT_TRUE(synchronize(domain, user));

    const auto parsed = parse_plist(qiro_test::read_file(home.user_file(domain)));
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->format, plist_format::binary);
    auto expected = concurrent;
    expected.set("changed", preference_value("new"));
    expected.set("added", preference_value(true));
    EXPECT_EQ(parsed->root, expected);
    EXPECT_EQ(copy_domain(domain, user), *expected.get_dictionary());
}

TEST(preference_store_test, a_damaged_file_reads_empty_and_is_never_overwritten) {
    private_home home;
    const std::string damaged[] = {
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>enable_proxy</key><tr",
        "<plist><array><true/></array></plist>",
        "<plist><string>only text</string></plist>",
    };
    for (const auto& bytes : damaged) {
        qiro_test::write_file(home.user_file(domain), bytes);
        EXPECT_TRUE(is_domain_damaged(domain, user));
        EXPECT_FALSE(copy_value("enable_proxy", domain, user).has_value());
        EXPECT_TRUE(copy_domain(domain, user).empty());
        set_value("enable_proxy", preference_value(true), domain, user);
        EXPECT_FALSE(synchronize(domain, user));
        EXPECT_EQ(qiro_test::read_file(home.user_file(domain)), bytes);
        EXPECT_EQ(files_in(home.user_file(domain).parent_path()), 1U);
        // The change waits and is written once the file is readable again.
        std::filesystem::remove(home.user_file(domain));
        EXPECT_FALSE(is_domain_damaged(domain, user));
        ASSERT_TRUE(synchronize(domain, user));
        EXPECT_EQ(copy_value("enable_proxy", domain, user), preference_value(true));
        std::filesystem::remove(home.user_file(domain));
    }
    set_value("x", preference_value(1), domain, user);
    discard_changes(domain, user);
    EXPECT_FALSE(copy_value("x", domain, user).has_value());
}

TEST(preference_store_test, the_application_list_names_each_plist_of_the_user_folder) {
    private_home home;
    EXPECT_TRUE(copy_application_list(user).empty());
    const preference_value empty(preference_value::dictionary_type{});
    qiro_test::write_plist_file(home.user_file("org.b"), empty);
    qiro_test::write_file(home.user_file("org.a"), "damaged");
    qiro_test::write_file(home.user_file("org.a").parent_path() / "notes.txt", "");
    qiro_test::write_file(home.user_file("org.a").parent_path() / ".plist", "");
    std::filesystem::create_directories(home.user_file("org.folder"));
    qiro_test::write_plist_file(home.machine_file("org.machine"), empty);
    EXPECT_EQ(copy_application_list(user), (std::vector<std::string>{"org.a", "org.b"}));
    EXPECT_EQ(copy_application_list(machine), (std::vector<std::string>{"org.machine"}));
}

} // namespace
