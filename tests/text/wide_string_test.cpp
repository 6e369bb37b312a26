#include "text/wide_string.hpp"

#include <gtest/gtest.h>

#include <climits>
#include <functional>

using namespace qiro_plugin;
using namespace qiro_plugin::utility;
using pieces = std::vector<utf16_string>;

namespace {

utf16_string edited(utf16_string a_text, const std::function<void(utf16_string&)>& a_edit) {
    a_edit(a_text);
    return a_text;
}

} // namespace

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
    EXPECT_EQ(split_string(u"", u","), (pieces{u""}));
    EXPECT_EQ(split_string(u"a::b", u"::"), (pieces{u"a", u"b"}));
}

TEST(edit_sub_string, deletes_and_replaces_without_rescanning_inserted_text_and_always_ends) {
    // Deleting all also removes an occurrence that an erasure forms.
    EXPECT_EQ(edited(u"aabb", [](auto& a) { delete_sub_string(true, a, u"ab"); }), u"");
    EXPECT_EQ(edited(u"abab", [](auto& a) { delete_sub_string(false, a, u"ab"); }), u"ab");
    EXPECT_EQ(edited(u"abc", [](auto& a) { delete_sub_string(true, a, u""); }), u"abc");

    utf16_string text = u"12[ab]34";
    EXPECT_EQ(delete_sub_string_range_first(text, u"[", u"]"), u"[ab]34");
    EXPECT_EQ(text, u"1234");
    text = u"12[ab34";
    EXPECT_EQ(delete_sub_string_range_first(text, u"[", u"]"), u"");
    EXPECT_EQ(text, u"12[ab34");
    EXPECT_EQ(edited(u"a[1]b[[2]]c[3", [](auto& a) { delete_sub_string_range_all(a, u"[", u"]"); }),
              u"ab]c[3");
    EXPECT_EQ(edited(u"abc", [](auto& a) { delete_sub_string_range_all(a, u"", u""); }), u"abc");

    EXPECT_EQ(edited(u"aaa", [](auto& a) { replace_sub_string(true, a, u"a", u"aa"); }), u"aaaaaa");
    EXPECT_EQ(edited(u"aaa", [](auto& a) { replace_sub_string(false, a, u"a", u"b"); }), u"baa");
    EXPECT_EQ(edited(u"ab", [](auto& a) { replace_sub_string(true, a, u"", u""); }), u"ab");
    EXPECT_EQ(
        edited(u"x<1>y<2>z<3", [](auto& a) { replace_sub_string_range_all(a, u"<", u">", u"<>"); }),
        u"x<>y<>z<3");
}

TEST(case_and_numbers, upper_case_and_decimal_forms) {
    EXPECT_EQ(toupper_string(utf16_string(u"py.Rb-ä漢")), u"PY.RB-ä漢");
    EXPECT_EQ(toupper_string(std::string("ab\xE3z")), "AB\xE3Z");
    EXPECT_TRUE(is_same_extensions(u"py", u"PY"));
    EXPECT_FALSE(is_same_extensions(u"py", u"pyc"));
    EXPECT_EQ(convert_integer_to_string(INT_MIN), u"-2147483648");
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
