#include "settings/keychain.hpp"
#include "settings/settings_test_support.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <dlfcn.h>
#include <optional>

namespace {

using namespace qiro_plugin::utility;

void expect_every_call_fails() {
    EXPECT_EQ(get_password_in_keychain("service", "account"), "");
    EXPECT_FALSE(set_password_in_keychain("service", "account", "secret"));
    EXPECT_FALSE(modify_password_in_keychain("service", "account", "secret"));
    EXPECT_FALSE(delete_item_in_keychain("service", "account"));
}

// Loading the keyring client costs every process start, so with no bus to reach it must never
// happen; that check runs in a fresh process, so that no earlier case has loaded it already.
TEST(keychain_without_service_test, with_no_keyring_service_every_call_fails) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    std::optional<qiro_test::private_home> home(std::in_place);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    setenv("XDG_RUNTIME_DIR", home->root().c_str(), 1);
    EXPECT_EXIT(
        {
            expect_every_call_fails();
            unsetenv("XDG_RUNTIME_DIR");
            expect_every_call_fails();
            const bool loaded = dlopen("libsecret-1.so.0", RTLD_NOW | RTLD_NOLOAD) != nullptr;
            const bool failed = loaded || testing::Test::HasFailure();
            // The child re-ran this case with a home of its own, which exit would leave behind.
            home.reset();
            std::exit(failed ? 1 : 0);
        },
        testing::ExitedWithCode(0), "");
    // A fresh home gives a bus address that leads nowhere: the client is loaded, and still
    // every call fails.
    home.emplace();
    expect_every_call_fails();
}

} // namespace
