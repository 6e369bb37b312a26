#include "settings/manager_preference_access.hpp"
#include "settings/preference_keys.hpp"
#include "settings/settings_test_support.hpp"

#include <gtest/gtest.h>

namespace {

using namespace qiro_plugin;
using preferences::preference_date;
using preferences::preference_value;
using qiro_test::private_home;
using dictionary = preference_value::dictionary_type;
using access = manager_preference_access;

manager_preference_data sample_record() {
    manager_preference_data data;
    data.automatically_displayed_candidate = 0;
    data.key_plugin_candidate_change = 0x1001;
    data.key_1_plugin_name = u"一番.py";
    data.enable_proxy = 1;
    data.proxy_address = u"proxy.example.org";
    data.proxy_port = 3128;
    data.enable_authentication = 1;
    data.proxy_username = u"ユーザー";
    return data;
}

TEST(manager_preference_test, without_preferences_the_defaults_are_read_and_nothing_written) {
    private_home home;
    EXPECT_EQ(access::get_all_version_application_id_array(),
              (std::vector<std::string>{"org.qiro.Qiro22.PluginManager",
                                        "org.qiro.Qiro21.PluginManager"}));
    const auto data = access::read_manager_preference();
    EXPECT_EQ(data, manager_preference_data());
    EXPECT_EQ(data.automatically_displayed_candidate, 1U);
    EXPECT_EQ(data.key_plugin_candidate_change, 265U);
    EXPECT_FALSE(std::filesystem::exists(home.root() / "home" / "Library"));
}

// Each field takes the kinds that answer its question (a string answers a flag's) and keeps
// its default for the others.
TEST(manager_preference_test, values_of_the_wrong_kind_leave_the_defaults) {
    private_home home;
    const auto path = home.user_file(APPLICATION_ID_LATEST);
    qiro_test::write_plist_file(
        path, preference_value(dictionary{
                  {"automatically_displayed_candidate", preference_value(preference_date{5, 0})},
                  {"key_plugin_candidate_change", preference_value("300")},
                  {"key_1_plugin_name", preference_value(12)},
                  {"key_2_plugin_name", preference_value(preference_value::array_type{})},
                  {"key_3_plugin_name", preference_value("three.py")},
                  {"enable_proxy", preference_value(preference_date{600000000, 0})},
                  {"proxy_address", preference_value(true)},
                  {"proxy_port", preference_value(preference_value::data_type{0x1F, 0x90})},
                  {"enable_authentication", preference_value(dictionary{})},
                  {"proxy_username", preference_value(3.5)},
              }));
    auto expected = manager_preference_data();
    expected.key_3_plugin_name = u"three.py";
    EXPECT_EQ(access::read_manager_preference(), expected);

    qiro_test::write_plist_file(path, preference_value(dictionary{
                                          {"enable_proxy", preference_value(" +01")},
                                          {"proxy_port", preference_value(8080.7)},
                                      }));
    const auto data = access::read_manager_preference();
    EXPECT_EQ(data.enable_proxy, 1U);
    EXPECT_EQ(data.proxy_port, 8080U);
}

TEST(manager_preference_test, a_key_code_the_candidate_table_lacks_reads_as_tab) {
    private_home home;
    const std::pair<std::int64_t, std::uint32_t> cases[] = {
        {269, 265},        {283, 265},         {0x1001, 0x1001},
        {0x41, 265},       {45 + 0x1000, 265}, {32 + 0x3400, 32 + 0x3400},
        {0x100000020, 32}, {-1, 265},
    };
    for (const auto& [stored, read] : cases) {
        qiro_test::write_plist_file(home.user_file(APPLICATION_ID_LATEST),
                                    preference_value(dictionary{{"key_plugin_candidate_change",
                                                                 preference_value(stored)}}));
        EXPECT_EQ(access::read_manager_preference().key_plugin_candidate_change, read) << stored;
    }
}

TEST(manager_preference_test, settings_of_version_21_alone_are_carried_into_version_22) {
    private_home home;
    const auto plugins = home.root() / "plugins";
    qiro_test::write_file(plugins / "sample.py", "");
    const preference_value stored(dictionary{
        {"automatically_displayed_candidate", preference_value(false)},
        {"key_plugin_candidate_change", preference_value(0x1001)},
        {"key_1_plugin_name", preference_value("一番.py")},
        {"enable_proxy", preference_value(true)},
        {"proxy_address", preference_value("proxy.example.org")},
        {"proxy_port", preference_value(3128)},
        {"enable_authentication", preference_value(true)},
        {"proxy_username", preference_value("ユーザー")},
        {"plugin_count", preference_value(1)},
        {"plugin", preference_value(preference_value::array_type{preference_value(dictionary{
                       {"plugin_path", preference_value(plugins.string() + "/")},
                       {"plugin_name", preference_value("sample.py")},
                       {"plugin_enable", preference_value(true)},
                   })})},
    });
    qiro_test::write_plist_file(home.user_file(APPLICATION_ID_21), stored);
    const auto before = qiro_test::read_file(home.user_file(APPLICATION_ID_21));
    EXPECT_EQ(access::get_existing_latest_version_user_pref_application_id(), APPLICATION_ID_21);

    EXPECT_EQ(access::read_manager_preference(), sample_record());

    EXPECT_EQ(qiro_test::read_file(home.user_file(APPLICATION_ID_21)), before);
    auto carried = qiro_test::read_plist_file(home.user_file(APPLICATION_ID_LATEST));
    EXPECT_EQ(*carried.find("key_2_plugin_name"), preference_value(""));
    EXPECT_EQ(*carried.find("proxy_username"), preference_value("ユーザー"));
    // The carry-over copies the settings, not the plug-in list.
    EXPECT_EQ(carried.find("plugin_count"), nullptr);
    EXPECT_EQ(carried.find("plugin"), nullptr);
    EXPECT_EQ(carried.get_dictionary()->size(), 12U);
    EXPECT_EQ(access::get_existing_latest_version_user_pref_application_id(),
              APPLICATION_ID_LATEST);
    EXPECT_EQ(access::read_manager_preference(), sample_record());
    ASSERT_EQ(access::read_plugin_info_list().size(), 1U);
}

TEST(manager_preference_test, a_damaged_version_22_file_gives_defaults_and_stays_as_it_is) {
    private_home home;
    const std::string damaged = "<?xml version=\"1.0\"?><plist><dict><key>enable_proxy</key>";
    qiro_test::write_file(home.user_file(APPLICATION_ID_LATEST), damaged);
    qiro_test::write_plist_file(
        home.user_file(APPLICATION_ID_21),
        preference_value(dictionary{{"enable_proxy", preference_value(true)}}));
    EXPECT_EQ(access::read_manager_preference(), manager_preference_data());
    EXPECT_FALSE(access::save_manager_preference(sample_record()));
    EXPECT_EQ(qiro_test::read_file(home.user_file(APPLICATION_ID_LATEST)), damaged);
}

} // namespace
