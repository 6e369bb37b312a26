#include "settings/manager_preference_access.hpp"
#include "settings/preference_keys.hpp"
#include "settings/settings_test_support.hpp"

#include <gtest/gtest.h>

namespace {

using namespace qiro_plugin;
using preferences::preference_date;
using value = preferences::preference_value;
using qiro_test::private_home;
using dictionary = value::dictionary_type;
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

// Each field takes the kinds that answer its question (a string answers a flag's) and keeps
// its default for the others.
TEST(manager_preference_test, values_of_the_wrong_kind_leave_the_defaults) {
    private_home home;
    home.write_user(APPLICATION_ID_LATEST,
                    {{"automatically_displayed_candidate", value(preference_date{5, 0})},
                     {"key_plugin_candidate_change", value("300")},
                     {"key_1_plugin_name", value(12)},
                     {"key_2_plugin_name", value(value::array_type{})},
                     {"key_3_plugin_name", value("three.py")},
                     {"enable_proxy", value(preference_date{600000000, 0})},
                     {"proxy_address", value(true)},
                     {"proxy_port", value(value::data_type{0x1F, 0x90})},
                     {"enable_authentication", value(dictionary{})},
                     {"proxy_username", value(3.5)}});
    auto expected = manager_preference_data();
    expected.key_3_plugin_name = u"three.py";
    EXPECT_EQ(access::read_manager_preference(), expected);

    home.write_user(APPLICATION_ID_LATEST,
                    {{"enable_proxy", value(" +01")}, {"proxy_port", value(8080.7)}});
    const auto data = access::read_manager_preference();
    EXPECT_EQ(data.enable_proxy, 1U);
    EXPECT_EQ(data.proxy_port, 8080U);
}

// Esc is assignable only in the plug-in table; the stored number is cut to 32 bits first.
TEST(manager_preference_test, a_key_code_the_candidate_table_lacks_reads_as_tab) {
    private_home home;
    const std::pair<std::int64_t, std::uint32_t> cases[] = {
        {283, 265}, {0x1001, 0x1001}, {32 + 0x3400, 32 + 0x3400}, {0x100000020, 32}, {-1, 265}};
    for (const auto& [stored, read] : cases) {
        home.write_user(APPLICATION_ID_LATEST, {{"key_plugin_candidate_change", value(stored)}});
        EXPECT_EQ(access::read_manager_preference().key_plugin_candidate_change, read) << stored;
    }
}

TEST(manager_preference_test, settings_of_version_21_alone_are_carried_into_version_22) {
    private_home home;
    const auto plugins = home.root() / "plugins";
    qiro_test::write_file(plugins / "sample.py", "");
    home.write_user(APPLICATION_ID_21,
                    {{"automatically_displayed_candidate", value(false)},
                     {"key_plugin_candidate_change", value(0x1001)},
                     {"key_1_plugin_name", value("一番.py")},
                     {"enable_proxy", value(true)},
                     {"proxy_address", value("proxy.example.org")},
                     {"proxy_port", value(3128)},
                     {"enable_authentication", value(true)},
                     {"proxy_username", value("ユーザー")},
                     {"plugin_count", value(1)},
                     {"plugin", value(value::array_type{
                                    value(dictionary{{"plugin_path", value(plugins.string() + "/")},
                                                     {"plugin_name", value("sample.py")},
                                                     {"plugin_enable", value(true)}})})}});
    const auto before = qiro_test::read_file(home.user_file(APPLICATION_ID_21));
    EXPECT_EQ(access::get_existing_latest_version_user_pref_application_id(), APPLICATION_ID_21);

    EXPECT_EQ(access::read_manager_preference(), sample_record());

    EXPECT_EQ(qiro_test::read_file(home.user_file(APPLICATION_ID_21)), before);
    // Every one of the twelve settings is written, empty texts too, but not the plug-in list.
    auto carried = qiro_test::read_plist_file(home.user_file(APPLICATION_ID_LATEST));
    EXPECT_EQ(carried.find("plugin"), nullptr);
    EXPECT_EQ(carried.get_dictionary()->size(), 12U);
    EXPECT_EQ(access::get_existing_latest_version_user_pref_application_id(),
              APPLICATION_ID_LATEST);
    EXPECT_EQ(access::read_manager_preference(), sample_record());
    ASSERT_EQ(access::read_plugin_info_list().size(), 1U);
}

TEST(manager_preference_test, no_file_or_a_damaged_version_22_file_gives_the_defaults) {
    private_home home;
    // Reading writes nothing.
    EXPECT_EQ(access::read_manager_preference(), manager_preference_data());
    EXPECT_FALSE(std::filesystem::exists(home.root() / "home" / "Library"));
    const std::string damaged = "<?xml version=\"1.0\"?><plist><dict><key>enable_proxy</key>";
    qiro_test::write_file(home.user_file(APPLICATION_ID_LATEST), damaged);
    home.write_user(APPLICATION_ID_21, {{"enable_proxy", value(true)}});
    EXPECT_EQ(access::read_manager_preference(), manager_preference_data());
    EXPECT_FALSE(access::save_manager_preference(sample_record()));
    EXPECT_EQ(qiro_test::read_file(home.user_file(APPLICATION_ID_LATEST)), damaged);
}

} // namespace
