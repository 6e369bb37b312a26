#include "runtime/script_file_access.hpp"
#include "runtime/sha_hash.hpp"
#include "support/scratch_folder.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

TEST(create_sha_hash, gives_upper_case_hex_digest_and_nothing_for_empty_text) {
    using qiro_plugin::create_sha_hash;
    EXPECT_EQ(create_sha_hash(""), "");
    EXPECT_EQ(create_sha_hash(std::string(1000000, 'a')),
              "34AA973CD4C4DAA4F61EEB2BDBAD27316534016F");

    // Every length around the one- and two-block padding edges, against Python's hashlib.
    std::string digests;
    for (int length = 1; length <= 140; ++length) {
        std::string text;
        for (int i = 0; i < length; ++i) {
            text += static_cast<char>((i * 37 + length) & 0xFF);
        }
        digests += create_sha_hash(text) + "\n";
    }
    FILE* pipe = ::popen("python3 -c 'import hashlib\nfor n in range(1, 141): print(hashlib.sha1("
                         "bytes((i * 37 + n) & 255 for i in range(n))).hexdigest().upper())'",
                         "r");
    ASSERT_NE(pipe, nullptr);
    std::string reference;
    for (char line[64]; std::fgets(line, sizeof line, pipe) != nullptr;) {
        reference += line;
    }
    EXPECT_EQ(::pclose(pipe), 0);
    EXPECT_EQ(digests, reference);
}

TEST(script_file_access, writes_privately_accepts_only_its_own_text_and_always_removes) {
    const test_support::scratch_folder scratch("qiro-bridge-file");
    const fs::path& folder = scratch.path();
    const std::string prefix = folder.string() + "/";
    using test_support::read_file;
    {
        qiro_plugin::script_file_access file(prefix, "a.py", "print%28%22x%22%29+%23");
        EXPECT_EQ(read_file(folder / "a.py"), "print(\"x\") #");
        struct stat info {};
        ASSERT_EQ(::stat(file.get_path().c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777, 0600u);
    }
    EXPECT_FALSE(fs::exists(folder / "a.py"));

    // A leftover with the same text is taken over (and removed); anything else is refused.
    test_support::write_file(folder / "same.py", "x");
    { qiro_plugin::script_file_access same(prefix, "same.py", "%78"); }
    EXPECT_FALSE(fs::exists(folder / "same.py"));
    test_support::write_file(folder / "other.py", "y");
    fs::create_symlink(folder / "target", folder / "link.py");
    fs::create_directory(folder / "dir.py");
    ASSERT_EQ(::mkfifo((folder / "fifo.py").c_str(), 0600), 0);
    for (const char* name : {"other.py", "link.py", "dir.py", "fifo.py"}) {
        EXPECT_THROW(qiro_plugin::script_file_access(prefix, name, "%78"), std::runtime_error)
            << name;
    }
    EXPECT_EQ(read_file(folder / "other.py"), "y");
    EXPECT_FALSE(fs::exists(folder / "target"));
}
