#include "xml/script_load.hpp"
#include "xml/xml_access_utility.hpp"

#include "xml/xml_test_support.hpp"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace xml_access_library;
using namespace xml_test_support;
using qiro_plugin::utf16_string;

namespace {

std::vector<script_load::candidate_data> read_all(const std::string& a_document) {
    script_load reader(a_document);
    EXPECT_TRUE(reader.parse());
    return reader.get_candidate_data_array();
}

std::string repeated(const std::string& a_piece, std::size_t a_count) {
    std::string text;
    for (std::size_t i = 0; i < a_count; ++i) {
        text += a_piece;
    }
    return text;
}

utf16_string repeated_units(const utf16_string& a_piece, std::size_t a_count) {
    utf16_string text;
    for (std::size_t i = 0; i < a_count; ++i) {
        text += a_piece;
    }
    return text;
}

} // namespace

TEST(script_load, reads_a_bridge_document) {
    script_load reader(read_data_file("result_bridge.xml"));
    EXPECT_TRUE(reader.get_candidate_data_array().empty());
    ASSERT_TRUE(reader.parse());
    const auto candidates = reader.get_candidate_data_array();
    ASSERT_EQ(candidates.size(), 3u);

    EXPECT_EQ(candidates[0].title, u"Tea & <Cake>");
    EXPECT_EQ(candidates[0].alternative, u"fixed text");
    EXPECT_EQ(candidates[0].alternative_type, u"definite_string");
    EXPECT_EQ(candidates[0].alternative_alias, u"alias");
    EXPECT_EQ(candidates[0].info, u"[\u540D\u8A5E]");
    EXPECT_EQ(candidates[1].title, u"Link");
    EXPECT_EQ(candidates[1].comment, u"");
    EXPECT_EQ(candidates[1].alternative, u"http://example.com/?a=1&b=2");
    EXPECT_EQ(candidates[1].alternative_type, u"url_jump_string");
    EXPECT_EQ(candidates[2].title, u"\u65E5\u672C\u8A9E");
    EXPECT_EQ(candidates[2].alternative_type, u"");
    EXPECT_EQ(candidates[2].info, u"");

    // After one unescaping the comment is an XHTML document whose body holds, after the
    // heading, the text x, a line break element and the text y.
    const utf16_string& comment = candidates[0].comment;
    const std::string comment_bytes(comment.begin(), comment.end());
    xml_access_utility xhtml(comment_bytes);
    const auto root = xhtml.get_root_node();
    EXPECT_EQ(xhtml.get_node_attribute_text(*root, u"xmlns"), u"http://www.w3.org/1999/xhtml");
    const auto body = xhtml.get_node_by_tag_name(*root, u"body");
    ASSERT_NE(body, nullptr);
    EXPECT_EQ(xhtml.get_node_text(*body), u"Tea & <Cake>xy");
    EXPECT_EQ(xhtml.get_node_text(*xhtml.get_node_by_tag_name(*body, u"h2")), u"Tea & <Cake>");
    EXPECT_NE(xhtml.get_node_by_tag_name(*body, u"br"), nullptr);
    EXPECT_NE(comment.find(u"</h2>x<br />y</body>"), utf16_string::npos);
}

TEST(script_load, only_script_candidate_items_are_read) {
    EXPECT_TRUE(read_all(bridge_document("")).empty());
    EXPECT_TRUE(read_all("<?xml version=\"1.0\"?><itemlist/>").empty());
    const std::string others = bridge_item(element("title", "a"), "candidate") + "\t<item>\n" +
                               element("title", "b") + "\t</item>\n" +
                               bridge_item(element("title", "c"), "Script_Candidate") +
                               bridge_item(element("title", "d"), "script_candidate ");
    EXPECT_TRUE(read_all(bridge_document(others)).empty());

    // The document element is not checked, and nested or misplaced items count in document
    // order; a field is the first element of its name anywhere below the item.
    const auto nested = read_all(
        "<anything><x><item type=\"script_candidate\"><title>outer</title>"
        "<item type=\"script_candidate\"><title>inner</title><info>i</info></item></item></x>"
        "<item type=\"script_candidate\"><info>no title</info></item></anything>");
    ASSERT_EQ(nested.size(), 3u);
    EXPECT_EQ(nested[0].title, u"outer");
    EXPECT_EQ(nested[0].info, u"i");
    EXPECT_EQ(nested[1].title, u"inner");
    EXPECT_EQ(nested[2].title, u"");
    EXPECT_EQ(nested[2].info, u"no title");
}

TEST(script_load, keeps_at_most_101_records_in_document_order) {
    std::string items;
    for (int i = 0; i < 150; ++i) {
        items += bridge_item(element("title", std::to_string(i)));
        if (i == 50) {
            items += bridge_item(element("title", "skipped"), "other");
        }
    }
    const auto candidates = read_all(bridge_document(items));
    ASSERT_EQ(candidates.size(), 101u);
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        const std::string expected = std::to_string(i);
        EXPECT_EQ(candidates[i].title, utf16_string(expected.begin(), expected.end()));
    }
}

TEST(script_load, cuts_each_field_to_its_code_unit_limit) {
    // A letter and 60 characters outside the basic plane are 121 code units; a cut at 100 would
    // split a pair and leave text no encoder accepts, so it keeps 99.
    const std::string emoji = "\xF0\x9F\x98\x80";
    const std::string inner =
        element("title", "a" + repeated(emoji, 60)) + element("comment", repeated("c", 10300)) +
        "\t\t<alternative type=\"definite_string\">" + repeated("a", 600) + "</alternative>\n" +
        element("alternative_alias", repeated("s", 150)) + element("info", repeated("i", 80));
    const auto candidates = read_all(bridge_document(bridge_item(inner)));
    ASSERT_EQ(candidates.size(), 1u);
    utf16_string expected_title = u"a";
    expected_title += repeated_units(u"\U0001F600", 49);
    EXPECT_EQ(candidates[0].title, expected_title);
    EXPECT_EQ(candidates[0].comment.size(), 10240u);
    EXPECT_EQ(candidates[0].alternative.size(), 512u);
    EXPECT_EQ(candidates[0].alternative_alias.size(), 100u);
    EXPECT_EQ(candidates[0].info.size(), 64u);

    // Limits count decoded text, not the references that wrote it.
    const std::string references = element("title", repeated("&amp;", 100) + "x") +
                                   element("info", "a&#x42;&lt;" + repeated("b", 70));
    const auto decoded = read_all(bridge_document(bridge_item(references)));
    ASSERT_EQ(decoded.size(), 1u);
    EXPECT_EQ(decoded[0].title, repeated_units(u"&", 100));
    utf16_string expected_info = u"aB<";
    expected_info += repeated_units(u"b", 61);
    EXPECT_EQ(decoded[0].info, expected_info);
    EXPECT_EQ(read_all(bridge_document(bridge_item(element("title", "a&amp;b"))))[0].title, u"a&b");
}

TEST(script_load, alternative_needs_an_exact_known_type) {
    const auto read_alternative = [](const std::string& a_alternative) {
        const auto candidates = read_all(bridge_document(bridge_item(
            element("title", "t") + a_alternative + element("alternative_alias", "alias"))));
        EXPECT_EQ(candidates.size(), 1u);
        return candidates.at(0);
    };
    for (const char* ignored :
         {"\t\t<alternative type=\"URL_JUMP_STRING\">http://x</alternative>\n",
          "\t\t<alternative>plain</alternative>\n",
          "\t\t<alternative type=\"definite\">text</alternative>\n", ""}) {
        const auto candidate = read_alternative(ignored);
        EXPECT_EQ(candidate.alternative, u"");
        EXPECT_EQ(candidate.alternative_type, u"");
        EXPECT_EQ(candidate.alternative_alias, u"alias");
    }
    const auto url = read_alternative(
        "\t\t<alternative type=\"url_jump_string\">not an address</alternative>\n");
    EXPECT_EQ(url.alternative, u"not an address");
    EXPECT_EQ(url.alternative_type, u"url_jump_string");
    // An empty alternative of a known type still carries its type.
    const auto empty = read_alternative("\t\t<alternative type=\"definite_string\"/>\n");
    EXPECT_EQ(empty.alternative, u"");
    EXPECT_EQ(empty.alternative_type, u"definite_string");
}

TEST(script_load, malformed_output_gives_no_candidates) {
    const std::string good = read_data_file("result_bridge.xml");
    for (const std::string& text : {"stray print\n" + good, std::string(), "\n" + good,
                                    good.substr(0, good.size() / 2), good + "<itemlist/>"}) {
        script_load reader(text);
        EXPECT_FALSE(reader.parse());
        EXPECT_TRUE(reader.get_candidate_data_array().empty());
    }
    EXPECT_THROW(script_load(std::string(10485761, ' ')), std::runtime_error);
}

TEST(script_load, parses_again_only_while_nothing_was_read) {
    script_load reader(read_data_file("result_bridge.xml"));
    ASSERT_TRUE(reader.parse());
    EXPECT_FALSE(reader.parse());
    EXPECT_EQ(reader.get_candidate_data_array().size(), 3u);

    script_load empty(bridge_document(bridge_item(element("title", "t"), "other")));
    EXPECT_TRUE(empty.parse());
    EXPECT_TRUE(empty.parse());
    EXPECT_TRUE(empty.get_candidate_data_array().empty());

    script_load broken("<itemlist>");
    EXPECT_FALSE(broken.parse());
    EXPECT_FALSE(broken.parse());
}
