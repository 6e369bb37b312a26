#include "bridge_runner.hpp"

#include <nlohmann/json.hpp>

#include <utility>

namespace qiro_plugin::test {
namespace {

using fields = std::vector<std::pair<std::string, std::string>>;

const std::string k_a = "\xE3\x81\x82"; // あ
const std::string k_jump = "url_jump_string";
const std::string k_definite = "definite_string";

// A run result spelled in JSON.
std::string result(const std::vector<fields>& a_candidates) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const auto& each : a_candidates) {
        auto& candidate = list.emplace_back(nlohmann::ordered_json::object());
        for (const auto& [key, value] : each) {
            candidate[key] = value;
        }
    }
    return nlohmann::ordered_json{{"candidate", list}}.dump();
}

fields titled(const std::string& a_title, fields a_fields = {}) {
    a_fields.insert(a_fields.begin(), {"hyoki", a_title});
    return a_fields;
}

fields target(const std::string& a_title, const std::string& a_type, const std::string& a_target,
              const fields& a_more = {}) {
    fields result{{"hyoki", a_title}, {"alternative_type", a_type}, {"alternative", a_target}};
    result.insert(result.end(), a_more.begin(), a_more.end());
    return result;
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

class bridge_document : public bridge_test {};

TEST_P(bridge_document, every_field_rule_in_the_printed_document) {
    // Each candidate with the item it makes, "" when it is skipped; all go in one result.
    const std::vector<std::pair<fields, std::string>> rows{
        // Titles: cut in characters before escaping; controls become blanks; none skips.
        {titled(repeat(k_a, 120)), item(repeat(k_a, 100))},
        {titled(repeat("x", 99) + "&"), item(repeat("x", 99) + "&amp;")},
        {titled("&<>'\"&amp;t\tl\nc\rz\x01\x1f\x7f\xC2\x80\xC3\xA9"),
         item("&amp;&lt;&gt;&apos;&quot;&amp;amp;t l c z   \xC2\x80\xC3\xA9")},
        {{{"comment", "no title"}}, ""},
        {titled(""), ""},
        {titled("\t"), item(" ")},
        // comment_xhtml wins; backslash-n in a plain comment is a break; limits; double escaping.
        {titled("both", {{"comment", "plain"}, {"comment_xhtml", "<p>x</p>"}}),
         item("both", field("comment", "&lt;p&gt;x&lt;/p&gt;"))},
        {titled("a&b", {{"comment", "x\\ny\tz\n<b>&"}}),
         item("a&amp;b", wrapped("a&amp;amp;b", "x&lt;br /&gt;y z &amp;lt;b&amp;gt;&amp;amp;"))},
        {titled("kept", {{"comment_xhtml", "a\tb\nc\rd\x01"
                                           "e\\nf"}}),
         item("kept", field("comment", "a\tb\nc\rd e\\nf"))},
        {titled("cut", {{"comment", repeat("c", 1030)}}),
         item("cut", wrapped("cut", repeat("c", 1024)))},
        {titled("cutx", {{"comment_xhtml", repeat("d", 10250)}}),
         item("cutx", field("comment", repeat("d", 10240)))},
        {titled("none", {{"comment", ""}, {"comment_xhtml", ""}}), item("none")},
        // Jump targets: 512 characters kept, 513 dropped, counted before escaping; unknown types.
        {target("u513", k_jump, repeat("h", 513),
                {{"alternative_alias", "alias"}, {"info", "info"}}),
         item("u513", field("alternative_alias", "alias") + field("info", "info"))},
        {target("d513", k_definite, repeat("d", 513)),
         item("d513", alternative(k_definite, repeat("d", 512)))},
        {target("raw", k_jump, repeat("e", 510) + "&&"),
         item("raw", alternative(k_jump, repeat("e", 510) + "&amp;&amp;"))},
        {target("wide", k_jump, repeat(k_a, 512)),
         item("wide", alternative(k_jump, repeat(k_a, 512)))},
        {target("case", "URL_JUMP_STRING", "x"), item("case")},
        {target("typectl", k_definite + "\t", "x"), item("typectl")},
        {titled("notype", {{"alternative", "x"}}), item("notype")},
        // Without an alias every control of the alternative becomes a blank; with one, line ends
        // stay. Perl does not cut the alias.
        {target("tab", k_definite, "a\tb\nc"), item("tab", alternative(k_definite, "a b c"))},
        {target("tab alias", k_definite, "a\tb\nc", {{"alternative_alias", "x\ty"}}),
         item("tab alias", alternative(k_definite, "a\tb\nc") + field("alternative_alias", "x y"))},
        {titled("info", {{"info", "i\tj<" + repeat("i", 70)}}),
         item("info", field("info", "i j&lt;" + repeat("i", 60)))},
        {titled("alias", {{"alternative_alias", repeat("a", 120)}}),
         item("alias", field("alternative_alias", repeat("a", is("perl") ? 120 : 100)))},
    };
    // Only the first hundred positions are looked at, the skipped ones above included.
    std::vector<fields> candidates;
    std::string items;
    for (const auto& [given, made] : rows) {
        candidates.push_back(given);
        items += made;
    }
    for (auto position = rows.size(); position < 150; ++position) {
        std::string name = "c";
        name += std::to_string(position);
        candidates.push_back(titled(name));
        items += position < 100 ? item(name) : "";
    }
    // Each written form handed to the fixture plug-in, with the items of its document.
    std::vector<std::pair<std::string, std::string>> cases{{result(candidates), items}};
    if (!is("python")) {
        cases.push_back({"{\"other\":[]}", ""}); // no candidate list
    }
    if (!is("perl")) {
        // Python and Ruby check the shapes of what the plug-in returns; Perl does not.
        // Values of the wrong type count as absent, and skipped shapes use up the walk.
        cases.push_back({"{\"candidate\":[\"text\",5,null,[\"list\"],{\"hyoki\":\"ok\",\"comment\":"
                         "5,\"info\":[\"x\"],\"alternative_type\":\"definite_string\","
                         "\"alternative\":7},{\"hyoki\":7}]}",
                         item("ok")});
        cases.push_back(
            {"{\"candidate\":[" + repeat("\"text\",", 100) + "{\"hyoki\":\"late\"}]}", ""});
        cases.push_back({"{\"candidate\":\"x\"}", ""});
        cases.push_back({"[\"x\"]", ""});
    }
    if (!is("ruby")) {
        // A lone surrogate goes out in the lax form, as the plug-in manager's bridges wrote it,
        // so that the document is refused there and here alike.
        cases.push_back({"surrogate", item("a\xED\xA0\x80"
                                           "b\xED\xB0\x80")});
    }
    if (is("perl")) {
        // So does a code point past U+10FFFF, which a Perl string may hold.
        cases.push_back({"beyond", item("a\xF4\x90\x80\x80")});
        // Byte strings are read as UTF-8 text, but a jump target's length counts their bytes.
        cases.push_back({"bytes", item("\xE8\xA1\xA8\xE8\xA8\x98") + item("bytes")});
    } else if (is("python")) {
        cases.push_back({"bytes", ""}); // byte strings are not text
    }
    for (const auto& [written, expected] : cases) {
        const auto output = run(processing(written));
        const std::string label = written.substr(0, 60);
        EXPECT_EQ(output.out, k_marks + k_header + expected + k_footer) << label;
        EXPECT_EQ(output.err, "") << label;
        EXPECT_EQ(output.exit_status, 0) << label;
    }
    if (is("ruby")) {
        // Ruby mixes the plug-in into the scope the bridge runs in: a plug-in's helpers and
        // constants under the names the bridge uses inside must change nothing on either side.
        const auto output =
            run({plugin("collide"), "run_process", url_encode("a<b"), "", "", "0", "", ""});
        EXPECT_EQ(output.out, k_header +
                                  item("GET a&lt;b", wrapped("GET a&amp;lt;b", "x&lt;br /&gt;y")) +
                                  k_footer);
        EXPECT_EQ(output.err, "");
    }
}

INSTANTIATE_TEST_SUITE_P(bridges, bridge_document, ::testing::ValuesIn(k_languages),
                         [](const auto& a_info) { return std::string(a_info.param.name); });

} // namespace
} // namespace qiro_plugin::test
