#include "text/wide_string.hpp"

#include <gtest/gtest.h>

#include <climits>

using namespace qiro_plugin;
using namespace qiro_plugin::utility;
using pieces = std::vector<utf16_string>;

TEST(find_sub_string_range, finds_first_range_with_or_without_markers) {
    EXPECT_EQ(find_sub_string_range(u"x[ab]y", u"[", u"]", true), u"[ab]");
    EXPECT_EQ(find_sub_string_range(u"x[ab]y", u"[", u"]", false), u"ab");
    EXPECT_EQ(find_sub_string_range(u"x[ab]y", u"<", u">", true), u"");
    EXPECT_EQ(find_sub_string_range(u"x]a[b", u"[", u"]", true), u"");
    // Same begin and end marker: the end is the next occurrence after the begin.
    EXPECT_EQ(find_sub_string_range(u"a|b|c|", u"|", u"|", false), u"b");
    EXPECT_EQ(find_sub_string_range_all(u"[a][b][c", u"[", u"]", false), (pieces{u"a", u"b"}));
    EXPECT_EQ(find_sub_string_range_all(u"<<a>>", u"<", u">", true), (pieces{u"<<a>"}));
    EXPECT_EQ(find_sub_string_range_all(u"abc", u"", u"", false).size(), 4u);
}

TEST(split_string, keeps_empty_pieces) {
    EXPECT_EQ(split_string(u"a,,b", u","), (pieces{u"a", u"", u"b"}));
    EXPECT_EQ(split_string(u"a,", u","), (pieces{u"a", u""}));
    EXPECT_EQ(split_string(u"abc", u","), (pieces{u"abc"}));
    EXPECT_EQ(split_string(u"", u","), (pieces{u""}));
    EXPECT_EQ(split_string(u"a::b", u"::"), (pieces{u"a", u"b"}));
}

TEST(delete_sub_string, first_or_all_including_occurrences_formed_by_erasure) {
    utf16_string text = u"aabb";
    delete_sub_string(true, text, u"ab");
    EXPECT_EQ(text, u"");
    text = u"abab";
    delete_sub_string(false, text, u"ab");
    EXPECT_EQ(text, u"ab");
    text = u"abc";
    delete_sub_string(true, text, u"");
    EXPECT_EQ(text, u"abc");
}

TEST(delete_sub_string_range, first_returns_the_tail_and_all_repeats) {
    utf16_string text = u"12[ab]34";
    EXPECT_EQ(delete_sub_string_range_first(text, u"[", u"]"), u"[ab]34");
    EXPECT_EQ(text, u"1234");
    text = u"12[ab34";
    EXPECT_EQ(delete_sub_string_range_first(text, u"[", u"]"), u"");
    EXPECT_EQ(text, u"12[ab34");
    text = u"a[1]b[[2]]c[3";
    delete_sub_string_range_all(text, u"[", u"]");
    EXPECT_EQ(text, u"ab]c[3");
    text = u"abc";
    delete_sub_string_range_all(text, u"", u"");
    EXPECT_EQ(text, u"abc");
}

TEST(replace_sub_string, never_rescans_inserted_text_and_always_ends) {
    utf16_string text = u"aaa";
    replace_sub_string(true, text, u"a", u"aa");
    EXPECT_EQ(text, u"aaaaaa");
    text = u"aaa";
    replace_sub_string(false, text, u"a", u"b");
    EXPECT_EQ(text, u"baa");
    text = u"ab";
    replace_sub_string(true, text, u"", u"");
    EXPECT_EQ(text, u"ab");
    text = u"x<1>y<2>z<3";
    replace_sub_string_range_all(text, u"<", u">", u"<>");
    EXPECT_EQ(text, u"x<>y<>z<3");
}

TEST(case_and_numbers, upper_case_and_decimal_forms) {
    EXPECT_EQ(toupper_string(utf16_string(u"py.Rb-ä漢")), u"PY.RB-ä漢");
    EXPECT_EQ(toupper_string(std::string("ab\xE3z")), "AB\xE3Z");
    EXPECT_TRUE(is_same_extensions(u"py", u"PY"));
    EXPECT_FALSE(is_same_extensions(u"py", u"pyc"));
    EXPECT_EQ(convert_integer_to_string(INT_MIN), u"-2147483648");
    EXPECT_EQ(convert_integer_to_string(0), u"0");
    EXPECT_EQ(convert_integer_to_string(4096), u"4096");
}

TEST(cut_code_units, never_splits_a_surrogate_pair) {
    const utf16_string face = u"\U0001F600";
    EXPECT_EQ(cut_code_units(u"abc", 5), u"abc");
    EXPECT_EQ(cut_code_units(u"abc", 2), u"ab");
    EXPECT_EQ(cut_code_units(u"a" + face, 2), u"a");
    EXPECT_EQ(cut_code_units(u"a" + face, 3), u"a" + face);
    EXPECT_EQ(cut_code_units(face + u"b", 2), face);
    EXPECT_EQ(cut_code_units(face, 0), u"");
    const char16_t lone_high[] = {u'a', 0xD800, u'b', 0};
    EXPECT_EQ(cut_code_units(lone_high, 2), utf16_string(lone_high, 2));
}
