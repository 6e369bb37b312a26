#include "debugger/core/plugin_discovery.hpp"
#include "debugger/core/plugin_menu_model.hpp"
#include "recording_sinks.hpp"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace qiro_plugin::debugger {
namespace {

namespace fs = std::filesystem;

class temporary_folder {
public:
    temporary_folder() {
        std::string pattern = (fs::temp_directory_path() / "qiro-discovery-XXXXXX").string();
        m_path = mkdtemp(pattern.data());
    }
    ~temporary_folder() { fs::remove_all(m_path); }
    const fs::path& path() const { return m_path; }
    utf16_string folder() const {
        const auto text = m_path.string() + "/";
        return utf16_string(text.begin(), text.end());
    }
    void touch(const std::string& a_name) const { std::ofstream(m_path / a_name) << "x"; }

private:
    fs::path m_path;
};

std::vector<utf16_string> names(const plugin_list& a_list) {
    std::vector<utf16_string> result;
    for (const auto& entry : a_list) {
        result.push_back(entry.second);
    }
    return result;
}

TEST(plugin_discovery, extension_test_ignores_case_and_needs_a_real_extension) {
    const auto extensions = plugin_extensions();
    ASSERT_EQ(extensions, (std::vector<std::string>{"pl", "py", "rb"}));
    EXPECT_TRUE(check_extension(u"Sample.PY", extensions));
    EXPECT_TRUE(check_extension(u"a.b.rb", extensions));
    EXPECT_TRUE(check_extension(u"変換.Pl", extensions));
    EXPECT_FALSE(check_extension(u"py", extensions));
    EXPECT_FALSE(check_extension(u"a.py.txt", extensions));
    EXPECT_FALSE(check_extension(u"a.pyc", extensions));
    EXPECT_FALSE(check_extension(u"a.", extensions));
    EXPECT_FALSE(check_extension(u".py", extensions));
    EXPECT_FALSE(check_extension(u"folder.py/readme", extensions));
    EXPECT_FALSE(check_extension(u"a.py", {}));
}

TEST(plugin_discovery, lists_matching_entries_sorted_with_ascii_case_folded) {
    temporary_folder folder;
    for (const char* name :
         {"b.py", "A.rb", "a.pl", "C.PY", "notes.txt", "py", "a.py.txt", "_x.rb", ".hidden.pl"}) {
        folder.touch(name);
    }
    fs::create_directory(folder.path() / "tool.py");
    const auto found = find_plugin_module(folder.folder(), plugin_extensions());
    EXPECT_EQ(names(found), (std::vector<utf16_string>{u".hidden.pl", u"_x.rb", u"a.pl", u"A.rb",
                                                       u"b.py", u"C.PY", u"tool.py"}));
    for (const auto& entry : found) {
        EXPECT_EQ(entry.first, folder.folder());
    }

    // The folder may be given without its final slash; the entries still carry one.
    auto without_slash = folder.folder();
    without_slash.pop_back();
    const auto again = find_plugin_module(without_slash, plugin_extensions());
    ASSERT_EQ(again.size(), found.size());
    EXPECT_EQ(again.front().first, folder.folder());

    EXPECT_TRUE(find_plugin_module(folder.folder() + u"missing/", plugin_extensions()).empty());
    EXPECT_TRUE(find_plugin_module(utf16_string{}, plugin_extensions()).empty());
}

TEST(plugin_discovery, listing_order_folds_only_ascii_letters) {
    EXPECT_TRUE(plugin_file_name_less(u"a.py", u"B.py"));
    EXPECT_FALSE(plugin_file_name_less(u"B.py", u"a.py"));
    EXPECT_TRUE(plugin_file_name_less(u"A.py", u"a.py")); // equal but for case: a fixed order
    EXPECT_FALSE(plugin_file_name_less(u"a.py", u"A.py"));
    EXPECT_TRUE(plugin_file_name_less(u"ab", u"abc"));
    // "_" (0x5F) lies between the upper-case and the lower-case letters; folded letters are
    // lower case, so it comes before every letter.
    EXPECT_TRUE(plugin_file_name_less(u"_.py", u"Z.py"));
    EXPECT_TRUE(plugin_file_name_less(u"_.py", u"a.py"));
    EXPECT_TRUE(plugin_file_name_less(u"z.py", u"あ.py"));
}

TEST(plugin_discovery, chosen_folder_is_absolute_and_ends_in_a_slash) {
    const auto made = make_plugin_folder("some/where");
    ASSERT_FALSE(made.empty());
    EXPECT_EQ(made.front(), u'/');
    EXPECT_EQ(made.back(), u'/');
    EXPECT_NE(made.find(u"some/where/"), utf16_string::npos);

    const auto beside = default_plugin_folder();
    ASSERT_GT(beside.size(), 8U);
    EXPECT_EQ(beside.substr(beside.size() - 8), u"/plugin/");

    set_plugin_folder(u"/tmp/elsewhere");
    EXPECT_EQ(plugin_folder(), u"/tmp/elsewhere/");
    set_plugin_folder({});
    EXPECT_EQ(plugin_folder(), beside);
}

TEST(plugin_menu_model, reload_keeps_the_selected_file_and_follows_the_folder) {
    temporary_folder folder;
    testing::recording_sinks alerts;
    plugin_menu_model menu;
    EXPECT_FALSE(menu.is_menu_enabled());
    EXPECT_FALSE(menu.selected_plugin());

    folder.touch("b.py");
    reload_plugins(menu, folder.folder(), alerts);
    EXPECT_EQ(menu.selected_index(), 0U);
    folder.touch("a.rb");
    reload_plugins(menu, folder.folder(), alerts);
    EXPECT_EQ(menu.item_titles(), (std::vector<utf16_string>{u"a.rb", u"b.py"}));
    EXPECT_EQ(menu.selected_index(), 1U) << "b.py stays selected";
    ASSERT_TRUE(menu.selected_plugin());
    EXPECT_EQ(menu.selected_plugin()->second, u"b.py");
    EXPECT_EQ(menu.selected_plugin()->first, folder.folder());
    EXPECT_TRUE(menu.is_menu_enabled());
    EXPECT_TRUE(menu.is_run_enabled());

    fs::remove(folder.path() / "b.py");
    reload_plugins(menu, folder.folder(), alerts);
    EXPECT_EQ(menu.selected_index(), 0U) << "a removed file falls back to item 0";
    EXPECT_TRUE(alerts.events.empty());

    menu.select(7);
    EXPECT_EQ(menu.selected_index(), 0U) << "an index out of range is ignored";

    fs::remove(folder.path() / "a.rb");
    reload_plugins(menu, folder.folder(), alerts);
    EXPECT_TRUE(menu.item_titles().empty());
    EXPECT_FALSE(menu.selected_index());
    EXPECT_FALSE(menu.is_menu_enabled());
    EXPECT_FALSE(menu.is_run_enabled());
    EXPECT_EQ(alerts.events, (std::vector<std::string>{"alert:AlertReloadError"}));

    folder.touch("c.pl");
    reload_plugins(menu, folder.folder(), alerts);
    EXPECT_TRUE(menu.is_menu_enabled());
    EXPECT_TRUE(menu.is_run_enabled());
    EXPECT_EQ(menu.selected_index(), 0U);
    EXPECT_EQ(alerts.events.size(), 1U);
}

} // namespace
} // namespace qiro_plugin::debugger
