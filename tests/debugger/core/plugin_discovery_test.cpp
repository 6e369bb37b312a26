#include "debugger/core/plugin_discovery.hpp"
#include "debugger/core/plugin_menu_model.hpp"
#include "run_fakes.hpp"
#include "support/scratch_folder.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace qiro_plugin::debugger {
namespace {

namespace fs = std::filesystem;
using titles = std::vector<utf16_string>;

class temporary_folder {
public:
    temporary_folder() {
        const auto text = path.string() + "/";
        folder = utf16_string(text.begin(), text.end());
    }
    void touch(const std::string& a_name) const { test_support::write_file(path / a_name, "x"); }

private:
    test_support::scratch_folder m_scratch{"qiro-discovery"};

public:
    const fs::path path = m_scratch.path();
    utf16_string folder; // with its final slash
};

TEST(plugin_discovery, extension_test_ignores_case_and_needs_a_real_extension) {
    const auto extensions = plugin_extensions();
    ASSERT_EQ(extensions, (std::vector<std::string>{"pl", "py", "rb"}));
    for (const auto* name : {u"Sample.PY", u"a.b.rb", u"変換.Pl"}) {
        EXPECT_TRUE(check_extension(name, extensions));
    }
    for (const auto* name : {u"py", u"a.py.txt", u"a.pyc", u"a.", u".py", u"folder.py/readme"}) {
        EXPECT_FALSE(check_extension(name, extensions));
    }
    EXPECT_FALSE(check_extension(u"a.py", {}));
}

// Letters compare folded to lower case ("_" before every letter), names equal but for case
// upper case first, and anything past ASCII after it.
TEST(plugin_discovery, lists_matching_entries_sorted_with_ascii_case_folded) {
    temporary_folder folder;
    for (const char* name : {"b.py", "A.rb", "a.pl", "C.PY", "a.py", "A.py", "あ.rb", "_x.rb",
                             ".hidden.pl", "notes.txt", "py", "a.py.txt"}) {
        folder.touch(name);
    }
    fs::create_directory(folder.path / "tool.py");
    titles found;
    for (const auto& [in, name] : find_plugin_module(folder.folder, plugin_extensions())) {
        EXPECT_EQ(in, folder.folder);
        found.push_back(name);
    }
    EXPECT_EQ(found, (titles{u".hidden.pl", u"_x.rb", u"a.pl", u"A.py", u"a.py", u"A.rb", u"b.py",
                             u"C.PY", u"tool.py", u"あ.rb"}));
    EXPECT_TRUE(find_plugin_module(folder.folder + u"missing/", plugin_extensions()).empty());
}

TEST(plugin_menu_model, reload_keeps_the_selected_file_and_follows_the_folder) {
    temporary_folder folder;
    testing::recording_sinks alerts;
    plugin_menu_model menu;
    folder.touch("b.py");
    reload_plugins(menu, folder.folder, alerts);
    folder.touch("a.rb");
    reload_plugins(menu, folder.folder, alerts);
    EXPECT_EQ(menu.item_titles(), (titles{u"a.rb", u"b.py"}));
    EXPECT_EQ(menu.selected_index(), 1U) << "b.py stays selected";
    ASSERT_TRUE(menu.selected_plugin());
    EXPECT_EQ(*menu.selected_plugin(), (plugin_entry{folder.folder, u"b.py"}));
    EXPECT_TRUE(menu.is_menu_enabled() && menu.is_run_enabled());

    fs::remove(folder.path / "b.py");
    reload_plugins(menu, folder.folder, alerts);
    EXPECT_EQ(menu.selected_index(), 0U) << "a removed file falls back to item 0";
    EXPECT_TRUE(alerts.events.empty());

    fs::remove(folder.path / "a.rb");
    reload_plugins(menu, folder.folder, alerts);
    EXPECT_TRUE(menu.item_titles().empty());
    EXPECT_FALSE(menu.selected_index());
    EXPECT_FALSE(menu.is_menu_enabled());
    EXPECT_FALSE(menu.is_run_enabled());
    EXPECT_EQ(alerts.events, (std::vector<std::string>{"alert:AlertReloadError"}));

    folder.touch("c.pl");
    reload_plugins(menu, folder.folder, alerts);
    EXPECT_TRUE(menu.is_menu_enabled() && menu.is_run_enabled());
    EXPECT_EQ(menu.selected_index(), 0U);
}

} // namespace
} // namespace qiro_plugin::debugger
