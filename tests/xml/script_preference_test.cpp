#include "xml/script_preference.hpp"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

using qiro_plugin::utf16_string;
using xml_access_library::script_preference;

namespace {

using preference_data = script_preference::plugin_preference_data;

preference_data read_preference(const std::string& a_inner) {
    script_preference reader("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plugin>" + a_inner +
                             "</plugin>\n");
    EXPECT_TRUE(reader.parse()) << a_inner;
    return reader.get_plugin_preference_data();
}

auto fields(const preference_data& a_data) {
    return std::make_tuple(a_data.name, a_data.name_short, a_data.description, a_data.copyright,
                           a_data.major_version, a_data.minor_version, a_data.preference,
                           a_data.callback);
}

const auto k_defaults = std::make_tuple(utf16_string(), utf16_string(), utf16_string(),
                                        utf16_string(), 0u, 0u, false, false);

} // namespace

TEST(script_preference, reads_every_field_and_defaults_the_missing_ones) {
    EXPECT_EQ(
        fields(read_preference("\n\t<name>Sample dictionary</name><name_short>Sample</name_short>"
                               "<description>Looks up &amp; shows.</description>"
                               "<copyright>(C) 2024</copyright><major_version>1</major_version>"
                               "<minor_version>12</minor_version><preference>false</preference>"
                               "<callback>true</callback>\n")),
        std::make_tuple(utf16_string(u"Sample dictionary"), utf16_string(u"Sample"),
                        utf16_string(u"Looks up & shows."), utf16_string(u"(C) 2024"), 1u, 12u,
                        false, true));
    EXPECT_EQ(fields(read_preference("")), k_defaults);
    EXPECT_EQ(fields(read_preference("<NAME>n</NAME><Callback>true</Callback>")), k_defaults);
}

TEST(script_preference, version_is_a_whole_decimal_number_up_to_100) {
    const auto major_of = [](const std::string& a_text) {
        return read_preference("<major_version>" + a_text + "</major_version>").major_version;
    };
    for (const char* seven : {"7", "+7", " 7", "\n\t7", "007"}) {
        EXPECT_EQ(major_of(seven), 7u) << seven;
    }
    EXPECT_EQ(major_of("100"), 100u);
    EXPECT_EQ(major_of("&#x35;<![CDATA[5]]>"), 55u);
    for (const char* zero :
         {"0", "7 ", "101", "-1", "1.5", "0x10", "", "   ", "seven", "7a", "99999999999999999999",
          "-99999999999999999999", "+", "- 7", "\xEF\xBC\x97"}) {
        EXPECT_EQ(major_of(zero), 0u) << zero;
    }
}

TEST(script_preference, flags_need_exactly_true) {
    const auto preference_of = [](const std::string& a_text) {
        return read_preference("<preference>" + a_text + "</preference>").preference;
    };
    EXPECT_TRUE(preference_of("true"));
    EXPECT_TRUE(preference_of("<![CDATA[true]]>"));
    for (const char* other : {"True", "TRUE", "1", " true", "true ", "yes", ""}) {
        EXPECT_FALSE(preference_of(other)) << other;
    }
}

TEST(script_preference, texts_are_cut_and_found_anywhere) {
    // The short name would end inside a surrogate pair at 16 code units, so it keeps 15.
    const auto data = read_preference(
        "<name_short>" + std::string(15, 's') + "\xF0\x9F\x98\x80</name_short><description>" +
        std::string(300, 'd') + "</description><copyright>" + std::string(257, 'c') +
        "</copyright><deep><deeper><name>first " + std::string(150, 'n') +
        "</name></deeper></deep><name>second</name>");
    EXPECT_EQ(data.name_short, utf16_string(15, u's'));
    EXPECT_EQ(data.description, utf16_string(256, u'd'));
    EXPECT_EQ(data.copyright, utf16_string(256, u'c'));
    EXPECT_EQ(data.name, u"first " + utf16_string(94, u'n'));
}

// A record filled by one of its longer texts is not read again, while a short name alone
// does not fill it; a malformed document fails every time and leaves the record as it was.
TEST(script_preference, parses_again_only_while_the_record_is_not_filled) {
    const auto plugin = [](const std::string& a_inner) {
        return "<plugin>" + a_inner + "<major_version>1</major_version></plugin>";
    };
    const std::tuple<std::string, bool, bool> cases[] = {
        {plugin("<name>n</name>"), true, false},
        {plugin("<description>d</description>"), true, false},
        {plugin("<copyright>c</copyright>"), true, false},
        {plugin("<name_short>s</name_short>"), true, true},
        {"", false, false},
        {"junk<?xml version=\"1.0\"?>" + plugin(""), false, false}};
    for (const auto& [text, first, second] : cases) {
        script_preference reader(text);
        EXPECT_EQ(reader.parse(), first) << text;
        EXPECT_EQ(reader.parse(), second) << text;
        EXPECT_EQ(reader.get_plugin_preference_data().major_version, first ? 1u : 0u) << text;
    }
}
