#include "settings/manager_preference_access.hpp"
#include "settings/preference_keys.hpp"
#include "settings/settings_test_support.hpp"

#include <gtest/gtest.h>

namespace {

using namespace qiro_plugin;

// A file laid out the way the manager's own platform writes its preferences.
TEST(stored_file_test, a_version_21_file_of_the_manager_is_read_whole) {
    qiro_test::private_home home;
    const auto plugins = home.root() / "plugins";
    qiro_test::write_file(plugins / "sample.py", "");
    auto text = qiro_test::read_file(std::filesystem::path(QIRO_TEST_DATA_DIR) / "settings" /
                                     "org.qiro.Qiro21.PluginManager.plist");
    const std::string marker = "PLUGIN_FOLDER";
    text.replace(text.find(marker), marker.size(), plugins.string());
    qiro_test::write_file(home.user_file(APPLICATION_ID_21), text);

    const auto list = manager_preference_access::read_plugin_info_list();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0].plugin_name, u"sample.py");
    EXPECT_EQ(list[0].plugin_enable, 1U);

    const auto data = manager_preference_access::read_manager_preference();
    EXPECT_EQ(data.automatically_displayed_candidate, 0U);
    EXPECT_EQ(data.key_plugin_candidate_change, 9509U);
    EXPECT_EQ(data.key_1_plugin_name, u"郵便番号.py");
    EXPECT_EQ(data.enable_proxy, 1U);
    EXPECT_EQ(data.proxy_address, u"proxy.example.jp");
    EXPECT_EQ(data.proxy_port, 8080U);
    EXPECT_EQ(data.enable_authentication, 1U);
    EXPECT_EQ(data.proxy_username, u"taro & hanako");

    // The carry-over copies the settings, not the plug-in list.
    const auto carried = qiro_test::read_plist_file(home.user_file(APPLICATION_ID_LATEST));
    EXPECT_EQ(carried.find("plugin"), nullptr);
    EXPECT_EQ(manager_preference_access::read_plugin_info_list(), list);
}

} // namespace
