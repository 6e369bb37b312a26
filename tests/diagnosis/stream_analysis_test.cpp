#include "diagnosis/analyze.hpp"
#include "diagnosis/stream_analysis.hpp"

#include <gtest/gtest.h>

namespace qiro_plugin::diagnosis {
namespace {

TEST(stream_analysis, utf8_faults_are_found_at_their_first_byte) {
    const struct {
        std::string bytes;
        std::optional<std::uint64_t> offset;
        const char* shown;
    } cases[] = {
        {"plain \xE5\xA4\x89\xE6\x8F\x9B \xF0\x9F\x98\x80", {}, ""},
        {"ab\x82\xA0", 2, "0x82 0xA0"},
        {"\xC0\xAF", 0, "0xC0 0xAF"},                    // overlong "/"
        {"x\xE0\x80\xAF", 1, "0xE0 0x80 0xAF"},          // overlong three-byte form
        {"\xED\xA0\x80", 0, "0xED 0xA0 0x80"},           // a surrogate
        {"\xF4\x90\x80\x80!", 0, "0xF4 0x90 0x80 0x80"}, // above U+10FFFF
        {"ok\xE5\xA4", 2, "0xE5 0xA4"},                  // cut short at the end
    };
    for (const auto& [bytes, offset, shown] : cases) {
        const auto fault = find_utf8_fault(bytes);
        ASSERT_EQ(fault.has_value(), offset.has_value()) << shown;
        if (fault) {
            EXPECT_EQ(fault->offset, *offset) << shown;
            EXPECT_EQ(fault->bad_bytes, shown);
        }
    }
}

TEST(stream_analysis, text_around_the_bridge_document_is_stray_and_parse_faults_are_placed) {
    const std::string document =
        "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n\n<itemlist>\n</itemlist>\n";
    const auto strays = find_stray_output("one\ntwo\n" + document + "late\n");
    ASSERT_EQ(strays.size(), 2U);
    EXPECT_EQ(strays[0].text, "one\ntwo\n");
    EXPECT_EQ(strays[0].first_line, 1U);
    EXPECT_EQ(strays[0].last_line, 2U);
    EXPECT_EQ(strays[1].first_line, 7U);
    EXPECT_EQ(strays[1].offset, 8 + document.size());
    EXPECT_TRUE(find_stray_output(document).empty());

    EXPECT_FALSE(find_parse_fault(document));
    const auto fault = find_parse_fault("<itemlist>\n  <item>&bad;</item>\n</itemlist>");
    ASSERT_TRUE(fault);
    EXPECT_EQ(fault->line, 2U);
    EXPECT_EQ(fault->offset, 11 + fault->column - 1);
    EXPECT_FALSE(fault->message.empty());
}

TEST(stream_analysis, a_document_is_too_large_from_one_byte_past_the_readers_limit) {
    run_evidence evidence;
    evidence.instance_made = true;
    evidence.run.ran = true;
    for (const std::size_t size : {std::size_t{10485760}, std::size_t{10485761}}) {
        evidence.run.std_output.assign(size, ' ');
        bool too_large = false;
        for (const auto& found : diagnose(evidence, ui_language::english)) {
            too_large = too_large || found.code == codes::output_too_large;
        }
        EXPECT_EQ(too_large, size > 10485760) << size;
    }
}

} // namespace
} // namespace qiro_plugin::diagnosis
