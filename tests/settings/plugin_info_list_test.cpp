#include "settings/manager_preference_access.hpp"
#include "settings/preference_keys.hpp"
#include "settings/settings_test_support.hpp"

#include <gtest/gtest.h>

namespace {

using namespace qiro_plugin;
using value = preferences::preference_value;
using qiro_test::private_home;
using dictionary = value::dictionary_type;
using array = value::array_type;
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

value entry(const std::string& a_path, const std::string& a_name, bool a_enable = true,
            bool a_individual = false) {
    return value(dictionary{{"plugin_path", value(a_path)},
                            {"plugin_name", value(a_name)},
                            {"plugin_enable", value(a_enable)},
                            {"only_individual_run", value(a_individual)}});
}

TEST(plugin_info_list_test, the_user_list_keeps_existing_files_and_at_most_one_hundred) {
    private_home home;
    const auto root = home.root().string() + "/plugins";
    array entries;
    for (int index = 0; index < 150; ++index) {
        std::string name = "p";
        name += std::to_string(index) + ".py";
        entries.push_back(entry(make_plugin(home, name), name, index % 2 == 0));
    }
    entries[3] = value("not a dictionary");
    entries[4] = entry(root + "/", "gone.py");
    entries[5] = value(dictionary{{"plugin_path", value(root)},
                                  {"plugin_name", value("p5.py")},
                                  {"plugin_enable", value("yes")},
                                  {"only_individual_run", value(1)}});
    home.write_user(APPLICATION_ID_LATEST, {{"plugin", value(entries)}});

    const auto list = access::read_plugin_info_list();
    ASSERT_EQ(list.size(), 98U);
    EXPECT_EQ(list[1].plugin_enable, 0U);
    EXPECT_EQ(list[3].plugin_name, u"p5.py");
    EXPECT_EQ(list[3].plugin_path, wide(root + "/"));
    EXPECT_EQ(list[3].plugin_enable, 1U);
    EXPECT_EQ(list[3].only_individual_run, 1U);
    EXPECT_EQ(list.back().plugin_name, u"p99.py");
}

// The newest domain holding the list decides, even when its list is unusable or empty.
TEST(plugin_info_list_test, the_newest_domain_holding_the_list_decides_and_saving_replaces_it) {
    private_home home;
    const auto folder = make_plugin(home, "sub/a.rb");
    home.write_user(APPLICATION_ID_21, {{"plugin", value(array{entry(folder, "a.rb")})}});
    home.write_user(APPLICATION_ID_LATEST, {{"other", value(1)}});
    ASSERT_EQ(access::read_plugin_info_list().size(), 1U);
    home.write_user(APPLICATION_ID_LATEST, {{"plugin", value("a.rb")}});
    EXPECT_TRUE(access::read_plugin_info_list().empty());

    // Path, name, enable, individual run, reserved, add position; the entry whose name no
    // encoder accepts is left out, but still counted.
    ASSERT_TRUE(access::save_plugin_info_list({{wide(folder), u"a.rb", 1, 0, 0, 0},
                                               {wide(folder), u"\xDC00.py", 1, 0, 0, 0},
                                               {wide(folder + "../sub"), u"a.rb", 0, 1, 0, 0}}));
    EXPECT_EQ(
        qiro_test::read_plist_file(home.user_file(APPLICATION_ID_LATEST)),
        value(dictionary{{"plugin", value(array{entry(folder, "a.rb"),
                                                entry(folder + "../sub", "a.rb", false, true)})},
                         {"plugin_count", value(3)}}));
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
    const auto placed = [](const std::string& a_path, const char* a_name, value a_position) {
        auto placed_entry = entry(a_path, a_name);
        placed_entry.set("add_position", a_position);
        return placed_entry;
    };
    const auto setup = [](dictionary a_entries) {
        return dictionary{{"plugin_setup_info", value(a_entries)}};
    };
    home.write_machine(APPLICATION_ID_LATEST, setup({{"z", placed(root, "z.py", value(0))},
                                                     {"first", placed(folder_a, "bc.py", value(1))},
                                                     {"nested", placed(folder_b, "c.py", value(2))},
                                                     {"skipped", value("text")},
                                                     {"missing", entry(root, "none.py")},
                                                     {"plain", entry(folder_a, "bc.py")},
                                                     {"", placed(root, "z.py", value(5))},
                                                     {"after", placed(root, "z.py", value(6))}}));
    home.write_machine(APPLICATION_ID_21, setup({{"old", placed(folder_a, "bc.py", value(21))},
                                                 {"text", placed(folder_b, "c.py", value("7"))}}));
    // The user's own domain is not where set-up entries come from.
    home.write_user(APPLICATION_ID_LATEST, setup({{"user", entry(root, "z.py")}}));

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
