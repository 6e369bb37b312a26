#include "bridge_runner.hpp"

#include <cstdio>
#include <utility>

namespace qiro_plugin::test {
namespace {

using fields = std::vector<std::pair<std::string, std::string>>;

const std::string k_a = "\xE3\x81\x82"; // あ

// One candidate spelled in JSON; values may hold any character.
std::string candidate(const fields& a_fields) {
    std::string text;
    for (const auto& [key, value] : a_fields) {
        text += (text.empty() ? "{\"" : ",\"") + key + "\":\"";
        for (const char letter : value) {
            char escape[8];
            std::snprintf(escape, sizeof(escape), "\\u%04x", letter);
            text += letter == '"' || letter == '\\'             ? std::string{'\\', letter}
                    : static_cast<unsigned char>(letter) < 0x20 ? std::string(escape)
                                                                : std::string(1, letter);
        }
        text += "\"";
    }
    return text.empty() ? "{}" : text + "}";
}

std::string result(const std::vector<fields>& a_candidates) {
    std::string text = "{\"candidate\":[";
    for (const auto& each : a_candidates) {
        text += (&each == &a_candidates.front() ? "" : ",") + candidate(each);
    }
    return text + "]}";
}

std::string field(const std::string& a_tag, const std::string& a_text) {
    return "\t\t<" + a_tag + ">" + a_text + "</" + a_tag + ">\n";
}

std::string alternative(const std::string& a_type, const std::string& a_text) {
    return "\t\t<alternative type=\"" + a_type + "\">" + a_text + "</alternative>\n";
}

// The plain comment's XHTML wrapping as it appears in the document, escaped twice.
std::string wrapped(const std::string& a_title, const std::string& a_body) {
    return field("comment",
                 "&lt;?xml version=&quot;1.0&quot; encoding=&quot;UTF-8&quot; ?&gt;"
                 "&lt;html xmlns=&quot;http://www.w3.org/1999/xhtml&quot;&gt;&lt;head&gt;"
                 "&lt;meta http-equiv=&quot;Content-Type&quot; "
                 "content=&quot;text/html; charset=UTF-8&quot; /&gt;"
                 "&lt;/head&gt;&lt;body&gt;&lt;h2&gt;" +
                     a_title + "&lt;/h2&gt;" + a_body + "&lt;/body&gt;&lt;/html&gt;");
}

struct document_case {
    std::string name;
    std::string written; // the written form handed to the fixture plug-in
    std::string items;
};

class bridge_document : public bridge_test {};

TEST_P(bridge_document, every_field_rule_in_the_printed_document) {
    const std::string jump = "url_jump_string";
    const std::string definite = "definite_string";
    std::vector<fields> late(100);
    late.push_back({{"hyoki", "late"}});
    std::vector<fields> walk;
    std::string walked;
    for (int position = 0; position < 150; ++position) {
        const std::string name = "c" + std::to_string(position);
        walk.push_back(position == 2 ? fields{{"info", "no title"}} : fields{{"hyoki", name}});
        walked += position < 100 && position != 2 ? item(name) : "";
    }
    std::vector<document_case> cases{
        {"titles are cut in characters before escaping; controls become blanks; no title skips",
         result({{{"hyoki", repeat(k_a, 120)}},
                 {{"hyoki", "a<b"}},
                 {{"hyoki", repeat("x", 99) + "&"}},
                 {{"hyoki", repeat("y", 100) + "<"}},
                 {{"hyoki", "&<>'\"&amp;"}},
                 {{"hyoki", "t\tl\nc\rz\x01\x1f\x7f\xC2\x80\xC3\xA9"}},
                 {{"comment", "no title"}},
                 {{"hyoki", ""}},
                 {{"hyoki", "\t"}}}),
         item(repeat(k_a, 100)) + item("a&lt;b") + item(repeat("x", 99) + "&amp;") +
             item(repeat("y", 100)) + item("&amp;&lt;&gt;&apos;&quot;&amp;amp;") +
             item("t l c z   \xC2\x80\xC3\xA9") + item(" ")},
        {"comment_xhtml wins; backslash-n in a plain comment is a break; limits; double escaping",
         result({{{"hyoki", "both"}, {"comment", "plain"}, {"comment_xhtml", "<p>x</p>"}},
                 {{"hyoki", "a&b"}, {"comment", "x\\ny\tz\n"}},
                 {{"hyoki", "kept"},
                  {"comment_xhtml", "a\tb\nc\rd\x01"
                                    "e\\nf"}},
                 {{"hyoki", "cut"}, {"comment", repeat("c", 1030)}},
                 {{"hyoki", "cutx"}, {"comment_xhtml", repeat("d", 10250)}},
                 {{"hyoki", "none"}, {"comment", ""}, {"comment_xhtml", ""}},
                 {{"hyoki", "escaped"}, {"comment", "<b>&"}}}),
         item("both", field("comment", "&lt;p&gt;x&lt;/p&gt;")) +
             item("a&amp;b", wrapped("a&amp;amp;b", "x&lt;br /&gt;y z ")) +
             item("kept", field("comment", "a\tb\nc\rd e\\nf")) +
             item("cut", wrapped("cut", repeat("c", 1024))) +
             item("cutx", field("comment", repeat("d", 10240))) + item("none") +
             item("escaped", wrapped("escaped", "&amp;lt;b&amp;gt;&amp;amp;"))},
        {"jump targets: 512 characters kept, 513 dropped, counted before escaping; unknown types",
         result(
             {{{"hyoki", "u512"}, {"alternative_type", jump}, {"alternative", repeat("h", 512)}},
              {{"hyoki", "u513"},
               {"alternative_type", jump},
               {"alternative", repeat("h", 513)},
               {"alternative_alias", "alias"},
               {"info", "info"}},
              {{"hyoki", "d513"},
               {"alternative_type", definite},
               {"alternative", repeat("d", 513)}},
              {{"hyoki", "raw"},
               {"alternative_type", jump},
               {"alternative", repeat("e", 510) + "&&"}},
              {{"hyoki", "wide"}, {"alternative_type", jump}, {"alternative", repeat(k_a, 512)}},
              {{"hyoki", "wide513"}, {"alternative_type", jump}, {"alternative", repeat(k_a, 513)}},
              {{"hyoki", "case"}, {"alternative_type", "URL_JUMP_STRING"}, {"alternative", "x"}},
              {{"hyoki", "typectl"}, {"alternative_type", definite + "\t"}, {"alternative", "x"}},
              {{"hyoki", "notype"}, {"alternative", "x"}}}),
         item("u512", alternative(jump, repeat("h", 512))) +
             item("u513", field("alternative_alias", "alias") + field("info", "info")) +
             item("d513", alternative(definite, repeat("d", 512))) +
             item("raw", alternative(jump, repeat("e", 510) + "&amp;&amp;")) +
             item("wide", alternative(jump, repeat(k_a, 512))) + item("wide513") + item("case") +
             item("typectl") + item("notype")},
        {"alternative, alias and info: controls and limits",
         result({{{"hyoki", "tab"}, {"alternative_type", definite}, {"alternative", "a\tb\nc"}},
                 {{"hyoki", "tab alias"},
                  {"alternative_type", definite},
                  {"alternative", "a\tb\nc"},
                  {"alternative_alias", "x\ty"}},
                 {{"hyoki", "info"}, {"info", repeat("i", 70)}},
                 {{"hyoki", "info ctrl"}, {"info", "i\tj<"}},
                 {{"hyoki", "alias"}, {"alternative_alias", repeat("a", 120)}}}),
         // Without an alias every control becomes a blank; with one, line ends stay.
         item("tab", alternative(definite, "a b c")) +
             item("tab alias",
                  alternative(definite, "a\tb\nc") + field("alternative_alias", "x y")) +
             item("info", field("info", repeat("i", 64))) +
             item("info ctrl", field("info", "i j&lt;")) +
             // Perl does not cut the alias.
             item("alias", field("alternative_alias", repeat("a", is("perl") ? 120 : 100)))},
        {"only the first hundred positions are looked at", result(walk), walked},
        {"entries without a title still use up the walk", result(late), ""},
    };
    if (!is("python")) {
        cases.push_back({"a result without a candidate list", "{\"other\":[]}", ""});
    }
    if (!is("perl")) {
        // Python and Ruby check the shapes of what the plug-in returns; Perl does not.
        cases.push_back({"values of the wrong type count as absent",
                         "{\"candidate\":[\"text\",5,null,[\"list\"],{\"hyoki\":\"ok\",\"comment\":"
                         "5,\"info\":[\"x\"],\"alternative_type\":\"definite_string\","
                         "\"alternative\":7},{\"hyoki\":7}]}",
                         item("ok")});
        cases.push_back({"skipped shapes use up the walk",
                         "{\"candidate\":[" + repeat("\"text\",", 100) + "{\"hyoki\":\"late\"}]}",
                         ""});
        cases.push_back({"a candidate list that is not a list", "{\"candidate\":\"x\"}", ""});
        cases.push_back({"a result that is not a dictionary", "[\"x\"]", ""});
    }
    if (is("perl")) {
        // Byte strings are read as UTF-8 text, but a jump target's length counts their bytes.
        cases.push_back(
            {"byte strings", "bytes", item("\xE8\xA1\xA8\xE8\xA8\x98") + item("bytes")});
    } else if (is("python")) {
        cases.push_back({"byte strings are not text", "bytes", ""});
    }
    for (const auto& each : cases) {
        const auto output =
            run({plugin("plugin"), "run_process", encoded(each.written), "", "", "0", "", ""});
        EXPECT_EQ(output.out, k_marks + k_header + each.items + k_footer) << each.name;
        EXPECT_EQ(output.err, "") << each.name;
        EXPECT_EQ(output.exit_status, 0) << each.name;
    }
}

INSTANTIATE_TEST_SUITE_P(bridges, bridge_document, ::testing::ValuesIn(all_languages()),
                         [](const auto& a_info) { return std::string(a_info.param.name); });

} // namespace
} // namespace qiro_plugin::test
