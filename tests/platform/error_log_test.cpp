#include "platform/error_log.hpp"

#include "platform/platform_test_support.hpp"

#include <gtest/gtest.h>

#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <regex>

namespace {

using qiro_plugin::utility::output_error_log;
namespace fs = std::filesystem;
using platform_test::mode_of;

constexpr long log_limit = 1048576;

std::string local_stamp() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y/%m/%d %H:%M:%S", &local);
    return text;
}

// The line the log appends for a message, as a pattern over its bytes.
const std::regex line_pattern(R"(\d{4}/\d{2}/\d{2} \d{2}:\d{2}:\d{2}\t\[(.*)\]\r\n)");

class error_log_test : public ::testing::Test {
protected:
    fs::path logs() const { return m_home.path() / "Library/Preferences/QIRO22/Logs"; }
    fs::path log(int a_index) const {
        return logs() / ("qirolumen_" + std::to_string(a_index) + ".txt");
    }
    platform_test::scratch_home m_home;
};

TEST_F(error_log_test, first_line_creates_private_folder_and_file_then_lines_append_in_shift_jis) {
    const std::string before = local_stamp();
    output_error_log(u"\u30C6\u30B9\u30C8\u2460");
    const std::string after = local_stamp();
    EXPECT_EQ(mode_of(logs()), 0700u);
    EXPECT_EQ(mode_of(log(0)), 0600u);
    EXPECT_FALSE(fs::exists(log(1)));
    const std::string line = platform_test::read_file(log(0));
    ASSERT_TRUE(std::regex_match(line, line_pattern)) << line;
    EXPECT_EQ(line.substr(19), "\t[\x83\x65\x83\x58\x83\x67\x87\x40]\r\n");
    EXPECT_LE(before, line.substr(0, 19));
    EXPECT_GE(after, line.substr(0, 19));

    // Text that Shift_JIS cannot hold is dropped as a whole; the line itself still appears.
    output_error_log(u"ok \U0001F600 \uAC00");
    const std::string lines = platform_test::read_file(log(0));
    EXPECT_EQ(lines.substr(0, line.size()), line);
    EXPECT_EQ(lines.substr(line.size() + 19), "\t[]\r\n");
}

TEST_F(error_log_test, line_goes_to_the_newer_file_with_room_else_restarts_the_older) {
    struct log_file {
        long size; // -1: absent
        std::time_t age;
    };
    struct {
        log_file files[2];
        int target;
        bool restarted;
    } const cases[] = {
        {{{log_limit - 1, 10}, {10, 20}}, 0, false},        // newer below the limit
        {{{10, 20}, {log_limit - 1, 10}}, 1, false},        // the second file newer
        {{{log_limit, 10}, {10, 20}}, 1, false},            // full at the limit exactly
        {{{log_limit, 10}, {log_limit + 50, 20}}, 1, true}, // both full: older restarted
        {{{log_limit, 30}, {log_limit, 20}}, 0, true},      // both full, the first older
        {{{10, 5}, {10, 5}}, 1, false},                     // equal dates
        {{{-1, 0}, {100, 0}}, 1, false},                    // a lone file with room
        {{{-1, 0}, {log_limit, 0}}, 0, true},               // a lone full file
        {{{log_limit, 0}, {-1, 0}}, 1, true},
    };
    for (const auto& [files, target, restarted] : cases) {
        SCOPED_TRACE(std::to_string(files[0].size) + ", " + std::to_string(files[1].size));
        fs::remove_all(logs());
        fs::create_directories(logs());
        for (int i = 0; i < 2; ++i) {
            if (files[i].size >= 0) {
                platform_test::write_file(log(i), std::string(std::size_t(files[i].size), 'o'));
                const timespec times[2] = {{1700000000 - files[i].age, 0},
                                           {1700000000 - files[i].age, 0}};
                ASSERT_EQ(::utimensat(AT_FDCWD, log(i).c_str(), times, 0), 0);
            }
        }
        output_error_log(u"x");
        const std::string kept(restarted ? 0 : std::size_t(files[target].size), 'o');
        const std::string written = platform_test::read_file(log(target));
        EXPECT_EQ(written.substr(0, kept.size()), kept);
        EXPECT_TRUE(std::regex_match(written.substr(kept.size()), line_pattern));
        // Restarted means deleted and created anew, not truncated: the new file is private.
        EXPECT_TRUE(!restarted || mode_of(log(target)) == 0600u);
        const fs::path other = log(1 - target);
        EXPECT_EQ(fs::exists(other) ? long(fs::file_size(other)) : -1L, files[1 - target].size);
    }
}

TEST_F(error_log_test, file_named_logs_stops_the_log_silently) {
    platform_test::write_file(logs(), "a file named Logs");
    EXPECT_NO_THROW(output_error_log(u"x"));
    EXPECT_EQ(platform_test::read_file(logs()), "a file named Logs");
}

} // namespace
