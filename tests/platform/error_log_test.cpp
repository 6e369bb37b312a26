#include "platform/error_log.hpp"

#include "platform/platform_test_support.hpp"

#include <gtest/gtest.h>

#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <regex>
#include <sys/stat.h>

namespace {

using qiro_plugin::utility::output_error_log;
namespace fs = std::filesystem;

constexpr std::size_t log_limit = 1048576;

unsigned mode_of(const fs::path& a_path) {
    struct stat status {};
    EXPECT_EQ(::stat(a_path.c_str(), &status), 0) << a_path;
    return status.st_mode & 07777;
}

std::string local_stamp() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y/%m/%d %H:%M:%S", &local);
    return text;
}

void set_modification_time(const fs::path& a_path, std::time_t a_seconds) {
    const timespec times[2] = {{a_seconds, 0}, {a_seconds, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, a_path.c_str(), times, 0), 0);
}

class error_log_test : public ::testing::Test {
protected:
    fs::path logs() const { return m_home.path() / "Library/Preferences/QIRO22/Logs"; }
    fs::path first() const { return logs() / "qirolumen_0.txt"; }
    fs::path second() const { return logs() / "qirolumen_1.txt"; }

    // A log file of the given size whose modification time lies the given seconds back.
    void make_log(const fs::path& a_path, std::size_t a_size, std::time_t a_age) {
        fs::create_directories(logs());
        platform_test::write_file(a_path, std::string(a_size, 'o'));
        set_modification_time(a_path, 1700000000 - a_age);
    }

    platform_test::scratch_home m_home;
};

// The line the log appends for a message, as a pattern over its bytes.
const std::regex line_pattern(R"(\d{4}/\d{2}/\d{2} \d{2}:\d{2}:\d{2}\t\[(.*)\]\r\n)");

TEST_F(error_log_test, first_call_creates_private_folder_and_file_with_one_line) {
    const std::string before = local_stamp();
    output_error_log(u"plain message");
    const std::string after = local_stamp();

    EXPECT_EQ(mode_of(logs()), 0700u);
    EXPECT_EQ(mode_of(first()), 0600u);
    EXPECT_FALSE(fs::exists(second()));
    const std::string line = platform_test::read_file(first());
    std::smatch match;
    ASSERT_TRUE(std::regex_match(line, match, line_pattern)) << line;
    EXPECT_EQ(match[1].str(), "plain message");
    const std::string stamp = line.substr(0, 19);
    EXPECT_LE(before, stamp);
    EXPECT_GE(after, stamp);

    output_error_log(u"second");
    const std::string both = platform_test::read_file(first());
    EXPECT_EQ(both.substr(0, line.size()), line);
    EXPECT_EQ(both.substr(line.size() + 19), "\t[second]\r\n");
}

TEST_F(error_log_test, message_is_written_in_shift_jis) {
    output_error_log(u"\u30C6\u30B9\u30C8\u2460");
    const std::string line = platform_test::read_file(first());
    EXPECT_EQ(line.substr(19), "\t[\x83\x65\x83\x58\x83\x67\x87\x40]\r\n");

    // Text that Shift_JIS cannot hold is dropped as a whole; the line itself still appears.
    output_error_log(u"ok \U0001F600 \uAC00");
    const std::string lines = platform_test::read_file(first());
    EXPECT_EQ(lines.substr(lines.size() - 5), "\t[]\r\n");
    EXPECT_EQ(lines.size(), 2 * line.size() - 8);
}

TEST_F(error_log_test, newer_file_takes_the_line_while_it_has_room) {
    make_log(first(), log_limit - 1, 10);
    make_log(second(), 10, 20);
    output_error_log(u"x");
    EXPECT_GT(fs::file_size(first()), log_limit - 1);
    EXPECT_EQ(fs::file_size(second()), 10u);
}

TEST_F(error_log_test, full_newer_file_hands_over_to_the_older_one) {
    make_log(first(), log_limit, 10);
    make_log(second(), 10, 20);
    output_error_log(u"x");
    EXPECT_EQ(fs::file_size(first()), log_limit);
    EXPECT_GT(fs::file_size(second()), 10u);
}

TEST_F(error_log_test, both_full_restarts_the_older_file) {
    make_log(first(), log_limit, 10);
    make_log(second(), log_limit + 50, 20);
    output_error_log(u"fresh");
    EXPECT_EQ(fs::file_size(first()), log_limit);
    const std::string restarted = platform_test::read_file(second());
    EXPECT_TRUE(std::regex_match(restarted, line_pattern)) << restarted.size();

    make_log(first(), log_limit, 30);
    make_log(second(), log_limit, 20);
    output_error_log(u"fresh");
    EXPECT_TRUE(std::regex_match(platform_test::read_file(first()), line_pattern));
    EXPECT_EQ(fs::file_size(second()), log_limit);
}

TEST_F(error_log_test, equal_dates_go_to_the_second_file) {
    make_log(first(), 10, 5);
    make_log(second(), 10, 5);
    output_error_log(u"tie");
    EXPECT_EQ(fs::file_size(first()), 10u);
    EXPECT_GT(fs::file_size(second()), 10u);
}

TEST_F(error_log_test, single_file_is_used_until_full_then_the_other_starts) {
    make_log(second(), 100, 0);
    output_error_log(u"x");
    EXPECT_FALSE(fs::exists(first()));
    EXPECT_GT(fs::file_size(second()), 100u);

    make_log(second(), log_limit, 0);
    output_error_log(u"x");
    EXPECT_EQ(fs::file_size(second()), log_limit);
    EXPECT_TRUE(std::regex_match(platform_test::read_file(first()), line_pattern));
    EXPECT_EQ(mode_of(first()), 0600u);

    fs::remove(second());
    make_log(first(), log_limit, 0);
    output_error_log(u"x");
    EXPECT_EQ(fs::file_size(first()), log_limit);
    EXPECT_TRUE(std::regex_match(platform_test::read_file(second()), line_pattern));
}

TEST_F(error_log_test, entries_in_the_way_stop_the_log_silently) {
    fs::create_directories(logs().parent_path());
    platform_test::write_file(logs(), "a file named Logs");
    EXPECT_NO_THROW(output_error_log(u"x"));
    EXPECT_EQ(platform_test::read_file(logs()), "a file named Logs");

    fs::remove(logs());
    fs::create_directories(first());
    EXPECT_NO_THROW(output_error_log(u"x"));
    EXPECT_FALSE(fs::exists(second()));
    EXPECT_TRUE(fs::is_empty(first()));
}

TEST_F(error_log_test, home_that_cannot_hold_the_log_is_no_error) {
    platform_test::write_file(m_home.path() / "Library", "not a folder");
    EXPECT_NO_THROW(output_error_log(u"x"));
    EXPECT_TRUE(fs::is_regular_file(m_home.path() / "Library"));
}

} // namespace
