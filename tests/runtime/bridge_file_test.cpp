#include "runtime/runtime_fixture.hpp"
#include "runtime/script_file_access.hpp"
#include "runtime/sha_hash.hpp"
#include "runtime/unique_file_name.hpp"
#include "text/url_xml_escape.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <regex>
#include <set>

namespace fs = std::filesystem;
using namespace qiro_plugin;
using qiro_test::read_file;
using qiro_test::write_file;

namespace {

class bridge_file : public qiro_test::runtime_fixture {};

const std::string SCRIPT = "#! /usr/bin/python\r\n# coding:utf-8\r\nprint('syntax ok')\r\n";

} // namespace

TEST(create_sha_hash, gives_upper_case_hex_digest_and_nothing_for_empty_text) {
    EXPECT_EQ(create_sha_hash(""), "");
    EXPECT_EQ(create_sha_hash("abc"), "A9993E364706816ABA3E25717850C26C9CD0D89D");
    EXPECT_EQ(create_sha_hash("The quick brown fox jumps over the lazy dog"),
              "2FD4E1C67A2D28FCED849EE1BB76E7391B93EB12");
    EXPECT_EQ(create_sha_hash(std::string("a\0b", 3)), "4A3DEC2D1F8245280855C42DB0EE4239F917FDB8");
}

TEST_F(bridge_file, unique_names_are_forty_hex_digits_and_differ_each_time) {
    const std::regex pattern("[0-9A-F]{40}\\.rb");
    std::set<std::string> names;
    for (int i = 0; i < 50; ++i) {
        const std::string name = get_unique_file_name(m_root.string() + "/", ".rb");
        ASSERT_TRUE(std::regex_match(name, pattern)) << name;
        names.insert(name);
    }
    EXPECT_EQ(names.size(), 50U);
}

TEST_F(bridge_file, writes_the_decoded_script_privately_and_removes_it) {
    const std::string folder = m_root.string() + "/";
    const fs::path path = m_root / "B.py";
    {
        const script_file_access file(folder, "B.py", utility::url_encode(SCRIPT));
        EXPECT_EQ(file.get_path(), path.string());
        EXPECT_EQ(read_file(path), SCRIPT);
        struct stat status {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0600U);
    }
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(bridge_file, accepts_a_leftover_with_the_same_text_and_removes_it) {
    const std::string folder = m_root.string() + "/";
    write_file(m_root / "same.py", SCRIPT);
    write_file(m_root / "same_nul.py", SCRIPT + std::string("\0tail", 5));
    {
        const script_file_access same(folder, "same.py", utility::url_encode(SCRIPT));
        const script_file_access same_nul(folder, "same_nul.py", utility::url_encode(SCRIPT));
    }
    EXPECT_FALSE(fs::exists(m_root / "same.py"));
    EXPECT_FALSE(fs::exists(m_root / "same_nul.py"));
}

TEST_F(bridge_file, refuses_other_content_links_special_files_and_missing_folders) {
    const std::string folder = m_root.string() + "/";
    const std::string encoded = utility::url_encode(SCRIPT);
    const auto expect_fault = [&](const std::string& a_folder, const std::string& a_name) {
        try {
            const script_file_access file(a_folder, a_name, encoded);
            ADD_FAILURE() << "accepted " << a_folder << a_name;
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "script_file_access::script_file_access() : fault.");
        }
    };

    write_file(m_root / "other.py", SCRIPT + "# changed\r\n");
    expect_fault(folder, "other.py");
    EXPECT_EQ(read_file(m_root / "other.py"), SCRIPT + "# changed\r\n");

    write_file(m_root / "shorter.py", SCRIPT.substr(0, 10));
    expect_fault(folder, "shorter.py");

    // A link is never followed, not even to a file holding the very same text.
    write_file(m_root / "target.py", SCRIPT);
    fs::create_symlink(m_root / "target.py", m_root / "link.py");
    expect_fault(folder, "link.py");
    fs::create_symlink(m_root / "nowhere.py", m_root / "dangling.py");
    expect_fault(folder, "dangling.py");
    EXPECT_FALSE(fs::exists(m_root / "nowhere.py"));
    EXPECT_EQ(read_file(m_root / "target.py"), SCRIPT);

    ASSERT_EQ(mkfifo((m_root / "fifo.py").c_str(), 0600), 0);
    expect_fault(folder, "fifo.py");
    fs::create_directory(m_root / "folder.py");
    expect_fault(folder, "folder.py");

    expect_fault(folder + "missing/", "file.py");
    EXPECT_FALSE(fs::exists(m_root / "missing"));
}
