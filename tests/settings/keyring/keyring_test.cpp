#include "settings/keychain.hpp"
#include "settings/manager_preference_access.hpp"
#include "settings/preference_keys.hpp"
#include "settings/settings_test_support.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

namespace {

using namespace qiro_plugin;
using namespace qiro_plugin::utility;
using value = preferences::preference_value;

// Outside the private keyring of run_in_keyring.sh these cases would reach the user's own.
class keyring_test : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::getenv("QIRO_PRIVATE_KEYRING") == nullptr) {
            GTEST_SKIP() << "run through run_in_keyring.sh";
        }
        m_home = std::make_unique<qiro_test::private_home>(false);
    }
    std::unique_ptr<qiro_test::private_home> m_home;
};

std::string password_of(const std::string& a_account) {
    return get_password_in_keychain(KEYCHAIN_SERVICE_PROXY_AUTH_PASSWORD, a_account);
}

TEST_F(keyring_test, passwords_are_stored_replaced_and_deleted_by_service_and_account) {
    const std::string service = "org.example.keyring-test";
    EXPECT_FALSE(modify_password_in_keychain(service, "alice", "x"));
    // Names the keyring could not hold as given are refused.
    EXPECT_FALSE(set_password_in_keychain("", "alice", "x"));
    EXPECT_FALSE(set_password_in_keychain(std::string("ser\0vice", 8), "alice", "x"));
    EXPECT_FALSE(set_password_in_keychain(service, "\xff\xfe", "x"));

    ASSERT_TRUE(set_password_in_keychain(service, "alice", "first"));
    EXPECT_EQ(get_password_in_keychain(service, "alice"), "first");
    EXPECT_EQ(get_password_in_keychain(service + ".other", "alice"), "");
    EXPECT_TRUE(set_password_in_keychain(service, "alice", "second"));
    EXPECT_EQ(get_password_in_keychain(service, "alice"), "second");
    EXPECT_TRUE(modify_password_in_keychain(service, "alice", "third"));
    EXPECT_EQ(get_password_in_keychain(service, "alice"), "third");

    // Any bytes, zero bytes too, come back whole, and an empty account is an account.
    const std::string binary("\0pass\0word\xff\x01", 12);
    ASSERT_TRUE(set_password_in_keychain(service, "ユーザー", binary));
    EXPECT_EQ(get_password_in_keychain(service, "ユーザー"), binary);
    ASSERT_TRUE(set_password_in_keychain(service, "", "for nobody"));
    EXPECT_EQ(get_password_in_keychain(service, ""), "for nobody");
    EXPECT_EQ(get_password_in_keychain(service, "ユーザー"), binary);

    // One delete must leave nothing: replacing did not add a second item. Deleting a missing
    // item fails.
    for (const char* account : {"alice", "", "ユーザー"}) {
        EXPECT_TRUE(delete_item_in_keychain(service, account)) << account;
        EXPECT_EQ(get_password_in_keychain(service, account), "") << account;
        EXPECT_FALSE(delete_item_in_keychain(service, account)) << account;
    }
}

TEST_F(keyring_test, manager_settings_keep_the_password_of_the_current_user_only) {
    manager_preference_data data;
    data.proxy_username = u"alice";
    data.proxy_password = u"パス1";
    ASSERT_TRUE(manager_preference_access::save_manager_preference(data));
    EXPECT_EQ(password_of("alice"), "パス1");

    data.proxy_username = u"bob";
    data.proxy_password = u"second";
    ASSERT_TRUE(manager_preference_access::save_manager_preference(data));
    EXPECT_EQ(password_of("alice"), "");
    EXPECT_EQ(password_of("bob"), "second");
    EXPECT_EQ(manager_preference_access::read_manager_preference(), data);

    data.proxy_username.clear();
    data.proxy_password.clear();
    ASSERT_TRUE(manager_preference_access::save_manager_preference(data));
    EXPECT_EQ(password_of("bob"), "");
    EXPECT_EQ(manager_preference_access::read_manager_preference(), data);

    // Without a user name the password is kept under the empty account; clearing it as well
    // deletes it, though the name did not change.
    data.proxy_password = u"nameless";
    ASSERT_TRUE(manager_preference_access::save_manager_preference(data));
    EXPECT_EQ(password_of(""), "nameless");
    data.proxy_password.clear();
    ASSERT_TRUE(manager_preference_access::save_manager_preference(data));
    EXPECT_EQ(password_of(""), "");
    EXPECT_EQ(manager_preference_access::read_manager_preference(), data);
}

TEST_F(keyring_test, version_21_settings_are_carried_over_with_their_password) {
    m_home->write_user(APPLICATION_ID_21, {{"enable_authentication", value(true)},
                                           {"proxy_username", value("carol")}});
    ASSERT_TRUE(set_password_in_keychain(KEYCHAIN_SERVICE_PROXY_AUTH_PASSWORD, "carol", "c-pass"));

    const auto data = manager_preference_access::read_manager_preference();
    EXPECT_EQ(data.proxy_username, u"carol");
    EXPECT_EQ(data.proxy_password, u"c-pass");
    // Saving the carried settings rewrites the password and must not delete it.
    EXPECT_EQ(password_of("carol"), "c-pass");
}

} // namespace
