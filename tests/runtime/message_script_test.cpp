#include "runtime/message_script.hpp"

#include <gtest/gtest.h>

using qiro_plugin::message_script;

// A written alternative with its alias, and one with escaping, are in the end-to-end document.
TEST(message_script, item_holds_an_http_or_fixed_alternative_then_its_index_lines) {
    struct row {
        std::u16string type;
        std::u16string alternative;
        std::u16string alias;
        std::string written; // the alternative element, or ""
    };
    const row rows[] = {
        {u"url_jump_string", u"http", u"",
         "\t\t<alternative type=\"url_jump_string\">\n\t\t\t<target>http</target>\n"
         "\t\t</alternative>\n"},
        {u"url_jump_string", u"ftp://example.org/", u"a", ""},
        {u"url_jump_string", u"HTTP://example.org/", u"a", ""},
        {u"url_jump_string", u"see http://example.org/", u"a", ""},
        {u"", u"text", u"a", ""},
        {u"definite_string", u"", u"a", ""},
    };
    for (const row& each : rows) {
        message_script message;
        message_script::candidate item;
        item.title = u"&";
        item.alternative_type = each.type;
        item.alternative = each.alternative;
        item.alternative_alias = each.alias;
        message.add_candidate(item);
        EXPECT_EQ(message.make_xml_string_to_candidate(4294967295U, 17),
                  "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n\n<itemlist>\n\t<item "
                  "type=\"candidate\">\n\t\t<title>&amp;</title>\n" +
                      each.written +
                      "\t\t<plugin_index>4294967295</plugin_index>\n"
                      "\t\t<candidate_index>0</candidate_index>\n"
                      "\t\t<generation_id>17</generation_id>\n\t</item>\n</itemlist>\n");
    }
}
