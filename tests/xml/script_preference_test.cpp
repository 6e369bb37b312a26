#include "xml/script_preference.hpp"

#include "xml/xml_test_support.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace xml_access_library;
using qiro_plugin::utf16_string;
using xml_test_support::read_data_file;

namespace {

script_preference::plugin_preference_data read_preference(const std::string& a_document) {
    script_preference reader(a_document);
    EXPECT_TRUE(reader.parse()) << a_document;
    return reader.get_plugin_preference_data();
}

std::string plugin(const std::string& a_inner) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plugin>" + a_inner + "</plugin>\n";
}

std::uint32_t major_version_of(const std::string& a_text) {
    return read_preference(plugin("<major_version>" + a_text + "</major_version>")).major_version;
}

bool preference_of(const std::string& a_text) {
    return read_preference(plugin("<preference>" + a_text + "</preference>")).preference;
}

} // namespace

TEST(script_preference, reads_every_field) {
    script_preference reader(read_data_file("preference_full.xml"));
    const auto before = reader.get_plugin_preference_data();
    EXPECT_EQ(before.name, u"");
    EXPECT_EQ(before.major_version, 0u);
    EXPECT_FALSE(before.preference);
    ASSERT_TRUE(reader.parse());
    const auto data = reader.get_plugin_preference_data();
    EXPECT_EQ(data.name, u"Sample dictionary");
    EXPECT_EQ(data.name_short, u"Sample");
    EXPECT_EQ(data.description, u"Looks words up & shows them.");
    EXPECT_EQ(data.copyright, u"Copyright (C) 2024 Sample");
    EXPECT_EQ(data.major_version, 1u);
    EXPECT_EQ(data.minor_version, 12u);
    EXPECT_TRUE(data.preference);
    EXPECT_FALSE(data.callback);
}

TEST(script_preference, missing_elements_give_defaults) {
    for (const std::string& document : {plugin(""), std::string("<other><x>1</x></other>"),
                                        plugin("<NAME>n</NAME><Callback>true</Callback>")}) {
        const auto data = read_preference(document);
        EXPECT_EQ(data.name, u"");
        EXPECT_EQ(data.name_short, u"");
        EXPECT_EQ(data.description, u"");
        EXPECT_EQ(data.copyright, u"");
        EXPECT_EQ(data.major_version, 0u);
        EXPECT_EQ(data.minor_version, 0u);
        EXPECT_FALSE(data.preference);
        EXPECT_FALSE(data.callback);
    }
}

TEST(script_preference, version_is_a_whole_decimal_number_up_to_100) {
    EXPECT_EQ(major_version_of("7"), 7u);
    EXPECT_EQ(major_version_of("+7"), 7u);
    EXPECT_EQ(major_version_of(" 7"), 7u);
    EXPECT_EQ(major_version_of("\n\t7"), 7u);
    EXPECT_EQ(major_version_of("007"), 7u);
    EXPECT_EQ(major_version_of("0"), 0u);
    EXPECT_EQ(major_version_of("100"), 100u);
    EXPECT_EQ(major_version_of("&#x35;<![CDATA[5]]>"), 55u);
    for (const char* zero :
         {"7 ", "101", "-1", "1.5", "0x10", "", "   ", "seven", "7a", "99999999999999999999",
          "-99999999999999999999", "+", "- 7", "\xEF\xBC\x97"}) {
        SCOPED_TRACE(zero);
        EXPECT_EQ(major_version_of(zero), 0u);
    }
    const auto both = read_preference(plugin("<minor_version>42</minor_version>"
                                             "<major_version>3</major_version>"));
    EXPECT_EQ(both.major_version, 3u);
    EXPECT_EQ(both.minor_version, 42u);
}

TEST(script_preference, flags_need_exactly_true) {
    EXPECT_TRUE(preference_of("true"));
    EXPECT_TRUE(preference_of("<![CDATA[true]]>"));
    for (const char* other : {"True", "TRUE", "1", " true", "true ", "yes", ""}) {
        SCOPED_TRACE(other);
        EXPECT_FALSE(preference_of(other));
    }
    EXPECT_TRUE(read_preference(plugin("<callback>true</callback>")).callback);
    EXPECT_FALSE(read_preference(plugin("<callback>true</callback>")).preference);
}

TEST(script_preference, texts_are_cut_and_found_anywhere) {
    const auto data = read_preference(
        plugin("<name_short>" + std::string(20, 's') + "</name_short><description>" +
               std::string(300, 'd') + "</description><copyright>" + std::string(257, 'c') +
               "</copyright><deep><deeper><name>first " + std::string(150, 'n') +
               "</name></deeper></deep><name>second</name>"));
    EXPECT_EQ(data.name_short, utf16_string(16, u's'));
    EXPECT_EQ(data.description, utf16_string(256, u'd'));
    EXPECT_EQ(data.copyright, utf16_string(256, u'c'));
    EXPECT_EQ(data.name, u"first " + utf16_string(94, u'n'));
}

TEST(script_preference, reads_encodings_the_parser_knows) {
    const auto shift_jis = read_preference(read_data_file("preference_shift_jis.xml"));
    EXPECT_EQ(shift_jis.name, u"\u8F9E\u66F8");
    EXPECT_EQ(shift_jis.major_version, 2u);
    EXPECT_TRUE(shift_jis.callback);
    const auto utf16 = read_preference(read_data_file("preference_utf16.xml"));
    EXPECT_EQ(utf16.name, u"\u8F9E\u66F8");
    EXPECT_EQ(utf16.minor_version, 3u);
}

TEST(script_preference, fills_the_record_once) {
    script_preference named(plugin("<name>n</name><major_version>1</major_version>"));
    ASSERT_TRUE(named.parse());
    EXPECT_FALSE(named.parse());
    EXPECT_EQ(named.get_plugin_preference_data().name, u"n");
    EXPECT_EQ(named.get_plugin_preference_data().major_version, 1u);

    for (const char* filled : {"<description>d</description>", "<copyright>c</copyright>"}) {
        script_preference reader(plugin(filled));
        ASSERT_TRUE(reader.parse());
        EXPECT_FALSE(reader.parse());
    }
    // A short name alone does not count as a filled record.
    script_preference short_only(plugin("<name_short>s</name_short><callback>true</callback>"));
    ASSERT_TRUE(short_only.parse());
    EXPECT_TRUE(short_only.parse());
    EXPECT_EQ(short_only.get_plugin_preference_data().name_short, u"s");
    EXPECT_TRUE(short_only.get_plugin_preference_data().callback);
}

TEST(script_preference, malformed_documents_leave_the_record_untouched) {
    for (const std::string& text :
         {std::string(), std::string("<plugin><name>n</name>"), "junk" + plugin("<name>n</name>"),
          plugin("<name>&undeclared;</name>")}) {
        script_preference reader(text);
        EXPECT_FALSE(reader.parse());
        const auto data = reader.get_plugin_preference_data();
        EXPECT_EQ(data.name, u"");
        EXPECT_EQ(data.major_version, 0u);
    }
    EXPECT_THROW(script_preference(std::string(10485761, '<')), std::runtime_error);
    EXPECT_NO_THROW(script_preference(std::string(10485760, '<')));
}
