#include "platform/data_folder.hpp"

#include "platform/platform_test_support.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <pwd.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using qiro_plugin::utf16_string;
using namespace qiro_plugin::utility;
namespace fs = std::filesystem;

unsigned mode_of(const fs::path& a_path) {
    struct stat status {};
    EXPECT_EQ(::stat(a_path.c_str(), &status), 0) << a_path;
    return status.st_mode & 07777;
}

void expect_error(void (*a_call)(), const std::string& a_text) {
    try {
        a_call();
        ADD_FAILURE() << "no error, expected " << a_text;
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()), a_text);
    }
}

// Restores the process's file-creation mask.
struct umask_override {
    explicit umask_override(mode_t a_mask) : previous(::umask(a_mask)) {}
    ~umask_override() { ::umask(previous); }
    mode_t previous;
};

TEST(data_folder, user_folder_lies_under_home_and_is_not_created) {
    platform_test::scratch_home home;
    const std::string expected = home.path().string() + "/Library/Preferences/QIRO22/";
    EXPECT_EQ(get_qiro_user_folder(), expected);
    EXPECT_FALSE(fs::exists(expected));

    platform_test::environment_override trailing("HOME", home.path().string() + "/");
    EXPECT_EQ(get_qiro_user_folder(), expected);
}

TEST(data_folder, unset_home_falls_back_to_the_password_database) {
    const passwd* entry = ::getpwuid(::getuid());
    ASSERT_NE(entry, nullptr);
    std::string home = entry->pw_dir;
    if (home == "/") {
        home.clear();
    }
    platform_test::environment_override unset("HOME", std::nullopt);
    EXPECT_EQ(get_qiro_user_folder(), home + "/Library/Preferences/QIRO22/");
}

TEST(data_folder, data_folder_is_created_once_with_default_permissions) {
    platform_test::scratch_home home;
    umask_override mask(022);
    const std::string expected = home.path().string() + "/Library/Preferences/QIRO Lumen/";
    EXPECT_EQ(get_qiro_lumen_data_folder(), expected);
    EXPECT_TRUE(fs::is_directory(expected));
    EXPECT_EQ(mode_of(expected), 0755u);

    platform_test::write_file(fs::path(expected) / "kept", "data");
    EXPECT_EQ(get_qiro_lumen_data_folder(), expected);
    EXPECT_EQ(platform_test::read_file(fs::path(expected) / "kept"), "data");
}

TEST(data_folder, data_folder_that_cannot_be_made_raises_the_second_error) {
    platform_test::scratch_home home;
    platform_test::write_file(home.path() / "Library", "not a folder");
    expect_error([] { get_qiro_lumen_data_folder(); },
                 "utility::get_qiro_user_folder() call error2");
    expect_error([] { create_plugin_preference_path(u"sample"); },
                 "utility::get_qiro_user_folder() call error2");
}

TEST(data_folder, plugin_folder_is_created_private_whatever_the_mask) {
    platform_test::scratch_home home;
    const std::string data = get_qiro_lumen_data_folder();
    // A mask that strips the owner's write and search bits must not weaken the new folder.
    umask_override mask(0277);

    const utf16_string path = create_plugin_preference_path(u"sample");
    EXPECT_EQ(path, fs::path(data + "sample/").u16string());
    EXPECT_EQ(mode_of(data + "sample"), 0700u);

    // Names outside ASCII become the file system's UTF-8 bytes.
    const utf16_string japanese = create_plugin_preference_path(u"\u8F9E\u66F8");
    EXPECT_EQ(japanese, fs::path(data).u16string() + u"\u8F9E\u66F8/");
    EXPECT_TRUE(fs::is_directory(data + "\xE8\xBE\x9E\xE6\x9B\xB8"));

    // An existing folder is returned as it is, mode untouched.
    fs::permissions(data + "sample", fs::perms::owner_all | fs::perms::group_read);
    EXPECT_EQ(create_plugin_preference_path(u"sample"), path);
    EXPECT_EQ(mode_of(data + "sample"), 0740u);
}

TEST(data_folder, plugin_folder_that_cannot_be_made_gives_empty_text) {
    platform_test::scratch_home home;
    const std::string data = get_qiro_lumen_data_folder();
    platform_test::write_file(data + "blocker", "file");
    EXPECT_TRUE(create_plugin_preference_path(u"blocker/inner").empty());
    EXPECT_FALSE(fs::exists(data + "blocker/inner"));
}

} // namespace
