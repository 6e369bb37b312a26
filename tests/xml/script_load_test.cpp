#include "xml/script_load.hpp"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <tuple>
#include <vector>

using qiro_plugin::utf16_string;
using xml_access_library::script_load;

namespace {

using row = std::array<utf16_string, 6>;

std::string item(const std::string& a_inner, const std::string& a_type = "script_candidate") {
    return "<item type=\"" + a_type + "\">" + a_inner + "</item>\n";
}

std::string element(const std::string& a_tag, const std::string& a_text,
                    const std::string& a_attributes = "") {
    return "<" + a_tag + a_attributes + ">" + a_text + "</" + a_tag + ">";
}

std::string document(const std::string& a_items) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n\n<itemlist>\n" + a_items +
           "</itemlist>\n";
}

// Every field of every record, title, comment, alternative, its type, alias and info.
std::vector<row> read_all(const std::string& a_document) {
    script_load reader(a_document);
    EXPECT_TRUE(reader.parse());
    std::vector<row> rows;
    for (const auto& c : reader.get_candidate_data_array()) {
        rows.push_back(
            {c.title, c.comment, c.alternative, c.alternative_type, c.alternative_alias, c.info});
    }
    return rows;
}

// a_start followed by a_count copies of a_piece.
template <typename text> text times(text a_start, const text& a_piece, std::size_t a_count) {
    for (std::size_t i = 0; i < a_count; ++i) {
        a_start += a_piece;
    }
    return a_start;
}

const std::string k_good = document(item(element("title", "t")));
const std::string k_definite = " type=\"definite_string\"";

} // namespace

TEST(script_load, reads_fields_of_script_candidate_items_only) {
    EXPECT_EQ(
        read_all(document(
            item(element("title", "Tea &amp; &lt;Cake&gt;") +
                 element("comment", "&lt;b&gt;x&amp;amp;y&lt;/b&gt;") +
                 element("alternative", "fixed", k_definite) +
                 element("alternative_alias", "alias") +
                 element("info", "[\xE5\x90\x8D\xE8\xA9\x9E]")) +
            item("", "candidate") + "<item/>" + item("", "Script_Candidate") +
            item("", "script_candidate ") +
            // Nested or misplaced items count in document order; a field is the first element of
            // its name anywhere below the item.
            "<x>" + item(element("title", "outer") + item(element("info", "i"))) + "</x>" +
            item(element("alternative", "http://x/?a=1&amp;b=2", " type=\"url_jump_string\"")) +
            // Only the two known types, written exactly, carry an alternative.
            item(element("alternative", "u", " type=\"URL_JUMP_STRING\"") +
                 element("alternative_alias", "kept")) +
            item(element("alternative", "plain")) +
            item(element("alternative", "d", " type=\"definite\"")) +
            item(element("alternative", "", k_definite)))),
        (std::vector<row>{{u"Tea & <Cake>", u"<b>x&amp;y</b>", u"fixed", u"definite_string",
                           u"alias", u"[\u540D\u8A5E]"},
                          {u"outer", u"", u"", u"", u"", u"i"},
                          {u"", u"", u"", u"", u"", u"i"},
                          {u"", u"", u"http://x/?a=1&b=2", u"url_jump_string", u"", u""},
                          {u"", u"", u"", u"", u"kept", u""},
                          {},
                          {},
                          {u"", u"", u"", u"definite_string", u"", u""}}));
}

TEST(script_load, keeps_at_most_101_records_in_document_order) {
    std::string items = item(element("title", "skipped"), "other");
    std::vector<row> expected;
    for (int i = 0; i < 150; ++i) {
        const std::string title = std::to_string(i);
        items += item(element("title", title));
        if (i < 101) {
            expected.push_back({utf16_string(title.begin(), title.end())});
        }
    }
    EXPECT_EQ(read_all(document(items)), expected);
}

TEST(script_load, cuts_each_decoded_field_to_its_code_unit_limit) {
    // A letter and 60 characters outside the basic plane are 121 code units; a cut at 100 would
    // split a pair and leave text no encoder accepts, so it keeps 99. Limits count decoded text,
    // not the references that wrote it.
    const std::string long_title = times<std::string>("a", "\xF0\x9F\x98\x80", 60);
    EXPECT_EQ(
        read_all(document(item(element("title", long_title) +
                               element("comment", std::string(10300, 'c')) +
                               element("alternative", std::string(600, 'a'), k_definite) +
                               element("alternative_alias", std::string(150, 's')) +
                               element("info", std::string(80, 'i'))) +
                          item(element("title", times<std::string>("", "&amp;", 100) + "x") +
                               element("info", "a&#x42;&lt;" + std::string(70, 'b'))))),
        (std::vector<row>{
            {times<utf16_string>(u"a", u"\U0001F600", 49), utf16_string(10240, u'c'),
             utf16_string(512, u'a'), u"definite_string", utf16_string(100, u's'),
             utf16_string(64, u'i')},
            {utf16_string(100, u'&'), u"", u"", u"", u"", times<utf16_string>(u"aB<", u"b", 61)}}));
}

// A reader that has records refuses to parse again; one that found none may try again, and a
// malformed document fails every time.
TEST(script_load, parses_again_only_while_nothing_was_read) {
    const std::tuple<std::string, bool, bool, std::size_t> cases[] = {
        {k_good, true, false, 1},
        {document(item(element("title", "t"), "other")), true, true, 0},
        {"stray print\n" + k_good, false, false, 0},
        {"", false, false, 0}};
    for (const auto& [text, first, second, count] : cases) {
        SCOPED_TRACE(text);
        script_load reader(text);
        EXPECT_EQ(reader.parse(), first);
        EXPECT_EQ(reader.parse(), second);
        EXPECT_EQ(reader.get_candidate_data_array().size(), count);
    }
}
