#include "bridge_runner.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qiro_plugin::test {
namespace {

using ::testing::HasSubstr;

const std::string k_header = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n\n<itemlist>\n";
const std::string k_footer = "</itemlist>\n";
const std::string k_item_start = "\t<item type=\"script_candidate\">\n";
const std::string k_item_end = "\t</item>\n";

const std::string k_a = "\xE3\x81\x82"; // あ

std::string title(const std::string& a_text) {
    return "\t\t<title>" + a_text + "</title>\n";
}

std::string titled(const std::string& a_text) {
    return k_item_start + title(a_text) + k_item_end;
}

// The plain comment's XHTML wrapping as it appears in the document, escaped twice.
std::string wrapped(const std::string& a_title, const std::string& a_body) {
    return "\t\t<comment>"
           "&lt;?xml version=&quot;1.0&quot; encoding=&quot;UTF-8&quot; ?&gt;"
           "&lt;html xmlns=&quot;http://www.w3.org/1999/xhtml&quot;&gt;"
           "&lt;head&gt;"
           "&lt;meta http-equiv=&quot;Content-Type&quot; "
           "content=&quot;text/html; charset=UTF-8&quot; /&gt;"
           "&lt;/head&gt;&lt;body&gt;&lt;h2&gt;" +
           a_title + "&lt;/h2&gt;" + a_body +
           "&lt;/body&gt;&lt;/html&gt;"
           "</comment>\n";
}

class bridge_document : public ::testing::TestWithParam<language> {
protected:
    bridge_document() : m_bridge(GetParam()) {}

    bool is(const char* a_name) const { return std::string(GetParam().name) == a_name; }

    // Runs field_rules for one group of candidates (the group name is the written form).
    process_output run_group(const std::string& a_group) const {
        return m_bridge.run({encoded(fixture(GetParam(), "field_rules").string()), "run_process",
                             encoded(a_group), "", "", "0", "", ""});
    }
    void expect_document(const std::string& a_group, const std::string& a_items) const {
        const auto output = run_group(a_group);
        EXPECT_EQ(output.out, k_header + a_items + k_footer) << a_group;
        EXPECT_EQ(output.err, "") << a_group;
        EXPECT_EQ(output.exit_status, 0) << a_group;
    }

    bridge_folder m_bridge;
};

TEST_P(bridge_document, title_is_cut_in_characters_escaped_then_cleared_of_controls) {
    expect_document("title", titled(repeat(k_a, 100)) + titled("a&lt;b") +
                                 titled(repeat("x", 99) + "&amp;") + titled(repeat("y", 100)) +
                                 titled("&amp;&lt;&gt;&apos;&quot;&amp;amp;") +
                                 titled("t l c z   \xC2\x80\xC3\xA9") +
                                 // No title and an empty title are skipped; a lone tab is a blank.
                                 titled(" "));
}

TEST_P(bridge_document, comment_rules) {
    expect_document(
        "comment",
        // comment_xhtml wins over comment.
        k_item_start + title("both") + "\t\t<comment>&lt;p&gt;x&lt;/p&gt;</comment>\n" +
            k_item_end +
            // Backslash-n becomes a break tag; the body's tab and line end become blanks.
            k_item_start + title("a&amp;b") + wrapped("a&amp;amp;b", "x&lt;br /&gt;y z ") +
            k_item_end +
            // comment_xhtml keeps tab, LF and CR, and its backslash-n.
            k_item_start + title("kept") + "\t\t<comment>a\tb\nc\rd e\\nf</comment>\n" +
            k_item_end + k_item_start + title("cut") + wrapped("cut", repeat("c", 1024)) +
            k_item_end + k_item_start + title("cutx") + "\t\t<comment>" + repeat("d", 10240) +
            "</comment>\n" + k_item_end + titled("none") + k_item_start + title("escaped") +
            wrapped("escaped", "&amp;lt;b&amp;gt;&amp;amp;") + k_item_end);
}

TEST_P(bridge_document, alternative_type_alias_and_info_rules) {
    const std::string jump = "\t\t<alternative type=\"url_jump_string\">";
    const std::string definite = "\t\t<alternative type=\"definite_string\">";
    const std::string end = "</alternative>\n";
    expect_document(
        "alternative",
        k_item_start + title("u512") + jump + repeat("h", 512) + end + k_item_end +
            // A jump target over 512 characters is dropped; alias and info stay.
            k_item_start + title("u513") + "\t\t<alternative_alias>alias</alternative_alias>\n" +
            "\t\t<info>info</info>\n" + k_item_end +
            // A definite text is cut instead.
            k_item_start + title("d513") + definite + repeat("d", 512) + end + k_item_end +
            // The length test counts the raw text, before escaping.
            k_item_start + title("raw") + jump + repeat("e", 510) + "&amp;&amp;" + end +
            k_item_end +
            // Unknown type words write no alternative.
            k_item_start + title("case") + "\t\t<alternative_alias>al</alternative_alias>\n" +
            "\t\t<info>in</info>\n" + k_item_end + titled("notype") +
            // Without an alias every control becomes a blank; with one, line ends stay.
            k_item_start + title("tab") + definite + "a b c" + end + k_item_end + k_item_start +
            title("tab alias") + definite + "a\tb\nc" + end +
            "\t\t<alternative_alias>x y</alternative_alias>\n" + k_item_end + k_item_start +
            title("info") + "\t\t<info>" + repeat("i", 64) + "</info>\n" + k_item_end +
            k_item_start + title("info ctrl") + "\t\t<info>i j&lt;</info>\n" + k_item_end +
            k_item_start + title("alias only") +
            "\t\t<alternative_alias>only</alternative_alias>\n" + k_item_end + titled("typectl"));
}

TEST_P(bridge_document, alias_limit_and_wide_jump_targets) {
    // Perl does not cut the alias.
    expect_document("alias_limit", k_item_start + title("alias") + "\t\t<alternative_alias>" +
                                       repeat("a", is("perl") ? 120 : 100) +
                                       "</alternative_alias>\n" + k_item_end);
    // Jump targets are measured in characters, not bytes.
    expect_document("wide_jump",
                    k_item_start + title("wide") + "\t\t<alternative type=\"url_jump_string\">" +
                        repeat(k_a, 512) + "</alternative>\n" + k_item_end + titled("wide513"));
}

TEST_P(bridge_document, only_the_first_hundred_positions_are_looked_at) {
    std::string items = titled("c0") + titled("c1");
    for (int position = 3; position < 100; ++position) {
        items += titled("c" + std::to_string(position));
    }
    expect_document("walk", items);
    // 100 entries without a title use up the walk; the 101st is never reached.
    expect_document("late", "");
}

TEST_P(bridge_document, result_without_a_candidate_list) {
    const auto output = run_group("no_candidate");
    if (is("python")) {
        EXPECT_EQ(output.out, "");
        EXPECT_THAT(output.err, HasSubstr("KeyError"));
    } else {
        EXPECT_EQ(output.out, k_header + k_footer);
        EXPECT_EQ(output.err, "");
    }
}

INSTANTIATE_TEST_SUITE_P(bridges, bridge_document, ::testing::ValuesIn(all_languages()),
                         [](const auto& a_info) { return std::string(a_info.param.name); });

// Python and Ruby test the shapes of what the plug-in returns; Perl does not.
class typed_bridge_document : public bridge_document {};

TEST_P(typed_bridge_document, values_of_the_wrong_type_count_as_absent) {
    expect_document("shapes", titled("ok"));
    // Skipped entries still use up the walk of 100 positions.
    expect_document("late_shapes", "");
    expect_document("not_a_list", "");
    expect_document("not_a_dict", "");
}

INSTANTIATE_TEST_SUITE_P(bridges, typed_bridge_document,
                         ::testing::Values(ruby_language(), python_language()),
                         [](const auto& a_info) { return std::string(a_info.param.name); });

TEST(python_bridge, byte_strings_are_not_text) {
    bridge_folder bridge(python_language());
    const auto output = bridge.run({encoded(fixture(python_language(), "field_rules").string()),
                                    "run_process", encoded("byte_strings"), "", "", "0", "", ""});
    EXPECT_EQ(output.out, k_header + k_footer);
    EXPECT_EQ(output.err, "");
}

TEST(ruby_bridge, strings_of_other_encodings_are_read_as_utf8_text) {
    bridge_folder bridge(ruby_language());
    const auto output = bridge.run({encoded(fixture(ruby_language(), "field_rules").string()),
                                    "run_process", encoded("encodings"), "", "", "0", "", ""});
    EXPECT_EQ(output.out, k_header + titled(k_a) + titled("\xE3\x81\x84") +
                              titled("a\xEF\xBF\xBD"
                                     "b") +
                              k_footer);
    EXPECT_EQ(output.err, "");
}

TEST(perl_bridge, byte_strings_are_decoded_but_jump_targets_are_measured_in_bytes) {
    bridge_folder bridge(perl_language());
    const auto output = bridge.run({encoded(fixture(perl_language(), "field_rules").string()),
                                    "run_process", encoded("byte_strings"), "", "", "0", "", ""});
    // 200 characters of three bytes each: too long as a jump target, kept as a definite text.
    EXPECT_EQ(output.out, k_header + titled("\xE8\xA1\xA8\xE8\xA8\x98") + titled("bytes") +
                              k_item_start + title("bytes definite") +
                              "\t\t<alternative type=\"definite_string\">" + repeat(k_a, 200) +
                              "</alternative>\n" + k_item_end + k_footer);
    EXPECT_EQ(output.err, "");
}

} // namespace
} // namespace qiro_plugin::test
