#include "settings/plist_codec.hpp"
#include "settings/preference_value.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using namespace qiro_plugin::preferences;
using value = preference_value;

// A string answers only the boolean question, by its first letter after blanks, a sign and
// zeros; numbers answer both questions, and other kinds neither.
TEST(preference_value_test, each_kind_answers_the_number_questions_by_its_own_rule) {
    for (const char* text :
         {"YES", "yes", "true", "T", "1", "9", "  \t\n+0012", "-3", "0001", "Yak", "t0"}) {
        EXPECT_EQ(value(text).bool_value(), true) << text;
    }
    for (const char* text :
         {"", "NO", "no", "false", "0", "000", "+0", "-", " ", "x", "0x1", "  0.9", "+-1", "１"}) {
        EXPECT_EQ(value(text).bool_value(), false) << text;
    }
    EXPECT_FALSE(value("7").unsigned_int_value().has_value());
    EXPECT_EQ(value(-1).unsigned_int_value(), 0xFFFFFFFFU);
    EXPECT_EQ(value(std::int64_t{0x100000109}).unsigned_int_value(), 265U);
    EXPECT_EQ(value(265.9).unsigned_int_value(), 265U);
    EXPECT_EQ(value(1e300).unsigned_int_value(), 0U);
    EXPECT_EQ(value(0.25).bool_value(), true);
    EXPECT_FALSE(value(preference_date{1, 0}).bool_value().has_value());
    EXPECT_FALSE(value(value::data_type{1, 2}).unsigned_int_value().has_value());
}

TEST(preference_value_test, every_kind_survives_both_file_formats_and_foreign_xml_reads) {
    const value root(value::dictionary_type{
        {"zeta", value(true)},
        {"count", value(4294967295U)},
        {"negative", value(-7)},
        {"lowest", value(std::numeric_limits<std::int64_t>::min())},
        {"above signed", value(std::uint64_t{1} << 63)},
        {"highest", value(std::numeric_limits<std::uint64_t>::max())},
        {"ratio", value(0.5)},
        {"text", value("かな <&> \"quoted\"")},
        {"empty", value("")},
        {"when", value(preference_date{600000000, 0})},
        {"bytes", value(value::data_type{0, 255, 10, 0})},
        {"list",
         value(value::array_type{value("two"), value(value::dictionary_type{
                                                   {"inner", value(value::array_type{})}})})}});
    for (auto format : {plist_format::xml, plist_format::binary}) {
        const auto parsed = parse_plist(write_plist(root, format).value());
        ASSERT_TRUE(parsed.has_value());
        EXPECT_EQ(parsed->format, format);
        EXPECT_EQ(parsed->root, root);
    }
    // Laid out the way other programs write their preferences: a doctype, tabs, entities.
    const auto foreign = parse_plist(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD "
        "PLIST 1.0//EN\" \"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist "
        "version=\"1.0\">\n<dict>\n\t<key>name</key>\n\t<string>taro &amp; 花子</string>\n"
        "\t<key>on</key>\n\t<false/>\n</dict>\n</plist>\n");
    ASSERT_TRUE(foreign.has_value());
    EXPECT_EQ(foreign->root,
              value(value::dictionary_type{{"name", value("taro & 花子")}, {"on", value(false)}}));
}

TEST(preference_value_test, bytes_that_are_no_property_list_give_nothing) {
    const value root(value::dictionary_type{{"key", value("value")}});
    const auto good = write_plist(root, plist_format::xml).value();
    const auto binary = write_plist(root, plist_format::binary).value();
    const std::string broken[] = {"",
                                  good.substr(0, good.size() / 2),
                                  "<plist><dict><key>a</key><string>unterminated</dict></plist>",
                                  "<plist><dict><key>a</key><key>b</key><true/></dict></plist>",
                                  "bplist00",
                                  binary.substr(0, binary.size() - 10),
                                  "bplist00" + std::string(64, '\xff'),
                                  std::string(1, '\0') + "<plist/>"};
    for (const auto& bytes : broken) {
        EXPECT_FALSE(parse_plist(bytes).has_value()) << bytes;
    }
}

} // namespace
