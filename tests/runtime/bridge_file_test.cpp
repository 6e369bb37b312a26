#include "runtime/script_file_access.hpp"
#include "runtime/sha_hash.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

TEST(create_sha_hash, gives_upper_case_hex_digest_and_nothing_for_empty_text) {
    EXPECT_EQ(qiro_plugin::create_sha_hash(""), "");
    EXPECT_EQ(qiro_plugin::create_sha_hash("abc"), "A9993E364706816ABA3E25717850C26C9CD0D89D");
}

TEST(script_file_access, writes_privately_accepts_only_its_own_text_and_always_removes) {
    const fs::path folder = fs::temp_directory_path() / ("bridge_file_" + std::to_string(getpid()));
    fs::create_directories(folder);
    const std::string prefix = folder.string() + "/";
    const auto read = [](const fs::path& a_path) {
        std::ifstream in(a_path, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    {
        qiro_plugin::script_file_access file(prefix, "a.py", "print%28%22x%22%29+%23");
        EXPECT_EQ(read(folder / "a.py"), "print(\"x\") #");
        struct stat info {};
        ASSERT_EQ(::stat(file.get_path().c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, 0600u);
    }
    EXPECT_FALSE(fs::exists(folder / "a.py"));

    // A leftover with the same text is taken over (and removed); anything else is refused.
    std::ofstream(folder / "same.py") << "x";
    { qiro_plugin::script_file_access same(prefix, "same.py", "%78"); }
    EXPECT_FALSE(fs::exists(folder / "same.py"));
    std::ofstream(folder / "other.py") << "y";
    fs::create_symlink(folder / "target", folder / "link.py");
    fs::create_directory(folder / "dir.py");
    ASSERT_EQ(::mkfifo((folder / "fifo.py").c_str(), 0600), 0);
    for (const char* name : {"other.py", "link.py", "dir.py", "fifo.py"}) {
        EXPECT_THROW(qiro_plugin::script_file_access(prefix, name, "%78"), std::runtime_error)
            << name;
    }
    EXPECT_EQ(read(folder / "other.py"), "y");
    EXPECT_FALSE(fs::exists(folder / "target"));
    fs::remove_all(folder);
}
