#include "settings/plist_codec.hpp"
#include "settings/preference_value.hpp"

#include <gtest/gtest.h>

#include <string>

namespace {

using qiro_plugin::preferences::parse_plist;
using qiro_plugin::preferences::plist_format;
using qiro_plugin::preferences::preference_date;
using qiro_plugin::preferences::preference_value;
using qiro_plugin::preferences::write_plist;

TEST(preference_value_test, strings_answer_the_boolean_question_by_their_first_letter) {
    for (const char* text :
         {"YES", "yes", "true", "T", "1", "9", "  \t\n+0012", "-3", "0001", "Yak", "t0"}) {
        EXPECT_EQ(preference_value(text).bool_value(), true) << text;
    }
    for (const char* text :
         {"", "NO", "no", "false", "0", "000", "+0", "-", " ", "x", "0x1", "  0.9", "+-1", "１"}) {
        EXPECT_EQ(preference_value(text).bool_value(), false) << text;
    }
    EXPECT_FALSE(preference_value("7").unsigned_int_value().has_value());
}

TEST(preference_value_test, numbers_answer_both_questions_and_other_kinds_neither) {
    EXPECT_EQ(preference_value(true).bool_value(), true);
    EXPECT_EQ(preference_value(true).unsigned_int_value(), 1U);
    EXPECT_EQ(preference_value(false).unsigned_int_value(), 0U);
    EXPECT_EQ(preference_value(0).bool_value(), false);
    EXPECT_EQ(preference_value(-2).bool_value(), true);
    EXPECT_EQ(preference_value(8080).unsigned_int_value(), 8080U);
    EXPECT_EQ(preference_value(-1).unsigned_int_value(), 0xFFFFFFFFU);
    EXPECT_EQ(preference_value(std::int64_t{0x100000109}).unsigned_int_value(), 265U);
    EXPECT_EQ(preference_value(0.25).bool_value(), true);
    EXPECT_EQ(preference_value(0.0).bool_value(), false);
    EXPECT_EQ(preference_value(265.9).unsigned_int_value(), 265U);
    EXPECT_EQ(preference_value(1e300).unsigned_int_value(), 0U);

    const preference_value others[] = {
        preference_value(preference_date{1, 0}),
        preference_value(preference_value::data_type{1, 2}),
        preference_value(preference_value::array_type{preference_value(true)}),
        preference_value(preference_value::dictionary_type{{"a", preference_value(1)}}),
    };
    for (const auto& value : others) {
        EXPECT_FALSE(value.bool_value().has_value());
        EXPECT_FALSE(value.unsigned_int_value().has_value());
    }
}

TEST(preference_value_test, dictionaries_keep_their_order_and_replace_in_place) {
    preference_value root{preference_value::dictionary_type()};
    root.set("b", preference_value(1));
    root.set("a", preference_value(2));
    root.set("b", preference_value("three"));
    root.erase("missing");
    const auto& entries = *root.get_dictionary();
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].first, "b");
    EXPECT_EQ(*entries[0].second.get_string(), "three");
    EXPECT_EQ(entries[1].first, "a");
    root.erase("b");
    EXPECT_EQ(root.find("b"), nullptr);
    EXPECT_EQ(root.find("a")->get_integer() != nullptr, true);
}

TEST(preference_value_test, every_kind_survives_both_file_formats) {
    const preference_value root(preference_value::dictionary_type{
        {"zeta", preference_value(true)},
        {"alpha", preference_value(false)},
        {"count", preference_value(4294967295U)},
        {"negative", preference_value(-7)},
        {"ratio", preference_value(0.5)},
        {"text", preference_value("かな <&> \"quoted\"")},
        {"empty", preference_value("")},
        {"when", preference_value(preference_date{600000000, 0})},
        {"bytes", preference_value(preference_value::data_type{0, 255, 10, 0})},
        {"list", preference_value(preference_value::array_type{
                     preference_value(1), preference_value("two"),
                     preference_value(preference_value::dictionary_type{
                         {"inner", preference_value(preference_value::array_type{})}})})},
        {"nothing", preference_value(preference_value::dictionary_type{})},
    });
    for (auto format : {plist_format::xml, plist_format::binary}) {
        const auto bytes = write_plist(root, format);
        ASSERT_TRUE(bytes.has_value());
        const auto parsed = parse_plist(*bytes);
        ASSERT_TRUE(parsed.has_value());
        EXPECT_EQ(parsed->format, format);
        EXPECT_EQ(parsed->root, root);
    }
}

TEST(preference_value_test, bytes_that_are_no_property_list_give_nothing) {
    const auto good = *write_plist(
        preference_value(preference_value::dictionary_type{{"key", preference_value("value")}}),
        plist_format::xml);
    const auto binary = *write_plist(
        preference_value(preference_value::dictionary_type{{"key", preference_value("value")}}),
        plist_format::binary);
    const std::string broken[] = {
        "",
        "not a plist at all",
        good.substr(0, good.size() / 2),
        "<?xml version=\"1.0\"?><plist><dict><key>a</key><integer>x",
        "<plist><dict><key>a</key><string>unterminated</dict></plist>",
        "<plist><dict><key>a</key><key>b</key><true/></dict></plist>",
        "bplist00",
        binary.substr(0, binary.size() - 10),
        "bplist00" + std::string(64, '\xff'),
        std::string(1, '\0') + "<plist/>",
    };
    for (const auto& bytes : broken) {
        EXPECT_FALSE(parse_plist(bytes).has_value()) << bytes;
    }
    EXPECT_TRUE(parse_plist(good).has_value());
    EXPECT_TRUE(parse_plist(binary).has_value());
}

} // namespace
