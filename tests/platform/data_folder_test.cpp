#include "platform/data_folder.hpp"

#include "platform/platform_test_support.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>
#include <vector>

namespace {

using namespace qiro_plugin::utility;
namespace fs = std::filesystem;
using platform_test::mode_of;

TEST(data_folder, folders_lie_under_home_and_get_their_permissions_whatever_the_mask) {
    platform_test::scratch_home home;
    const mode_t previous_mask = ::umask(022);
    const std::string user = home.path().string() + "/Library/Preferences/QIRO22/";
    EXPECT_EQ(get_qiro_user_folder(), user);
    EXPECT_FALSE(fs::exists(user));

    const std::string data = home.path().string() + "/Library/Preferences/QIRO Lumen/";
    EXPECT_EQ(get_qiro_lumen_data_folder(), data);
    EXPECT_EQ(mode_of(data), 0755u);
    platform_test::write_file(data + "kept", "data");
    EXPECT_EQ(get_qiro_lumen_data_folder(), data);
    EXPECT_EQ(platform_test::read_file(data + "kept"), "data");

    // A mask that strips the owner's write and search bits must not weaken a plug-in's folder.
    ::umask(0277);
    EXPECT_EQ(create_plugin_preference_path(u"sample"), fs::path(data + "sample/").u16string());
    EXPECT_EQ(mode_of(data + "sample"), 0700u);
    // Names outside ASCII become the file system's UTF-8 bytes.
    EXPECT_EQ(create_plugin_preference_path(u"\u8F9E\u66F8"),
              fs::path(data).u16string() + u"\u8F9E\u66F8/");
    EXPECT_TRUE(fs::is_directory(data + "\xE8\xBE\x9E\xE6\x9B\xB8"));
    // An existing folder is returned as it is, mode untouched.
    fs::permissions(data + "sample", fs::perms::owner_all | fs::perms::group_read);
    EXPECT_EQ(create_plugin_preference_path(u"sample"), fs::path(data + "sample/").u16string());
    EXPECT_EQ(mode_of(data + "sample"), 0740u);
    ::umask(previous_mask);

    // A name that is not one folder inside the data folder, or whose folder cannot be made
    // (the name is too long), gives an empty text and leaves nothing.
    for (const std::u16string& name : std::vector<std::u16string>{
             u"a/b", u"../../escaped", u".", u"..", std::u16string(300, u'x')}) {
        EXPECT_TRUE(create_plugin_preference_path(name).empty()) << name.size();
    }
    EXPECT_FALSE(fs::exists(data + "a"));
    EXPECT_FALSE(fs::exists(home.path() / "Library" / "escaped"));
}

TEST(data_folder, data_folder_that_cannot_be_made_raises_the_second_error) {
    platform_test::scratch_home home;
    platform_test::write_file(home.path() / "Library", "not a folder");
    for (const auto& call : {+[] { get_qiro_lumen_data_folder(); },
                             +[] { create_plugin_preference_path(u"sample"); }}) {
        try {
            call();
            ADD_FAILURE() << "no error";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "utility::get_qiro_user_folder() call error2");
        }
    }
}

} // namespace
