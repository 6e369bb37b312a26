#include "text/string_encode.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace qiro_plugin;
using namespace qiro_plugin::string_encode;

namespace {

std::string error_text_of(auto&& a_call) {
    try {
        a_call();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no exception";
}

} // namespace

TEST(string_encode, empty_input_gives_empty_output_everywhere) {
    EXPECT_TRUE(MultiByteShiftJisToWideChar("").empty());
    EXPECT_TRUE(MultiByteEucJpToWideChar("").empty());
    EXPECT_TRUE(MultiByteUTF8ToWideChar("").empty());
    EXPECT_TRUE(MultiByteFilePathToWideChar("").empty());
    EXPECT_TRUE(WideCharToMultiByteShiftJis(u"").empty());
    EXPECT_TRUE(WideCharToMultiByteEucJp(u"").empty());
    EXPECT_TRUE(WideCharToMultiByteUTF8(u"").empty());
    EXPECT_TRUE(WideCharToMultiByteFilePath(u"").empty());
}

TEST(string_encode, utf8_round_trips_every_code_point) {
    utf16_string all;
    for (char32_t code = 1; code <= 0x10FFFF; code += (code < 0x10000 ? 1 : 0x3FF)) {
        if (code >= 0xD800 && code <= 0xDFFF) {
            continue;
        }
        if (code < 0x10000) {
            all.push_back(static_cast<char16_t>(code));
        } else {
            const char32_t offset = code - 0x10000;
            all.push_back(static_cast<char16_t>(0xD800 + (offset >> 10)));
            all.push_back(static_cast<char16_t>(0xDC00 + (offset & 0x3FF)));
        }
    }
    const std::string bytes = WideCharToMultiByteUTF8(all.c_str());
    EXPECT_EQ(MultiByteUTF8ToWideChar(bytes.c_str()), all);
    EXPECT_EQ(WideCharToMultiByteUTF8(u"\U0001F600"), "\xF0\x9F\x98\x80");
    EXPECT_EQ(MultiByteUTF8ToWideChar("\xE3\x81\x82"), u"あ");
}

TEST(string_encode, invalid_utf8_and_utf16_throw_the_documented_texts) {
    const char* bad_inputs[] = {"\xC0\xAF",         "\xE3\x81", "\xED\xA0\x80",
                                "\xF4\x90\x80\x80", "\x80",     "a\xFF"};
    for (const char* bad : bad_inputs) {
        EXPECT_EQ(error_text_of([&] { MultiByteUTF8ToWideChar(bad); }),
                  "::MultiByteUTF8ToWideChar() : failed")
            << bad;
        EXPECT_TRUE(MultiByteFilePathToWideChar(bad).empty());
    }
    const char16_t lone_high[] = {u'a', 0xD800, u'b', 0};
    const char16_t lone_low[] = {0xDC00, 0};
    for (const char16_t* bad : {lone_high, lone_low}) {
        EXPECT_EQ(error_text_of([&] { WideCharToMultiByteUTF8(bad); }),
                  "::WideCharToMultiByteShiftJis() : failed");
        EXPECT_EQ(error_text_of([&] { WideCharToMultiByteEucJp(bad); }),
                  "::WideCharToMultiByteShiftJis() : failed");
        EXPECT_EQ(error_text_of([&] { WideCharToMultiByteShiftJis(bad); }),
                  "::WideCharToMultiByteShiftJis() : failed");
        EXPECT_TRUE(WideCharToMultiByteFilePath(bad).empty());
    }
}

TEST(string_encode, shift_jis_covers_windows_extensions_and_rejects_broken_bytes) {
    // "漢字①" in CP932: the circled digit exists only in the Windows extension.
    EXPECT_EQ(WideCharToMultiByteShiftJis(u"漢字①"), "\x8A\xBF\x8E\x9A\x87\x40");
    EXPECT_EQ(MultiByteShiftJisToWideChar("\x8A\xBF\x8E\x9A\x87\x40"), u"漢字①");
    EXPECT_EQ(MultiByteShiftJisToWideChar("\\~"), u"\\~");
    EXPECT_EQ(error_text_of([] { MultiByteShiftJisToWideChar("\x8A"); }),
              "::MultiByteShiftJisToWideChar() : failed");
    EXPECT_EQ(error_text_of([] { MultiByteShiftJisToWideChar("a\x85\x40"); }),
              "::MultiByteShiftJisToWideChar() : failed");
    // A character outside the target set empties the whole result rather than substituting.
    EXPECT_EQ(WideCharToMultiByteShiftJis(u"a\U0001F600b"), "");
    EXPECT_EQ(WideCharToMultiByteShiftJis(u"aé"), "");
}

TEST(string_encode, euc_jp_round_trips_and_fails_as_documented) {
    EXPECT_EQ(WideCharToMultiByteEucJp(u"かな"), "\xA4\xAB\xA4\xCA");
    EXPECT_EQ(MultiByteEucJpToWideChar("\xA4\xAB\xA4\xCA"), u"かな");
    EXPECT_EQ(WideCharToMultiByteEucJp(u"한국"), "");
    EXPECT_EQ(error_text_of([] { MultiByteEucJpToWideChar("\xA4"); }),
              "::MultiByteEucJpToWideChar() : failed");
}

TEST(string_encode, embedded_zero_unit_cuts_the_text) {
    const utf16_string with_zero(u"ab\0cd", 5);
    const std::string bytes = WideCharToMultiByteUTF8(with_zero.c_str());
    EXPECT_EQ(bytes, "ab");
    EXPECT_EQ(MultiByteUTF8ToWideChar(bytes.c_str()), u"ab");
    EXPECT_EQ(WideCharToMultiByteShiftJis(with_zero.c_str()), "ab");
}

TEST(string_encode, every_bmp_character_of_shift_jis_round_trips) {
    // Decode every two-byte CP932 sequence that iconv accepts and encode it back.
    int converted = 0;
    for (int lead = 0x81; lead <= 0xFC; ++lead) {
        if (lead >= 0xA0 && lead <= 0xDF) {
            continue; // single-byte katakana, not a lead byte
        }
        for (int trail = 0x40; trail <= 0xFC; ++trail) {
            const char bytes[3] = {static_cast<char>(lead), static_cast<char>(trail), 0};
            utf16_string text;
            try {
                text = MultiByteShiftJisToWideChar(bytes);
            } catch (const std::runtime_error&) {
                continue;
            }
            ASSERT_EQ(text.size(), 1u);
            const std::string back = WideCharToMultiByteShiftJis(text.c_str());
            // CP932 has a few duplicate codes (NEC and IBM rows); they come back as one form.
            if (back != std::string(bytes)) {
                EXPECT_EQ(MultiByteShiftJisToWideChar(back.c_str()), text);
            }
            ++converted;
        }
    }
    EXPECT_GT(converted, 7000);
}
