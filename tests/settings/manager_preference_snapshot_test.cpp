#include "settings/manager_preference_access.hpp"
#include "settings/manager_preference_snapshot.hpp"
#include "settings/settings_test_support.hpp"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

using namespace qiro_plugin;
using qiro_test::private_home;
using value = preferences::preference_value;

// The file's bytes replaced where they are: same inode and size, the old modification time.
void overwrite_keeping_identity(const std::filesystem::path& a_path, const std::string& a_bytes) {
    struct stat before {};
    ASSERT_EQ(::stat(a_path.c_str(), &before), 0);
    ASSERT_EQ(static_cast<std::size_t>(before.st_size), a_bytes.size());
    qiro_test::write_file(a_path, a_bytes);
    const timespec times[2] = {before.st_atim, before.st_mtim};
    ASSERT_EQ(::utimensat(AT_FDCWD, a_path.c_str(), times, 0), 0);
    struct stat after {};
    ASSERT_EQ(::stat(a_path.c_str(), &after), 0);
    ASSERT_EQ(after.st_ino, before.st_ino);
}

TEST(manager_preference_snapshot_test, reads_again_exactly_when_a_file_it_depends_on_changes) {
    private_home home;
    manager_preference_snapshot snapshot;
    // No file yet: the defaults, then a version 2.1 file that appears is carried over and seen.
    EXPECT_EQ(snapshot.read(), manager_preference_data());
    home.write_user(APPLICATION_ID_21, {{"proxy_address", value("first.example")}});
    EXPECT_EQ(snapshot.read().proxy_address, u"first.example");
    EXPECT_TRUE(std::filesystem::exists(home.user_file(APPLICATION_ID_LATEST)));

    // A new file for the latest version (replaced by rename, as the manager writes it).
    const auto next = home.root() / "next.plist";
    qiro_test::write_plist_file(
        next, value(value::dictionary_type{{"proxy_address", value("second.example")}}));
    std::filesystem::rename(next, home.user_file(APPLICATION_ID_LATEST));
    EXPECT_EQ(snapshot.read().proxy_address, u"second.example");

    // Bytes changed behind an unchanged identity are not looked at: the snapshot is kept...
    const auto path = home.user_file(APPLICATION_ID_LATEST);
    std::string bytes = qiro_test::read_file(path);
    bytes.replace(bytes.find("second"), 6, "third!");
    overwrite_keeping_identity(path, bytes);
    EXPECT_EQ(snapshot.read().proxy_address, u"second.example");
    // ...while a run that reads on its own sees them, and so does the snapshot once the
    // modification time moves, or this process records a change of its own.
    EXPECT_EQ(manager_preference_access::read_manager_preference().proxy_address,
              u"third!.example");
    const timespec later[2] = {{0, UTIME_OMIT}, {2000000000, 5}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), later, 0), 0);
    EXPECT_EQ(snapshot.read().proxy_address, u"third!.example");
    preferences::set_value("proxy_address", value("fourth.example"), APPLICATION_ID_LATEST,
                           preferences::preference_scope::current_user_any_host);
    EXPECT_EQ(snapshot.read().proxy_address, u"fourth.example");
}

} // namespace
