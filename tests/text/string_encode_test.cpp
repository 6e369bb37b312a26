#include "text/string_encode.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace qiro_plugin;
using namespace qiro_plugin::string_encode;

namespace {

auto throws(const char* a_text) {
    return ::testing::ThrowsMessage<std::runtime_error>(::testing::StrEq(a_text));
}

} // namespace

TEST(string_encode, empty_input_stays_empty_and_a_zero_unit_ends_the_text) {
    for (const auto decode : {MultiByteShiftJisToWideChar, MultiByteEucJpToWideChar,
                              MultiByteUTF8ToWideChar, MultiByteFilePathToWideChar}) {
        EXPECT_TRUE(decode("").empty());
    }
    const utf16_string with_zero(u"ab\0cd", 5);
    for (const auto encode : {WideCharToMultiByteShiftJis, WideCharToMultiByteEucJp,
                              WideCharToMultiByteUTF8, WideCharToMultiByteFilePath}) {
        EXPECT_TRUE(encode(u"").empty());
        EXPECT_EQ(encode(with_zero.c_str()), "ab");
    }
}

TEST(string_encode, utf8_round_trips_every_code_point) {
    utf16_string all;
    for (char32_t code = 1; code < 0x10000; ++code) {
        if (code < 0xD800 || code > 0xDFFF) {
            all.push_back(static_cast<char16_t>(code));
        }
    }
    // Each high surrogate with a low one of its own: U+10000 and U+10FFFF are among them.
    for (char16_t high = 0xD800; high <= 0xDBFF; ++high) {
        all += {high, static_cast<char16_t>(0xDC00 + (high - 0xD800))};
    }
    const std::string bytes = WideCharToMultiByteUTF8(all.c_str());
    EXPECT_EQ(MultiByteUTF8ToWideChar(bytes.c_str()), all);
    EXPECT_EQ(WideCharToMultiByteUTF8(u"\U0001F600"), "\xF0\x9F\x98\x80");
    EXPECT_EQ(MultiByteUTF8ToWideChar("\xE3\x81\x82"), u"あ");
}

TEST(string_encode, invalid_utf8_and_utf16_throw_the_documented_texts) {
    for (const char* bad :
         {"\xC0\xAF", "\xE3\x81", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80", "a\xFF"}) {
        EXPECT_THAT([&] { MultiByteUTF8ToWideChar(bad); },
                    throws("::MultiByteUTF8ToWideChar() : failed"))
            << bad;
        EXPECT_TRUE(MultiByteFilePathToWideChar(bad).empty());
    }
    const char16_t lone_high[] = {u'a', 0xD800, u'b', 0};
    const char16_t lone_low[] = {0xDC00, 0};
    for (const char16_t* bad : {lone_high, lone_low}) {
        for (const auto encode :
             {WideCharToMultiByteUTF8, WideCharToMultiByteEucJp, WideCharToMultiByteShiftJis}) {
            EXPECT_THAT([&] { encode(bad); }, throws("::WideCharToMultiByteShiftJis() : failed"));
        }
        EXPECT_TRUE(WideCharToMultiByteFilePath(bad).empty());
    }
}

TEST(string_encode, legacy_encodings_cover_windows_extensions_and_reject_broken_bytes) {
    // "漢字①" in CP932: the circled digit exists only in the Windows extension.
    EXPECT_EQ(WideCharToMultiByteShiftJis(u"漢字①"), "\x8A\xBF\x8E\x9A\x87\x40");
    EXPECT_EQ(MultiByteShiftJisToWideChar("\x8A\xBF\x8E\x9A\x87\x40"), u"漢字①");
    EXPECT_EQ(MultiByteShiftJisToWideChar("\\~"), u"\\~");
    EXPECT_THAT([] { MultiByteShiftJisToWideChar("\x8A"); },
                throws("::MultiByteShiftJisToWideChar() : failed"));
    EXPECT_THAT([] { MultiByteShiftJisToWideChar("a\x85\x40"); },
                throws("::MultiByteShiftJisToWideChar() : failed"));
    // A character outside the target set empties the whole result rather than substituting.
    EXPECT_EQ(WideCharToMultiByteShiftJis(u"a\U0001F600b"), "");
    EXPECT_EQ(WideCharToMultiByteShiftJis(u"aé"), "");
    // Nor does a character come back as its look-alike: the yen sign, wave dash, minus sign and
    // overline have no code of their own here.
    for (const char16_t* look_alike : {u"a¥", u"〜", u"−", u"‾"}) {
        EXPECT_EQ(WideCharToMultiByteShiftJis(look_alike), "");
    }
    EXPECT_EQ(WideCharToMultiByteEucJp(u"a¥"), "");

    EXPECT_EQ(WideCharToMultiByteEucJp(u"かな"), "\xA4\xAB\xA4\xCA");
    EXPECT_EQ(MultiByteEucJpToWideChar("\xA4\xAB\xA4\xCA"), u"かな");
    EXPECT_EQ(WideCharToMultiByteEucJp(u"한국"), "");
    EXPECT_THAT([] { MultiByteEucJpToWideChar("\xA4"); },
                throws("::MultiByteEucJpToWideChar() : failed"));
}

TEST(string_encode, every_two_byte_shift_jis_character_round_trips) {
    // Lead bytes skip 0xA0 to 0xDF, the single-byte katakana.
    int converted = 0;
    for (int lead = 0x81; lead <= 0xFC; lead = lead == 0x9F ? 0xE0 : lead + 1) {
        for (int trail = 0x40; trail <= 0xFC; ++trail) {
            const char bytes[3] = {static_cast<char>(lead), static_cast<char>(trail), 0};
            utf16_string text;
            try {
                text = MultiByteShiftJisToWideChar(bytes);
            } catch (const std::runtime_error&) {
                continue; // not a character of CP932
            }
            ASSERT_EQ(text.size(), 1u);
            // CP932's duplicate codes (NEC and IBM rows) may come back in the other form.
            EXPECT_EQ(
                MultiByteShiftJisToWideChar(WideCharToMultiByteShiftJis(text.c_str()).c_str()),
                text);
            ++converted;
        }
    }
    EXPECT_GT(converted, 7000);
}
