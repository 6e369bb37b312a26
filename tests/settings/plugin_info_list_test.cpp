#include "settings/manager_preference_access.hpp"
#include "settings/preference_keys.hpp"
#include "settings/settings_test_support.hpp"

#include <gtest/gtest.h>

namespace {

using namespace qiro_plugin;
using preferences::preference_value;
using qiro_test::private_home;

using dictionary = preference_value::dictionary_type;
using array = preference_value::array_type;

utf16_string wide(const std::string& a_text) {
    return utf16_string(a_text.begin(), a_text.end());
}

// A plug-in file under the test's root; returns its folder with the final "/".
std::string make_plugin(const private_home& a_home, const std::string& a_relative) {
    const auto path = a_home.root() / "plugins" / a_relative;
    qiro_test::write_file(path, "# plug-in\n");
    return path.parent_path().string() + "/";
}

preference_value entry(const std::string& a_path, const std::string& a_name, bool a_enable = true) {
    return preference_value(dictionary{
        {"plugin_path", preference_value(a_path)},
        {"plugin_name", preference_value(a_name)},
        {"plugin_enable", preference_value(a_enable)},
        {"only_individual_run", preference_value(false)},
    });
}

TEST(plugin_info_list_test, the_user_list_keeps_existing_files_and_at_most_one_hundred) {
    private_home home;
    array entries;
    for (int index = 0; index < 150; ++index) {
        const auto name = "p" + std::to_string(index) + ".py";
        const auto folder = make_plugin(home, name);
        entries.push_back(entry(folder, name, index % 2 == 0));
    }
    entries[3] = preference_value("not a dictionary");
    entries[4] = entry(home.root().string() + "/plugins/", "gone.py");
    entries[5] = preference_value(
        dictionary{{"plugin_path", preference_value(home.root().string() + "/plugins")},
                   {"plugin_name", preference_value("p5.py")},
                   {"plugin_enable", preference_value("yes")},
                   {"only_individual_run", preference_value(1)}});
    qiro_test::write_plist_file(
        home.user_file(APPLICATION_ID_LATEST),
        preference_value(dictionary{{"plugin", preference_value(entries)},
                                    {"plugin_count", preference_value(150)}}));

    const auto list = manager_preference_access::read_plugin_info_list();
    ASSERT_EQ(list.size(), 98U);
    EXPECT_EQ(list.front().plugin_name, u"p0.py");
    EXPECT_EQ(list.front().plugin_path, wide(home.root().string() + "/plugins/"));
    EXPECT_EQ(list.front().plugin_enable, 1U);
    EXPECT_EQ(list[1].plugin_enable, 0U);
    EXPECT_EQ(list[3].plugin_name, u"p5.py");
    EXPECT_EQ(list[3].plugin_path, wide(home.root().string() + "/plugins/"));
    EXPECT_EQ(list[3].plugin_enable, 1U);
    EXPECT_EQ(list[3].only_individual_run, 1U);
    EXPECT_EQ(list[3].add_position, 0xFFFFFFFFU);
    EXPECT_EQ(list.back().plugin_name, u"p99.py");
}

TEST(plugin_info_list_test, the_newest_domain_holding_the_key_decides_even_when_unusable) {
    private_home home;
    const auto folder = make_plugin(home, "good.py");
    qiro_test::write_plist_file(
        home.user_file(APPLICATION_ID_21),
        preference_value(
            dictionary{{"plugin", preference_value(array{entry(folder, "good.py")})}}));
    ASSERT_EQ(manager_preference_access::read_plugin_info_list().size(), 1U);

    qiro_test::write_plist_file(
        home.user_file(APPLICATION_ID_LATEST),
        preference_value(dictionary{{"plugin", preference_value("good.py")}}));
    EXPECT_TRUE(manager_preference_access::read_plugin_info_list().empty());
    qiro_test::write_plist_file(
        home.user_file(APPLICATION_ID_LATEST),
        preference_value(dictionary{{"plugin", preference_value(array{})}}));
    EXPECT_TRUE(manager_preference_access::read_plugin_info_list().empty());
    qiro_test::write_plist_file(home.user_file(APPLICATION_ID_LATEST),
                                preference_value(dictionary{{"other", preference_value(1)}}));
    EXPECT_EQ(manager_preference_access::read_plugin_info_list().size(), 1U);
}

TEST(plugin_info_list_test, saving_the_user_list_writes_count_and_entries) {
    private_home home;
    qiro_test::write_plist_file(
        home.user_file(APPLICATION_ID_LATEST),
        preference_value(dictionary{{"proxy_port", preference_value(8080)}}));
    const auto folder = make_plugin(home, "sub/a.rb");
    qiro_plugin_module_info first;
    first.plugin_path = wide(folder);
    first.plugin_name = u"a.rb";
    first.plugin_enable = 1;
    first.reserved = 9;
    first.add_position = 4;
    qiro_plugin_module_info unwritable = first;
    unwritable.plugin_name = utf16_string(u"\xDC00.py");
    qiro_plugin_module_info second = first;
    second.plugin_path = wide(home.root().string() + "/plugins/sub/../sub");
    second.plugin_enable = 0;
    second.only_individual_run = 1;
    ASSERT_TRUE(manager_preference_access::save_plugin_info_list({first, unwritable, second}));

    const auto stored = qiro_test::read_plist_file(home.user_file(APPLICATION_ID_LATEST));
    EXPECT_EQ(stored,
              preference_value(dictionary{
                  {"proxy_port", preference_value(8080)},
                  {"plugin_count", preference_value(3)},
                  {"plugin", preference_value(array{
                                 entry(folder, "a.rb"),
                                 preference_value(dictionary{
                                     {"plugin_path", preference_value(home.root().string() +
                                                                      "/plugins/sub/../sub")},
                                     {"plugin_name", preference_value("a.rb")},
                                     {"plugin_enable", preference_value(false)},
                                     {"only_individual_run", preference_value(true)},
                                 }),
                             })},
              }));

    const auto list = manager_preference_access::read_plugin_info_list();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[1].plugin_path, wide(folder));
    EXPECT_EQ(list[1].only_individual_run, 1U);
    EXPECT_EQ(list[0].reserved, 0U);
}

TEST(plugin_info_list_test, setup_entries_sort_by_path_and_name_keeping_ties_in_order) {
    private_home home;
    const auto folder_a = make_plugin(home, "a/bc.py");
    const auto folder_b = make_plugin(home, "a/b/c.py");
    make_plugin(home, "z.py");
    const auto root = home.root().string() + "/plugins/";
    auto with_position = [](preference_value a_entry, std::int64_t a_position) {
        a_entry.set("add_position", preference_value(a_position));
        return a_entry;
    };
    qiro_test::write_plist_file(
        home.machine_file(APPLICATION_ID_LATEST),
        preference_value(dictionary{
            {"plugin_setup_info", preference_value(dictionary{
                                      {"z", with_position(entry(root, "z.py"), 0)},
                                      {"first", with_position(entry(folder_a, "bc.py"), 1)},
                                      {"nested", with_position(entry(folder_b, "c.py"), 2)},
                                      {"skipped", preference_value("text")},
                                      {"missing", entry(root, "none.py")},
                                      {"plain", entry(folder_a, "bc.py")},
                                      {"", with_position(entry(root, "z.py"), 5)},
                                      {"after", with_position(entry(root, "z.py"), 6)},
                                  })}}));
    qiro_test::write_plist_file(
        home.machine_file(APPLICATION_ID_21),
        preference_value(dictionary{
            {"plugin_setup_info", preference_value(dictionary{
                                      {"old", with_position(entry(folder_a, "bc.py"), 21)},
                                      {"position as text",
                                       [&] {
                                           auto text_position = entry(folder_b, "c.py");
                                           text_position.set("add_position", preference_value("7"));
                                           return text_position;
                                       }()},
                                  })}}));
    // The user's own domain is not where set-up entries come from.
    qiro_test::write_plist_file(
        home.user_file(APPLICATION_ID_LATEST),
        preference_value(dictionary{
            {"plugin_setup_info", preference_value(dictionary{{"user", entry(root, "z.py")}})}}));

    const auto list = manager_preference_access::read_plugin_setup_info_list();
    std::vector<std::pair<utf16_string, std::uint32_t>> seen;
    for (const auto& info : list) {
        seen.emplace_back(info.plugin_path + info.plugin_name, info.add_position);
    }
    const auto bc = wide(folder_a + "bc.py");
    const auto c = wide(folder_b + "c.py");
    const auto z = wide(root + "z.py");
    EXPECT_EQ(seen, (std::vector<std::pair<utf16_string, std::uint32_t>>{
                        {c, 2}, {c, 0xFFFFFFFFU}, {bc, 1}, {bc, 0xFFFFFFFFU}, {bc, 21}, {z, 0}}));
}

TEST(plugin_info_list_test, setup_order_joins_path_and_name_and_compares_unsigned_units) {
    const qiro_plugin_setup_info_compare less;
    qiro_plugin_module_info first;
    first.plugin_path = u"/a/";
    first.plugin_name = u"bc.py";
    qiro_plugin_module_info second;
    second.plugin_path = u"/a/b";
    second.plugin_name = u"c.py";
    EXPECT_FALSE(less(first, second));
    EXPECT_FALSE(less(second, first));
    second.plugin_name = u"c.py2";
    EXPECT_TRUE(less(first, second));
    EXPECT_FALSE(less(second, first));
    second.plugin_name = utf16_string(u"\xFF01");
    first.plugin_name = u"z";
    first.plugin_path = u"/a/b";
    EXPECT_TRUE(less(first, second));
}

} // namespace
