#include "settings/preference_store.hpp"
#include "settings/settings_test_support.hpp"

#include <gtest/gtest.h>

namespace {

using namespace qiro_plugin::preferences;
using qiro_test::private_home;
using test_support::mode_of;
using value = preference_value;

constexpr auto user = preference_scope::current_user_any_host;
constexpr auto machine = preference_scope::any_user_current_host;
const std::string domain = "org.example.Store";

// The write goes through a temporary file and a rename, over the file as it is at that moment.
TEST(preference_store_test, synchronising_writes_the_changes_and_keeps_every_other_key) {
    private_home home;
    const auto path = home.user_file(domain);
    const value original(value::dictionary_type{{"foreign", value(value::array_type{value(1.5)})},
                                                {"changed", value("old")},
                                                {"when", value(preference_date{12345, 0})}});
    qiro_test::write_plist_file(path, original, plist_format::binary);
    set_value("changed", value("new"), domain, user);
    set_value("added", value(true), domain, user);
    set_value("when", std::nullopt, domain, user);
    EXPECT_EQ(copy_value("changed", domain, user), value("new"));
    EXPECT_FALSE(copy_value("when", domain, user).has_value());
    EXPECT_FALSE(copy_value("changed", domain, machine).has_value());
    // Another program writes to the file before this one synchronises.
    auto concurrent = original;
    concurrent.set("late", value(7));
    qiro_test::write_plist_file(path, concurrent, plist_format::binary);
    std::filesystem::permissions(path, std::filesystem::perms(0640));
    ASSERT_TRUE(synchronize(domain, user));

    const auto parsed = parse_plist(qiro_test::read_file(path));
    ASSERT_TRUE(parsed.has_value());
    EXPECT_EQ(parsed->format, plist_format::binary);
    auto expected = concurrent;
    expected.set("changed", value("new"));
    expected.set("added", value(true));
    expected.erase("when");
    EXPECT_EQ(parsed->root, expected);
    EXPECT_EQ(copy_domain(domain, user), *expected.get_dictionary());
    EXPECT_EQ(mode_of(path), 0640U);
    EXPECT_EQ(test_support::names_in(path.parent_path()).size(), 1U);
}

TEST(preference_store_test, a_damaged_file_or_a_bad_domain_name_is_never_written) {
    private_home home;
    const auto path = home.user_file(domain);
    for (const std::string bytes :
         {"<?xml version=\"1.0\"?><plist><dict><key>on</key><tr",
          "<plist><array><true/></array></plist>", "<plist><string>only text</string></plist>"}) {
        qiro_test::write_file(path, bytes);
        EXPECT_TRUE(is_domain_damaged(domain, user));
        EXPECT_TRUE(copy_domain(domain, user).empty());
        set_value("on", value(true), domain, user);
        EXPECT_FALSE(synchronize(domain, user));
        EXPECT_EQ(qiro_test::read_file(path), bytes);
        EXPECT_EQ(test_support::names_in(path.parent_path()).size(), 1U);
        // The change waits and is written once the file is readable again.
        std::filesystem::remove(path);
        ASSERT_TRUE(synchronize(domain, user));
        EXPECT_EQ(copy_value("on", domain, user), value(true));
        EXPECT_EQ(mode_of(path), 0600U);
        std::filesystem::remove(path);
    }
    for (const char* bad : {"", ".", "..", "a/b", "../x"}) {
        EXPECT_FALSE(domain_file_path(bad, user).has_value()) << bad;
        set_value("k", value(1), bad, user);
        EXPECT_FALSE(synchronize(bad, user)) << bad;
    }
    set_value("x", value(1), domain, user);
    discard_changes(domain, user);
    EXPECT_FALSE(copy_value("x", domain, user).has_value());
}

} // namespace
