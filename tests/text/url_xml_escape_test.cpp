#include "text/url_xml_escape.hpp"

#include <gtest/gtest.h>

#include <cstdio>

using namespace qiro_plugin;
using namespace qiro_plugin::utility;

TEST(url_encode, escapes_every_byte_but_three_marks_and_the_blank_and_url_decode_inverts_it) {
    std::string all;
    for (int value = 0; value < 256; ++value) {
        const std::string one(1, static_cast<char>(value));
        char escaped[4];
        std::snprintf(escaped, sizeof escaped, "%%%02X", value);
        const bool mark = one == "." || one == "_" || one == "-";
        EXPECT_EQ(url_encode(one), one == " " ? "+" : mark ? one : std::string(escaped)) << value;
        ASSERT_EQ(url_decode(url_encode(one)), one) << value;
        all += one;
    }
    EXPECT_EQ(url_decode(url_encode(all + all)), all + all);
    EXPECT_EQ(url_encode(""), "");
}

TEST(url_decode, follows_the_number_reader_rules) {
    EXPECT_EQ(url_decode("%61+%62"), "a b");
    EXPECT_EQ(url_decode("%zz"), "%zz");
    EXPECT_EQ(url_decode("x%4"), "x%4");
    EXPECT_EQ(url_decode("x%"), "x%");
    EXPECT_EQ(url_decode("%+F"), "\x0F");
    EXPECT_EQ(url_decode("%-0"), std::string("\0", 1));
    EXPECT_EQ(url_decode("%-1"), "%-1");
    EXPECT_EQ(url_decode("%e3%81%82"), "\xE3\x81\x82");
    EXPECT_EQ(url_decode("% F"), "\x0F");
    EXPECT_EQ(url_decode("%0x41"), "%0x41");
    EXPECT_EQ(url_decode("%%41"), "%%41");
}

TEST(xml_text, entities_escape_ampersand_first_and_control_characters_become_blanks) {
    EXPECT_EQ(convert_xml_entity(u"<a href='x'>&"), u"&lt;a href=&apos;x&apos;&gt;&amp;");
    EXPECT_EQ(convert_xml_entity(u"&amp;\"q\""), u"&amp;amp;&quot;q&quot;");
    EXPECT_EQ(convert_xml_entity(u"plain テキスト"), u"plain テキスト");

    EXPECT_EQ(convert_control_character(u"a\tb\nc\r"), u"a b c ");
    EXPECT_EQ(convert_control_character(utf16_string(u"\0x", 2)), u" x");
    EXPECT_EQ(convert_control_character(u"\u007F\u0080\u001F\u0020"), u" \u0080  ");
    const char16_t surrogates[] = {0xD83D, 0xDE00, 0};
    EXPECT_EQ(convert_control_character(surrogates), utf16_string(surrogates));
}
