#include "platform/file_path.hpp"

#include "platform/platform_test_support.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using qiro_plugin::utf16_string;
using namespace qiro_plugin::utility;
namespace fs = std::filesystem;

TEST(file_path, make_file_path_resolves_links_and_leaves_missing_paths_unchanged) {
    platform_test::scratch_folder scratch;
    const fs::path root = fs::canonical(scratch.path());
    fs::create_directories(root / "real" / "sub");
    platform_test::write_file(root / "real" / "Script.py", "print(1)\n");
    fs::create_directory_symlink(root / "real", root / "link");
    fs::create_symlink(root / "real" / "Script.py", root / "real" / "alias");
    fs::create_symlink(root / "nowhere", root / "real" / "dangling");
    const utf16_string real = (root / "real").u16string() + u"/";

    struct {
        utf16_string folder;
        utf16_string name;
        bool found;
        utf16_string resolved_folder;
        utf16_string resolved_name;
    } const cases[] = {
        {(root / "link").u16string(), u"Script.py", true, real, u"Script.py"},
        {(root / "link/sub/..").u16string() + u"/", u"alias", true, real, u"Script.py"},
        // A folder alone resolves too: its last component becomes the name.
        {root.u16string(), u"link", true, root.u16string() + u"/", u"real"},
        {real, u"absent.py", false, real, u"absent.py"},
        {real, u"dangling", false, real, u"dangling"},
        {real, u"Script.py/inner", false, real, u"Script.py/inner"},
        // Letter case is not folded on a case-sensitive file system.
        {real, u"script.PY", false, real, u"script.PY"},
    };
    for (const auto& example : cases) {
        utf16_string folder = example.folder;
        utf16_string name = example.name;
        EXPECT_EQ(makeFilePath(folder, name), example.found) << fs::path(example.name);
        EXPECT_EQ(folder, example.resolved_folder) << fs::path(example.name);
        EXPECT_EQ(name, example.resolved_name);
    }

    EXPECT_TRUE(check_file_existence(real + u"Script.py"));
    EXPECT_TRUE(check_file_existence((root / "link").u16string()));
    EXPECT_FALSE(check_file_existence(real + u"dangling"));
    EXPECT_FALSE(check_file_existence(u""));
}

TEST(file_path, file_name_helpers) {
    EXPECT_EQ(convert_unique_file_name(u"Test.py"), u"TEST.PY");
    EXPECT_TRUE(check_file_spec(u"plain name.pl"));
    EXPECT_FALSE(check_file_spec(u"sub/name.pl"));
}

} // namespace
