#include "soak/corpus.hpp"
#include "text/string_encode.hpp"

#include <gtest/gtest.h>

#include <set>

namespace qiro_plugin::soak {
namespace {

std::size_t units(const std::string& a_text) {
    return string_encode::MultiByteUTF8ToWideChar(a_text.c_str()).size();
}

std::string euc_jp(const std::u16string& a_text) {
    return string_encode::WideCharToMultiByteEucJp(
        reinterpret_cast<const qiro_plugin_utf16_t*>(a_text.c_str()));
}

TEST(edge_corpus, every_form_has_its_reason_and_the_length_edges_are_there) {
    const auto corpus = edge_corpus();
    std::set<std::size_t> lengths;
    std::set<std::string> forms;
    for (const auto& input : corpus) {
        EXPECT_FALSE(input.note.empty()) << input.written_form;
        EXPECT_TRUE(forms.insert(input.written_form).second) << "twice: " << input.note;
        EXPECT_EQ(input.written_form.find('\0'), std::string::npos);
        lengths.insert(units(input.written_form));
    }
    EXPECT_TRUE(lengths.count(1) && lengths.count(100) && lengths.count(101));
    // The 101-unit form ends in a pair that a cut at 100 would split.
    const auto over = std::find_if(corpus.begin(), corpus.end(), [](const auto& a_input) {
        return units(a_input.written_form) == 101;
    });
    const auto text = string_encode::MultiByteUTF8ToWideChar(over->written_form.c_str());
    EXPECT_TRUE(text[99] >= 0xD800 && text[99] < 0xDC00);
}

TEST(skk_corpus, takes_forms_with_readings_through_euc_jp_and_leaves_out_okurigana) {
    const std::string dictionary =
        ";; okuri-ari entries.\n" + euc_jp(u"かk /書/描/\n") + ";; okuri-nasi entries.\n" +
        euc_jp(u"かんじ /漢字/幹事;まとめ役/(concat \"a\\057b\")/漢字/\n") + euc_jp(u"お> /御/\n") +
        "broken \xa1 /x/\n" + euc_jp(u"pc /ＰＣ/\n");
    std::size_t skipped = 0;
    const auto inputs = parse_skk_dictionary(dictionary, &skipped);
    ASSERT_EQ(inputs.size(), 4u);
    EXPECT_EQ(inputs[0].written_form, "漢字");
    EXPECT_EQ(inputs[0].reading, "かんじ");
    EXPECT_EQ(inputs[1].written_form, "幹事");
    EXPECT_EQ(inputs[2].written_form, "御");
    EXPECT_EQ(inputs[2].reading, "お");
    EXPECT_EQ(inputs[3].written_form, "ＰＣ");
    EXPECT_EQ(skipped, 1u);
}

TEST(skk_corpus, a_missing_dictionary_names_the_package) {
    try {
        read_skk_dictionary("/nonexistent/SKK-JISYO.L");
        FAIL();
    } catch (const corpus_error& error) {
        EXPECT_NE(std::string(error.what()).find("skkdic"), std::string::npos);
    }
}

TEST(form_file, one_form_per_line_with_an_optional_reading) {
    const auto inputs = parse_form_lines("変換\tへんかん\r\n\nabc\n末尾");
    ASSERT_EQ(inputs.size(), 3u);
    EXPECT_EQ(inputs[0].reading, "へんかん");
    EXPECT_EQ(inputs[1].written_form, "abc");
    EXPECT_EQ(inputs[1].reading, "");
    EXPECT_EQ(inputs[2].written_form, "末尾");
}

TEST(sampling, the_same_seed_draws_the_same_inputs_in_corpus_order) {
    std::vector<soak_input> all;
    for (int index = 0; index < 1000; ++index) {
        all.push_back({std::to_string(index), "", ""});
    }
    const auto first = sample_inputs(all, 50, 7);
    const auto again = sample_inputs(all, 50, 7);
    const auto other = sample_inputs(all, 50, 8);
    ASSERT_EQ(first.size(), 50u);
    std::vector<int> numbers;
    for (std::size_t index = 0; index < first.size(); ++index) {
        EXPECT_EQ(first[index].written_form, again[index].written_form);
        numbers.push_back(std::stoi(first[index].written_form));
    }
    EXPECT_TRUE(std::is_sorted(numbers.begin(), numbers.end()));
    EXPECT_EQ(std::set<int>(numbers.begin(), numbers.end()).size(), 50u);
    bool differs = false;
    for (std::size_t index = 0; index < first.size(); ++index) {
        differs = differs || first[index].written_form != other[index].written_form;
    }
    EXPECT_TRUE(differs);
    EXPECT_EQ(sample_inputs(all, std::nullopt, 7).size(), 1000u);
}

} // namespace
} // namespace qiro_plugin::soak
