#include "bridge_runner.hpp"

#include "text/url_xml_escape.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace qiro_plugin::test {
namespace {

std::string read_bytes(const std::filesystem::path& a_path) {
    std::ifstream file(a_path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

class embedded_script : public ::testing::TestWithParam<language> {};

TEST_P(embedded_script, decodes_to_the_source_file_byte_for_byte) {
    const std::string& stored = GetParam().stored_script();
    const std::string source = read_bytes(std::filesystem::path(QIRO_BRIDGES_SOURCE_DIR) /
                                          (std::string("bridge.") + GetParam().extension));
    ASSERT_FALSE(source.empty());
    EXPECT_EQ(utility::url_decode(stored), source);
    // The stored form is exactly what the host's own encoder makes of the file.
    EXPECT_EQ(stored, utility::url_encode(source));
    EXPECT_EQ(stored.find_first_not_of("%+._-0123456789ABCDEF"), std::string::npos);
}

TEST_P(embedded_script, is_utf8_text_with_cr_lf_line_ends) {
    const std::string text = utility::url_decode(GetParam().stored_script());
    const std::string language_name = GetParam().name;
    // The Ruby bridge's first line ends with LF alone: Ruby warns about a CR there.
    std::size_t lone_lf_allowed = language_name == "ruby" ? text.find('\n') : std::string::npos;
    std::size_t lines = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\n') {
            ++lines;
            if (i != lone_lf_allowed) {
                ASSERT_TRUE(i > 0 && text[i - 1] == '\r') << "line " << lines;
            }
        } else if (text[i] == '\r') {
            ASSERT_TRUE(i + 1 < text.size() && text[i + 1] == '\n') << "line " << lines;
        }
    }
    EXPECT_GT(lines, 100U);
    EXPECT_EQ(text.back(), '\n');
    // Japanese comments: multi-byte UTF-8 is carried through intact.
    EXPECT_NE(text.find("\xE3\x83\x97\xE3\x83\xA9\xE3\x82\xB0\xE3\x82\xA4\xE3\x83\xB3"),
              std::string::npos); // プラグイン

    if (language_name == "python") {
        EXPECT_TRUE(text.starts_with("#! /usr/bin/python\r\n# coding:utf-8\r\n"));
    } else if (language_name == "ruby") {
        EXPECT_TRUE(text.starts_with("#! /usr/bin/ruby -Ku\n"));
        EXPECT_NE(text.find("require 'cgi'\r\n"), std::string::npos);
    } else {
        EXPECT_TRUE(text.starts_with("#\r\n"));
        EXPECT_NE(text.find("use strict;\r\nuse Encode;\r\nuse utf8;\r\n"), std::string::npos);
    }
}

INSTANTIATE_TEST_SUITE_P(bridges, embedded_script, ::testing::ValuesIn(all_languages()),
                         [](const auto& a_info) { return std::string(a_info.param.name); });

} // namespace
} // namespace qiro_plugin::test
