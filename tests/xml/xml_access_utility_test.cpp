#include "xml/xml_access_utility.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using namespace xml_access_library;
using qiro_plugin::utf16_string;
using namespace std::string_literals;

namespace {

constexpr std::size_t k_limit = 10485760;
const auto k_parse_failure =
    testing::ThrowsMessage<std::runtime_error>("xml_access_utility::get_root_node() : failed 2");

// The id of every element the search found, in list order.
std::vector<utf16_string> ids_of(xml_access_utility& a_access, const xml_node_list& a_list) {
    std::vector<utf16_string> ids;
    for (unsigned int i = 0; i < a_access.get_node_list_length(a_list); ++i) {
        ids.push_back(
            a_access.get_node_attribute_text(*a_access.get_node_by_node_list(a_list, i), u"id"));
    }
    return ids;
}

utf16_string element_text(const std::string& a_document, const utf16_string& a_tag) {
    xml_access_utility access(a_document);
    const auto element = access.get_node_by_tag_name(*access.get_root_node(), a_tag);
    return element ? access.get_node_text(*element) : u"(missing)";
}

} // namespace

TEST(xml_access_utility, search_walks_in_pre_order_from_the_start_node) {
    xml_access_utility access("<list><item id=\"1\"><item id=\"2\"><item id=\"3\"/></item></item>"
                              "<other><item id=\"4\"/><ITEM id=\"x\"/><q:item id=\"q\"/></other>"
                              "<item id=\"5\"/></list>");
    const auto root = access.get_root_node();
    const auto all = access.get_node_list_by_name_tag(*root, u"item");
    // A second parse would free the tree behind the first handles (seen by the sanitizers).
    const auto again = access.get_root_node();
    EXPECT_EQ(ids_of(access, *all), (std::vector<utf16_string>{u"1", u"2", u"3", u"4", u"5"}));
    // From an element: the element itself, then its descendants only.
    const auto second = access.get_node_by_node_list(*all, 1);
    EXPECT_EQ(ids_of(access, *access.get_node_list_by_name_tag(*second, u"item")),
              (std::vector<utf16_string>{u"2", u"3"}));
    const auto own = access.get_node_by_tag_name(*second, u"item");
    EXPECT_EQ(access.get_node_attribute_text(*own, u"id"), u"2");
    EXPECT_EQ(access.get_node_list_length(*access.get_node_list_by_name_tag(*again, u"no")), 0u);
    EXPECT_EQ(access.get_node_by_tag_name(*again, u"no"), nullptr);
}

TEST(xml_access_utility, text_joins_text_and_cdata_decodes_references_and_drops_blank_runs) {
    const std::pair<std::string, utf16_string> cases[] = {
        {"<e>a&amp;b<!--c-->c<![CDATA[<d>]]><?pi x?>&#x41;&#66;&lt;&gt;&apos;&quot;<f>z<g>w</g></f>"
         "\xE6\x97\xA5\xF0\x9F\x98\x80</e>",
         u"a&bc<d>AB<>'\"zw\u65E5\U0001F600"},
        // Internally declared entities read as written, never expanded.
        {"<!DOCTYPE e [<!ENTITY foo \"expanded\">]><e>&#x41;&foo;<f>&foo;</f></e>", u"A&foo;&foo;"},
        // Runs of blanks alone are dropped, other text is kept whole.
        {"<e> \t\r\n<f> a </f>\n\t<g>y\n</g><h xml:space=\"preserve\">  </h><![CDATA[  ]]></e>",
         u" a y\n  "},
        {"\xFF\xFE<\0e\0>\0\xE5\x65<\0/\0e\0>\0"s, u"\u65E5"},
        {"<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><e>\x93\xFA\x96\x7B</e>", u"\u65E5\u672C"}};
    for (const auto& [document, expected] : cases) {
        SCOPED_TRACE(document);
        EXPECT_EQ(element_text(document, u"e"), expected);
    }
}

TEST(xml_access_utility, document_node_reads_the_root_attributes_and_never_checks_true) {
    xml_access_utility access("<?xml version=\"1.0\"?><!--c--><?pi x?><r type=\"t\" a=\"x&amp;y\" "
                              "e=\"\">text</r>");
    const auto root = access.get_root_node();
    EXPECT_EQ(access.get_node_attribute_text(*root, u"type"), u"t");
    EXPECT_EQ(access.get_node_attribute_text(*root, u"a"), u"x&y");
    EXPECT_EQ(access.get_node_attribute_text(*root, u"missing"), u"");
    EXPECT_EQ(access.get_node_text(*root), u"");
    EXPECT_FALSE(access.check_node_attribute(*root, u"type", u"t"));

    const auto r = access.get_node_by_tag_name(*root, u"r");
    EXPECT_TRUE(access.check_node_attribute(*r, u"type", u"t"));
    EXPECT_TRUE(access.check_node_attribute(*r, u"e", u""));
    EXPECT_FALSE(access.check_node_attribute(*r, u"TYPE", u"t"));
    EXPECT_FALSE(access.check_node_attribute(*r, u"missing", u""));
    for (const utf16_string& other : {u"t "s, u"t\0"s, utf16_string(1, u'\xD800')}) {
        EXPECT_FALSE(access.check_node_attribute(*r, u"type", other));
    }
}

TEST(xml_access_utility, size_limit_is_checked_at_construction) {
    // Exactly at the limit: parsed. The text is split over several elements because the parser
    // refuses a single text node of more than 10,000,000 bytes.
    std::string at_limit = "<a>";
    for (int piece = 0; piece < 10; ++piece) {
        at_limit += "<b>" + std::string(1000000, 'x') + "</b>";
    }
    at_limit += "<b>" + std::string(k_limit - at_limit.size() - 11, 'x') + "</b></a>";
    ASSERT_EQ(at_limit.size(), k_limit);
    // The markup is 84 bytes: "<a>", eleven "<b></b>" and "</a>".
    EXPECT_EQ(element_text(at_limit, u"a").size(), k_limit - 84);
    // One byte more is refused before any parsing, even when the text is not XML at all.
    EXPECT_THAT([] { xml_access_utility over(std::string(k_limit + 1, '<')); },
                testing::ThrowsMessage<std::runtime_error>(
                    "xml_access_utility_impl::xml_access_utility_impl() : failed"));
}

TEST(xml_access_utility, malformed_text_fails_every_time_and_prints_nothing) {
    testing::internal::CaptureStderr();
    for (const std::string& text :
         {""s, " "s, "stray output<?xml version=\"1.0\"?><a/>"s, " <?xml version=\"1.0\"?><a/>"s,
          "<a>"s, "<a></b>"s, "<a/><b/>"s, "<a>\x01</a>"s, "<a>\xFF</a>"s, "<a>\xC3</a>"s,
          "<a>\0</a>"s, "<a>&#x41;&undeclared;</a>"s,
          "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><a>\x82\xFF</a>"s,
          "<?xml version=\"1.0\" encoding=\"no-such-encoding\"?><a/>"s}) {
        SCOPED_TRACE(text);
        xml_access_utility access(text);
        EXPECT_THAT([&] { access.get_root_node(); }, k_parse_failure);
        EXPECT_THAT([&] { access.get_root_node(); }, k_parse_failure);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(xml_access_utility_DeathTest, misuse_ends_the_process_with_the_condition) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    xml_access_utility access("<a><b/></a>");
    const auto list = access.get_node_list_by_name_tag(*access.get_root_node(), u"b");
    const xml_element empty;
    EXPECT_DEATH(access.get_node_by_node_list(*list, 1),
                 "xml_access_utility.cpp:[0-9]+: failed assertion `a_node_list_position < "
                 "get_node_list_length\\( a_node_list \\)'");
    const std::string element_condition = "failed assertion `a_element.p_impl->m_element'";
    EXPECT_DEATH(access.get_node_text(empty), element_condition);
    EXPECT_DEATH(access.get_node_by_tag_name(empty, u"b"), element_condition);
    EXPECT_DEATH(access.check_node_attribute(empty, u"b", u"c"), element_condition);
    // Reading an attribute through an empty handle is not misuse: it answers empty.
    EXPECT_EQ(access.get_node_attribute_text(empty, u"b"), u"");
}
