#include "runtime/message_script.hpp"

#include <gtest/gtest.h>

using qiro_plugin::message_script;

namespace {

constexpr const char* DOCUMENT_START =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n\n<itemlist>\n";

message_script::candidate make_candidate(std::u16string a_title, std::u16string a_type = {},
                                         std::u16string a_alternative = {},
                                         std::u16string a_alias = {}) {
    message_script::candidate item;
    item.title = std::move(a_title);
    item.alternative_type = std::move(a_type);
    item.alternative = std::move(a_alternative);
    item.alternative_alias = std::move(a_alias);
    return item;
}

std::string index_lines(unsigned a_plugin, unsigned a_candidate, unsigned a_generation) {
    return "\t\t<plugin_index>" + std::to_string(a_plugin) + "</plugin_index>\n" +
           "\t\t<candidate_index>" + std::to_string(a_candidate) + "</candidate_index>\n" +
           "\t\t<generation_id>" + std::to_string(a_generation) + "</generation_id>\n";
}

} // namespace

TEST(message_script, empty_message_has_no_candidate_type_and_an_empty_list) {
    const message_script message;
    EXPECT_EQ(message.get_return_type(), 2);
    EXPECT_EQ(message.make_xml_string_to_candidate(0, 0),
              std::string(DOCUMENT_START) + "</itemlist>\n");
}

TEST(message_script, writes_every_field_escaped_with_index_lines_in_order) {
    message_script message;
    message_script::candidate full;
    full.title = u"漢字&<>'\"";
    full.comment = u"<p>説明</p>";
    full.alternative_type = u"definite_string";
    full.alternative = u"a<b";
    full.alternative_alias = u"別名";
    full.info = u"名詞";
    message.add_candidate(full);
    message.add_candidate(make_candidate(u"only title"));
    message_script::candidate no_title;
    no_title.comment = u"c";
    message.add_candidate(no_title);

    EXPECT_EQ(message.get_return_type(), 0);
    ASSERT_EQ(message.get_candidates().size(), 3U);
    EXPECT_EQ(message.get_candidates()[0].alternative_alias, u"別名");
    const std::string expected =
        std::string(DOCUMENT_START) + "\t<item type=\"candidate\">\n" +
        "\t\t<title>漢字&amp;&lt;&gt;&apos;&quot;</title>\n" +
        "\t\t<comment>&lt;p&gt;説明&lt;/p&gt;</comment>\n" +
        "\t\t<alternative type=\"definite_string\">\n" + "\t\t\t<target>a&lt;b</target>\n" +
        "\t\t\t<alias>別名</alias>\n" + "\t\t</alternative>\n" + "\t\t<info>名詞</info>\n" +
        index_lines(3, 0, 17) + "\t</item>\n" + "\t<item type=\"candidate\">\n" +
        "\t\t<title>only title</title>\n" + index_lines(3, 1, 17) + "\t</item>\n" +
        "\t<item type=\"candidate\">\n" + "\t\t<comment>c</comment>\n" + index_lines(3, 2, 17) +
        "\t</item>\n" + "</itemlist>\n";
    EXPECT_EQ(message.make_xml_string_to_candidate(3, 17), expected);
    EXPECT_NE(message.make_xml_string_to_candidate(4294967295U, 0)
                  .find("<plugin_index>4294967295</plugin_index>"),
              std::string::npos);
}

TEST(message_script, address_alternative_is_written_only_when_it_starts_with_http) {
    struct row {
        std::u16string type;
        std::u16string alternative;
        bool written;
    };
    const row rows[] = {
        {u"url_jump_string", u"https://example.org/", true},
        {u"url_jump_string", u"http", true},
        {u"url_jump_string", u"ftp://example.org/", false},
        {u"url_jump_string", u"HTTP://example.org/", false},
        {u"url_jump_string", u" http://example.org/", false},
        {u"url_jump_string", u"see http://example.org/", false},
        {u"definite_string", u"ftp://fixed text", true},
        {u"Definite_String", u"text", false},
        {u"", u"text", false},
        {u"definite_string", u"", false},
    };
    for (const row& each : rows) {
        message_script message;
        message.add_candidate(make_candidate(u"t", each.type, each.alternative, u"alias"));
        const std::string xml = message.make_xml_string_to_candidate(0, 0);
        SCOPED_TRACE(xml);
        EXPECT_EQ(xml.find("<alternative type=") != std::string::npos, each.written);
        // The alias appears only inside a written alternative.
        EXPECT_EQ(xml.find("\t\t\t<alias>alias</alias>\n") != std::string::npos, each.written);
        EXPECT_EQ(xml.find("alias</alias>") != std::string::npos, each.written);
    }
}

TEST(message_script, empty_alias_is_left_out_of_a_written_alternative) {
    message_script message;
    message.add_candidate(make_candidate(u"t", u"url_jump_string", u"http://x/?a=1&b=2"));
    const std::string xml = message.make_xml_string_to_candidate(1, 2);
    EXPECT_NE(xml.find("\t\t<alternative type=\"url_jump_string\">\n"
                       "\t\t\t<target>http://x/?a=1&amp;b=2</target>\n"
                       "\t\t</alternative>\n"),
              std::string::npos);
    EXPECT_EQ(xml.find("<alias>"), std::string::npos);
}
