#include "core/plugin_discovery.hpp"
#include "core/plugin_menu_model.hpp"
#include "support/run_fakes.hpp"
#include "support/scratch_folder.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace qiro_plugin::debugger {
namespace {

namespace fs = std::filesystem;
using titles = std::vector<utf16_string>;

// A scratch folder named as the run logic names folders: UTF-16, with its final slash.
struct plugin_folder_fixture {
    void touch(const std::string& a_name) const { test_support::write_file(path / a_name, "x"); }

    test_support::scratch_folder scratch{"qiro-discovery"};
    const fs::path path = scratch.path();
    const std::string text = path.string() + "/";
    const utf16_string folder{text.begin(), text.end()};
};

// An extension matches whatever its letters' case, after a dot that does not open the name.
// Letters compare folded to lower case ("_" before every letter), names equal but for case
// upper case first, and anything past ASCII after it.
TEST(plugin_discovery, lists_files_of_the_three_extensions_sorted_with_ascii_case_folded) {
    plugin_folder_fixture folder;
    for (const char* name :
         {"b.py", "A.rb", "a.pl", "C.PY", "a.py", "A.py", "あ.rb", "_x.rb", "変換.Pl", ".hidden.pl",
          "a.b.rb", "notes.txt", "py", "a.py.txt", "a.pyc", "a.", ".py"}) {
        folder.touch(name);
    }
    fs::create_directory(folder.path / "tool.py");
    plugin_list expected;
    for (const auto* name : {u".hidden.pl", u"_x.rb", u"a.b.rb", u"a.pl", u"A.py", u"a.py", u"A.rb",
                             u"b.py", u"C.PY", u"tool.py", u"あ.rb", u"変換.Pl"}) {
        expected.emplace_back(folder.folder, name);
    }
    EXPECT_EQ(find_plugin_module(folder.folder, plugin_extensions()), expected);
    EXPECT_TRUE(find_plugin_module(folder.folder + u"missing/", plugin_extensions()).empty());
    EXPECT_FALSE(check_extension(u"folder.py/readme", plugin_extensions()));
    EXPECT_FALSE(check_extension(u"a.py", {}));
}

TEST(plugin_menu_model, reload_keeps_the_selected_file_and_follows_the_folder) {
    plugin_folder_fixture folder;
    testing::recording_sinks alerts;
    plugin_menu_model menu;
    folder.touch("b.py");
    reload_plugins(menu, folder.folder, alerts);
    folder.touch("a.rb");
    reload_plugins(menu, folder.folder, alerts);
    EXPECT_EQ(menu.item_titles(), (titles{u"a.rb", u"b.py"}));
    EXPECT_EQ(menu.selected_index(), 1U) << "b.py stays selected";
    EXPECT_EQ(menu.selected_plugin(), (plugin_entry{folder.folder, u"b.py"}));
    EXPECT_TRUE(menu.is_menu_enabled() && menu.is_run_enabled());

    fs::remove(folder.path / "b.py");
    reload_plugins(menu, folder.folder, alerts);
    EXPECT_EQ(menu.selected_index(), 0U) << "a removed file falls back to item 0";
    EXPECT_TRUE(alerts.events.empty());

    fs::remove(folder.path / "a.rb");
    reload_plugins(menu, folder.folder, alerts);
    EXPECT_TRUE(menu.item_titles().empty());
    EXPECT_FALSE(menu.selected_index());
    EXPECT_FALSE(menu.is_menu_enabled() || menu.is_run_enabled());
    EXPECT_EQ(alerts.log(), "alert:AlertReloadError");

    folder.touch("c.pl");
    reload_plugins(menu, folder.folder, alerts);
    EXPECT_TRUE(menu.is_menu_enabled() && menu.is_run_enabled());
    EXPECT_EQ(menu.selected_index(), 0U);
}

} // namespace
} // namespace qiro_plugin::debugger
