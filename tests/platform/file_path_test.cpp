#include "platform/file_path.hpp"

#include "platform/platform_test_support.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using qiro_plugin::utf16_string;
using namespace qiro_plugin::utility;

utf16_string utf16_of(const std::filesystem::path& a_path) {
    return a_path.u16string();
}

class file_path_test : public ::testing::Test {
protected:
    void SetUp() override {
        m_root = std::filesystem::canonical(m_scratch.path());
        std::filesystem::create_directories(m_root / "real" / "sub");
        platform_test::write_file(m_root / "real" / "Script.py", "print(1)\n");
        std::filesystem::create_directory_symlink(m_root / "real", m_root / "link");
        std::filesystem::create_symlink(m_root / "real" / "Script.py", m_root / "real" / "alias");
        std::filesystem::create_symlink(m_root / "nowhere", m_root / "real" / "dangling");
    }

    platform_test::scratch_folder m_scratch;
    std::filesystem::path m_root;
};

TEST_F(file_path_test, make_file_path_resolves_links_and_dot_components) {
    const utf16_string expected_folder = utf16_of(m_root / "real") + u"/";

    utf16_string folder = utf16_of(m_root / "link");
    utf16_string name = u"Script.py";
    ASSERT_TRUE(makeFilePath(folder, name));
    EXPECT_EQ(folder, expected_folder);
    EXPECT_EQ(name, u"Script.py");

    folder = utf16_of(m_root / "link" / "sub" / "..") + u"/";
    name = u"alias";
    ASSERT_TRUE(makeFilePath(folder, name));
    EXPECT_EQ(folder, expected_folder);
    EXPECT_EQ(name, u"Script.py");

    // A folder alone resolves too: its last component becomes the name.
    folder = utf16_of(m_root);
    name = u"link";
    ASSERT_TRUE(makeFilePath(folder, name));
    EXPECT_EQ(folder, utf16_of(m_root) + u"/");
    EXPECT_EQ(name, u"real");
}

TEST_F(file_path_test, make_file_path_leaves_missing_paths_unchanged) {
    for (const utf16_string missing : {u"absent.py", u"dangling", u"Script.py/inner"}) {
        utf16_string folder = utf16_of(m_root / "real") + u"/";
        utf16_string name = missing;
        EXPECT_FALSE(makeFilePath(folder, name));
        EXPECT_EQ(folder, utf16_of(m_root / "real") + u"/");
        EXPECT_EQ(name, missing);
    }
    // Letter case is not folded on a case-sensitive file system.
    utf16_string folder = utf16_of(m_root / "real");
    utf16_string name = u"script.PY";
    EXPECT_FALSE(makeFilePath(folder, name));
}

TEST_F(file_path_test, existence_and_name_helpers) {
    EXPECT_TRUE(check_file_existence(utf16_of(m_root / "real" / "Script.py")));
    EXPECT_TRUE(check_file_existence(utf16_of(m_root / "link")));
    EXPECT_FALSE(check_file_existence(utf16_of(m_root / "real" / "dangling")));
    EXPECT_FALSE(check_file_existence(utf16_of(m_root / "absent")));
    EXPECT_FALSE(check_file_existence(u""));

    EXPECT_EQ(get_real_file_name(u"/any/", u"Mixed.Rb"), u"Mixed.Rb");
    EXPECT_EQ(get_convert_path(u"/a/B c/"), u"/a/B c/");
    EXPECT_EQ(convert_unique_file_name(u"Test.py"), u"TEST.PY");
    EXPECT_TRUE(check_file_spec(u"plain name.pl"));
    EXPECT_FALSE(check_file_spec(u"sub/name.pl"));
}

} // namespace
