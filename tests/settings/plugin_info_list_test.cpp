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
using access = manager_preference_access;
using seen_list = std::vector<std::pair<utf16_string, std::uint32_t>>;

utf16_string wide(const std::string& a_text) {
    return utf16_string(a_text.begin(), a_text.end());
}

// A plug-in file under the test's root; returns its folder with the final "/".
std::string make_plugin(const private_home& a_home, const std::string& a_relative) {
    const auto path = a_home.root() / "plugins" / a_relative;
    qiro_test::write_file(path, "# plug-in\n");
    return path.parent_path().string() + "/";
}

preference_value entry(const std::string& a_path, const std::string& a_name, bool a_enable = true,
                       bool a_individual = false) {
    return preference_value(dictionary{
        {"plugin_path", preference_value(a_path)},
        {"plugin_name", preference_value(a_name)},
        {"plugin_enable", preference_value(a_enable)},
        {"only_individual_run", preference_value(a_individual)},
    });
}

TEST(plugin_info_list_test, the_user_list_keeps_existing_files_and_at_most_one_hundred) {
    private_home home;
    const auto root = home.root().string() + "/plugins";
    array entries;
    for (int index = 0; index < 150; ++index) {
        const auto name = "p" + std::to_string(index) + ".py";
        entries.push_back(entry(make_plugin(home, name), name, index % 2 == 0));
    }
    entries[3] = preference_value("not a dictionary");
    entries[4] = entry(root + "/", "gone.py");
    entries[5] = preference_value(dictionary{{"plugin_path", preference_value(root)},
                                             {"plugin_name", preference_value("p5.py")},
                                             {"plugin_enable", preference_value("yes")},
                                             {"only_individual_run", preference_value(1)}});
    qiro_test::write_plist_file(
        home.user_file(APPLICATION_ID_LATEST),
        preference_value(dictionary{{"plugin", preference_value(entries)}}));

    const auto list = access::read_plugin_info_list();
    ASSERT_EQ(list.size(), 98U);
    EXPECT_EQ(list[1].plugin_enable, 0U);
    EXPECT_EQ(list[3].plugin_name, u"p5.py");
    EXPECT_EQ(list[3].plugin_path, wide(root + "/"));
    EXPECT_EQ(list[3].plugin_enable, 1U);
    EXPECT_EQ(list[3].only_individual_run, 1U);
    EXPECT_EQ(list[3].add_position, 0xFFFFFFFFU);
    EXPECT_EQ(list.back().plugin_name, u"p99.py");
}

// The newest domain holding the list decides, even when its list is unusable or empty.
TEST(plugin_info_list_test, the_newest_domain_holding_the_list_decides_and_saving_replaces_it) {
    private_home home;
    const auto latest = home.user_file(APPLICATION_ID_LATEST);
    const auto folder = make_plugin(home, "sub/a.rb");
    qiro_test::write_plist_file(
        home.user_file(APPLICATION_ID_21),
        preference_value(dictionary{{"plugin", preference_value(array{entry(folder, "a.rb")})}}));
    qiro_test::write_plist_file(latest,
                                preference_value(dictionary{{"other", preference_value(1)}}));
    ASSERT_EQ(access::read_plugin_info_list().size(), 1U);
    qiro_test::write_plist_file(latest,
                                preference_value(dictionary{{"proxy_port", preference_value(8080)},
                                                            {"plugin", preference_value("a.rb")}}));
    EXPECT_TRUE(access::read_plugin_info_list().empty());

    qiro_plugin_module_info first;
    first.plugin_path = wide(folder);
    first.plugin_name = u"a.rb";
    first.plugin_enable = 1;
    qiro_plugin_module_info unwritable = first;
    unwritable.plugin_name = utf16_string(u"\xDC00.py");
    qiro_plugin_module_info second = first;
    second.plugin_path = wide(folder + "../sub");
    second.plugin_enable = 0;
    second.only_individual_run = 1;
    ASSERT_TRUE(access::save_plugin_info_list({first, unwritable, second}));
    EXPECT_EQ(
        qiro_test::read_plist_file(latest),
        preference_value(dictionary{
            {"proxy_port", preference_value(8080)},
            {"plugin", preference_value(array{entry(folder, "a.rb"),
                                              entry(folder + "../sub", "a.rb", false, true)})},
            {"plugin_count", preference_value(3)},
        }));
    ASSERT_TRUE(access::save_plugin_info_list({}));
    EXPECT_TRUE(access::read_plugin_info_list().empty());
}

// Path and name compare joined, so "/a/" + "bc.py" equals "/a/b" + "c.py"; such entries keep
// the order they were found in, version 22's before version 21's; an empty key ends a list.
TEST(plugin_info_list_test, setup_entries_sort_by_path_and_name_keeping_ties_in_order) {
    private_home home;
    const auto folder_a = make_plugin(home, "a/bc.py");
    const auto folder_b = make_plugin(home, "a/b/c.py");
    const auto root = make_plugin(home, "z.py");
    auto with_position = [](preference_value a_entry, preference_value a_position) {
        a_entry.set("add_position", a_position);
        return a_entry;
    };
    const auto setup = [](dictionary a_entries) {
        return preference_value(dictionary{{"plugin_setup_info", preference_value(a_entries)}});
    };
    qiro_test::write_plist_file(
        home.machine_file(APPLICATION_ID_LATEST),
        setup({{"z", with_position(entry(root, "z.py"), preference_value(0))},
               {"first", with_position(entry(folder_a, "bc.py"), preference_value(1))},
               {"nested", with_position(entry(folder_b, "c.py"), preference_value(2))},
               {"skipped", preference_value("text")},
               {"missing", entry(root, "none.py")},
               {"plain", entry(folder_a, "bc.py")},
               {"", with_position(entry(root, "z.py"), preference_value(5))},
               {"after", with_position(entry(root, "z.py"), preference_value(6))}}));
    qiro_test::write_plist_file(
        home.machine_file(APPLICATION_ID_21),
        setup({{"old", with_position(entry(folder_a, "bc.py"), preference_value(21))},
               {"text", with_position(entry(folder_b, "c.py"), preference_value("7"))}}));
    // The user's own domain is not where set-up entries come from.
    qiro_test::write_plist_file(home.user_file(APPLICATION_ID_LATEST),
                                setup({{"user", entry(root, "z.py")}}));

    seen_list seen;
    for (const auto& info : access::read_plugin_setup_info_list()) {
        seen.emplace_back(info.plugin_path + info.plugin_name, info.add_position);
    }
    const auto bc = wide(folder_a + "bc.py");
    const auto c = wide(folder_b + "c.py");
    EXPECT_EQ(seen, (seen_list{{c, 2},
                               {c, 0xFFFFFFFFU},
                               {bc, 1},
                               {bc, 0xFFFFFFFFU},
                               {bc, 21},
                               {wide(root + "z.py"), 0}}));
}

} // namespace
