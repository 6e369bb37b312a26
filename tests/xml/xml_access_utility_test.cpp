#include "xml/xml_access_utility.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

using namespace xml_access_library;
using qiro_plugin::utf16_string;

namespace {

constexpr std::size_t k_limit = 10485760;

std::string thrown_message(const std::function<void()>& a_action) {
    try {
        a_action();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "(nothing thrown)";
}

// The text of every element found by the search, in list order, to show which ones matched.
std::vector<utf16_string> texts_of(xml_access_utility& a_access, const xml_node_list& a_list) {
    std::vector<utf16_string> texts;
    for (unsigned int i = 0; i < a_access.get_node_list_length(a_list); ++i) {
        texts.push_back(
            a_access.get_node_attribute_text(*a_access.get_node_by_node_list(a_list, i), u"id"));
    }
    return texts;
}

utf16_string element_text(const std::string& a_document, const utf16_string& a_tag) {
    xml_access_utility access(a_document);
    const auto root = access.get_root_node();
    const auto element = access.get_node_by_tag_name(*root, a_tag);
    if (!element) {
        return u"(missing)";
    }
    return access.get_node_text(*element);
}

} // namespace

TEST(xml_access_utility, search_walks_in_pre_order_from_the_start_node) {
    xml_access_utility access("<list><item id=\"1\"><item id=\"2\"><item id=\"3\"/></item></item>"
                              "<other><item id=\"4\"/><ITEM id=\"x\"/><Item id=\"y\"/></other>"
                              "<item id=\"5\"/></list>");
    const auto root = access.get_root_node();
    const auto all = access.get_node_list_by_name_tag(*root, u"item");
    EXPECT_EQ(texts_of(access, *all), (std::vector<utf16_string>{u"1", u"2", u"3", u"4", u"5"}));

    // Searching from an element includes the element itself, then its descendants only.
    const auto inner =
        access.get_node_list_by_name_tag(*access.get_node_by_node_list(*all, 1), u"item");
    EXPECT_EQ(texts_of(access, *inner), (std::vector<utf16_string>{u"2", u"3"}));

    const auto none = access.get_node_list_by_name_tag(*root, u"missing");
    EXPECT_EQ(access.get_node_list_length(*none), 0u);
    EXPECT_EQ(access.get_node_by_tag_name(*root, u"missing"), nullptr);
}

TEST(xml_access_utility, first_match_is_the_first_in_document_order_at_any_depth) {
    xml_access_utility access("<e id=\"e\"><a><title id=\"deep\"/></a><title id=\"shallow\"/>"
                              "<title id=\"t\"><title id=\"inner\"/></title></e>");
    const auto root = access.get_root_node();
    const auto e = access.get_node_by_tag_name(*root, u"e");
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(access.get_node_attribute_text(*access.get_node_by_tag_name(*e, u"title"), u"id"),
              u"deep");

    const auto titles = access.get_node_list_by_name_tag(*e, u"title");
    const auto own = access.get_node_by_node_list(*titles, 2);
    EXPECT_EQ(access.get_node_attribute_text(*access.get_node_by_tag_name(*own, u"title"), u"id"),
              u"t");
}

TEST(xml_access_utility, tag_names_are_compared_as_written_without_namespaces) {
    xml_access_utility access("<r xmlns=\"urn:d\" xmlns:p=\"urn:p\"><p:item id=\"1\"/>"
                              "<item id=\"2\"/><q:item id=\"3\"/></r>");
    const auto root = access.get_root_node();
    EXPECT_EQ(texts_of(access, *access.get_node_list_by_name_tag(*root, u"item")),
              (std::vector<utf16_string>{u"2"}));
    EXPECT_EQ(texts_of(access, *access.get_node_list_by_name_tag(*root, u"p:item")),
              (std::vector<utf16_string>{u"1"}));
    EXPECT_EQ(texts_of(access, *access.get_node_list_by_name_tag(*root, u"q:item")),
              (std::vector<utf16_string>{u"3"}));
    EXPECT_EQ(access.get_node_attribute_text(*root, u"xmlns:p"), u"urn:p");
    EXPECT_EQ(access.get_node_attribute_text(*root, u"xmlns"), u"urn:d");
}

TEST(xml_access_utility, text_joins_text_and_cdata_and_decodes_references) {
    EXPECT_EQ(element_text("<e>a&amp;b<!--comment-->c<![CDATA[<d>]]></e>", u"e"), u"a&bc<d>");
    EXPECT_EQ(element_text("<e>&#x41;&#66;&lt;&gt;&apos;&quot;</e>", u"e"), u"AB<>'\"");
    EXPECT_EQ(element_text("<e>x<?pi data?>y<f>z<g>w</g></f>v</e>", u"e"), u"xyzwv");
    EXPECT_EQ(element_text("<e>\xE6\x97\xA5\xF0\x9F\x98\x80</e>", u"e"), u"\u65E5\U0001F600");
    EXPECT_EQ(element_text("<e></e>", u"e"), u"");
}

TEST(xml_access_utility, declared_entities_read_as_written_and_are_not_expanded) {
    const std::string document = "<!DOCTYPE e [<!ENTITY foo \"expanded\">]>"
                                 "<e>&#x41;&foo;<f>&foo;</f></e>";
    EXPECT_EQ(element_text(document, u"e"), u"A&foo;&foo;");
    // The parser refuses a reference to an entity that no declaration names.
    xml_access_utility undeclared("<e>&#x41;&foo;</e>");
    EXPECT_EQ(thrown_message([&] { undeclared.get_root_node(); }),
              "xml_access_utility::get_root_node() : failed 2");
}

TEST(xml_access_utility, whitespace_only_runs_are_dropped_and_other_text_kept_whole) {
    EXPECT_EQ(element_text("<e>   </e>", u"e"), u"");
    EXPECT_EQ(element_text("<e> \t\r\n</e>", u"e"), u"");
    EXPECT_EQ(element_text("<e> a </e>", u"e"), u" a ");
    EXPECT_EQ(element_text("<e>\n\t<f> x</f>\n\t<g>y\n</g>\n</e>", u"e"), u" xy\n");
    EXPECT_EQ(element_text("<e xml:space=\"preserve\">  <f/>  </e>", u"e"), u"");
    EXPECT_EQ(element_text("<e><![CDATA[  ]]></e>", u"e"), u"  ");
}

TEST(xml_access_utility, document_node_reads_the_root_attributes_and_never_checks_true) {
    xml_access_utility access("<?xml version=\"1.0\"?><!--c--><?pi x?><r type=\"t\" a=\"x&amp;y\" "
                              "e=\"\">text</r>");
    const auto root = access.get_root_node();
    EXPECT_EQ(access.get_node_attribute_text(*root, u"type"), u"t");
    EXPECT_EQ(access.get_node_attribute_text(*root, u"a"), u"x&y");
    EXPECT_EQ(access.get_node_attribute_text(*root, u"e"), u"");
    EXPECT_EQ(access.get_node_attribute_text(*root, u"missing"), u"");
    EXPECT_EQ(access.get_node_text(*root), u"");
    EXPECT_FALSE(access.check_node_attribute(*root, u"type", u"t"));

    const auto r = access.get_node_by_tag_name(*root, u"r");
    EXPECT_TRUE(access.check_node_attribute(*r, u"type", u"t"));
    EXPECT_TRUE(access.check_node_attribute(*r, u"e", u""));
    EXPECT_FALSE(access.check_node_attribute(*r, u"type", u"T"));
    EXPECT_FALSE(access.check_node_attribute(*r, u"type", u"t "));
    EXPECT_FALSE(access.check_node_attribute(*r, u"TYPE", u"t"));
    EXPECT_FALSE(access.check_node_attribute(*r, u"missing", u""));
    EXPECT_FALSE(access.check_node_attribute(*r, u"type", utf16_string(u"t\0", 2)));
    EXPECT_FALSE(access.check_node_attribute(*r, u"type", utf16_string(1, u'\xD800')));
}

TEST(xml_access_utility, size_limit_is_checked_at_construction) {
    // Exactly at the limit: accepted and parsed. The text is split over several elements
    // because the parser refuses a single text node of more than 10,000,000 bytes.
    std::string at_limit = "<a>";
    std::size_t text_size = 0;
    while (at_limit.size() < k_limit - 4) {
        const std::size_t piece = std::min<std::size_t>(1000000, k_limit - 4 - at_limit.size() - 7);
        at_limit += "<b>" + std::string(piece, 'x') + "</b>";
        text_size += piece;
    }
    at_limit += "</a>";
    ASSERT_EQ(at_limit.size(), k_limit);
    xml_access_utility access(at_limit);
    const auto root = access.get_root_node();
    EXPECT_EQ(access.get_node_text(*access.get_node_by_tag_name(*root, u"a")).size(), text_size);

    // One byte more is refused before any parsing, even when the text is not XML at all.
    EXPECT_EQ(thrown_message([] { xml_access_utility over(std::string(k_limit + 1, '<')); }),
              "xml_access_utility_impl::xml_access_utility_impl() : failed");
}

TEST(xml_access_utility, malformed_text_fails_and_can_be_retried) {
    for (const std::string& text : std::vector<std::string>{
             "", " ", "hello", "stray output<?xml version=\"1.0\"?><a/>",
             " <?xml version=\"1.0\"?><a/>", "<a>", "<a></b>", "<a/><b/>", "<a>\x01</a>",
             "<a>\xFF</a>", "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><a>\x82\xFF</a>",
             std::string("<a>\0</a>", 8)}) {
        SCOPED_TRACE(text);
        xml_access_utility access(text);
        EXPECT_EQ(thrown_message([&] { access.get_root_node(); }),
                  "xml_access_utility::get_root_node() : failed 2");
        EXPECT_EQ(thrown_message([&] { access.get_root_node(); }),
                  "xml_access_utility::get_root_node() : failed 2");
    }
}

TEST(xml_access_utility, parse_failures_print_nothing) {
    testing::internal::CaptureStderr();
    for (const char* text :
         {"<a>", "<a>&undeclared;</a>",
          "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><a>\x82\xFF</a>",
          "<?xml version=\"1.0\" encoding=\"no-such-encoding\"?><a/>", "<a>\xC3</a>"}) {
        xml_access_utility access(text);
        EXPECT_THROW(access.get_root_node(), std::runtime_error);
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(xml_access_utility, document_is_parsed_once) {
    xml_access_utility access("<a><b>x</b></a>");
    const auto first = access.get_root_node();
    const auto first_b = access.get_node_by_tag_name(*first, u"b");
    const auto second = access.get_root_node();
    const auto second_b = access.get_node_by_tag_name(*second, u"b");
    // A second parse would free the tree behind the first handles (seen by the sanitizers).
    const auto list = access.get_node_list_by_name_tag(*second, u"b");
    EXPECT_EQ(access.get_node_text(*first_b), u"x");
    EXPECT_EQ(access.get_node_text(*second_b), u"x");
    EXPECT_EQ(access.get_node_list_length(*list), 1u);
}

TEST(xml_access_utility, encodings_are_read_as_declared) {
    // UTF-16LE with a byte-order mark, and a Shift_JIS declaration.
    const std::string utf16 = std::string("\xFF\xFE<\0a\0>\0\xE5\x65<\0/\0a\0>\0", 18);
    EXPECT_EQ(element_text(utf16, u"a"), u"\u65E5");
    const std::string shift_jis =
        "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><a>\x93\xFA\x96\x7B</a>";
    EXPECT_EQ(element_text(shift_jis, u"a"), u"\u65E5\u672C");
}

TEST(xml_access_utility_DeathTest, misuse_ends_the_process_with_the_condition) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    xml_access_utility access("<a><b/></a>");
    const auto root = access.get_root_node();
    const auto list = access.get_node_list_by_name_tag(*root, u"b");
    const xml_element empty;
    EXPECT_DEATH(access.get_node_by_node_list(*list, 1),
                 "xml_access_utility.cpp:[0-9]+: failed assertion `a_node_list_position < "
                 "get_node_list_length\\( a_node_list \\)'");
    EXPECT_DEATH(access.get_node_text(empty), "failed assertion `a_element.p_impl->m_element'");
    EXPECT_DEATH(access.get_node_by_tag_name(empty, u"b"),
                 "failed assertion `a_element.p_impl->m_element'");
    EXPECT_DEATH(access.check_node_attribute(empty, u"b", u"c"),
                 "failed assertion `a_element.p_impl->m_element'");
    // Reading an attribute through an empty handle is not misuse: it answers empty.
    EXPECT_EQ(access.get_node_attribute_text(empty, u"b"), u"");
}
