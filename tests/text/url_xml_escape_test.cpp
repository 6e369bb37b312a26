#include "text/url_xml_escape.hpp"

#include <gtest/gtest.h>

using namespace qiro_plugin;
using namespace qiro_plugin::utility;

TEST(url_encode, escapes_everything_but_three_marks_and_the_blank) {
    EXPECT_EQ(url_encode("a b-c"), "%61+%62-%63");
    EXPECT_EQ(url_encode("\n"), "%0A");
    EXPECT_EQ(url_encode("\xE3\x81\x82"), "%E3%81%82");
    EXPECT_EQ(url_encode("._-"), "._-");
    EXPECT_EQ(url_encode(std::string("\0", 1)), "%00");
    EXPECT_EQ(url_encode(""), "");
    const std::string shell_specials = "\"$`\\'! ;&|<>(){}*?~#";
    for (const char byte : url_encode(shell_specials)) {
        EXPECT_TRUE(byte == '%' || byte == '+' || (byte >= '0' && byte <= '9') ||
                    (byte >= 'A' && byte <= 'F'))
            << byte;
    }
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

TEST(url_decode, inverts_url_encode_for_every_byte) {
    std::string all;
    for (int value = 0; value < 256; ++value) {
        all.push_back(static_cast<char>(value));
        const std::string one(1, static_cast<char>(value));
        ASSERT_EQ(url_decode(url_encode(one)), one) << value;
    }
    EXPECT_EQ(url_decode(url_encode(all + all)), all + all);
}

TEST(convert_xml_entity, escapes_five_characters_ampersand_first) {
    EXPECT_EQ(convert_xml_entity(u"<a href='x'>&"), u"&lt;a href=&apos;x&apos;&gt;&amp;");
    EXPECT_EQ(convert_xml_entity(u"&amp;\"q\""), u"&amp;amp;&quot;q&quot;");
    EXPECT_EQ(convert_xml_entity(u"plain テキスト"), u"plain テキスト");
}

TEST(convert_control_character, blanks_c0_and_delete_only) {
    EXPECT_EQ(convert_control_character(u"a\tb\nc\r"), u"a b c ");
    const utf16_string zero(u"\0x", 2);
    EXPECT_EQ(convert_control_character(zero), u" x");
    EXPECT_EQ(convert_control_character(u"\u007F\u0080\u001F\u0020"), u" \u0080  ");
    const char16_t surrogates[] = {0xD83D, 0xDE00, 0};
    EXPECT_EQ(convert_control_character(surrogates), utf16_string(surrogates));
}
