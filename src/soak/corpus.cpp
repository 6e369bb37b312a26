#include "soak/corpus.hpp"

#include "text/string_encode.hpp"

#include <algorithm>
#include <fstream>
#include <numeric>
#include <random>
#include <sstream>
#include <unordered_set>

namespace qiro_plugin::soak {

namespace {

std::string repeated(const std::string& a_text, std::size_t a_count) {
    std::string result;
    for (std::size_t index = 0; index < a_count; ++index) {
        result += a_text;
    }
    return result;
}

// Built by appending: GCC 12 at -O3 warns falsely about a literal put in front of a string.
std::string joined(std::string_view a_first, std::string_view a_second) {
    std::string result;
    result.reserve(a_first.size() + a_second.size());
    result += a_first;
    result += a_second;
    return result;
}

std::string read_whole_file(const std::string& a_path, const std::string& a_missing_message) {
    std::ifstream file(a_path, std::ios::binary);
    if (!file) {
        throw corpus_error(a_missing_message);
    }
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

// The lines of a text, without their LF and a CR before it.
std::vector<std::string_view> lines_of(std::string_view a_text) {
    std::vector<std::string_view> lines;
    while (!a_text.empty()) {
        const auto end = a_text.find('\n');
        std::string_view line = a_text.substr(0, end);
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        lines.push_back(line);
        if (end == std::string_view::npos) {
            break;
        }
        a_text.remove_prefix(end + 1);
    }
    return lines;
}

std::string euc_jp_to_utf8(std::string_view a_bytes) {
    const std::string bytes(a_bytes);
    const utf16_string text = string_encode::MultiByteEucJpToWideChar(bytes.c_str());
    return string_encode::WideCharToMultiByteUTF8(text.c_str());
}

} // namespace

std::vector<soak_input> edge_corpus() {
    const std::string a = "\u3042";         // あ, one UTF-16 unit
    const std::string yoshi = "\U00020BB7"; // 𠮷, outside the BMP: two UTF-16 units
    return {
        // Length: the tool accepts 1 to 100 UTF-16 units.
        {a, "", "the shortest form the tool accepts: one UTF-16 unit"},
        {"a", "", "one ASCII letter: a plug-in that indexes [1] or slices [0:2] meets it"},
        {repeated(a, 100), "", "the longest form the tool accepts: 100 UTF-16 units"},
        {repeated(a, 98) + yoshi, "",
         "100 units ending in a surrogate pair: a cut at 99 units would split it"},
        {repeated(a, 99) + yoshi, "",
         "101 units: cut at 100 it ends mid-pair; the tool refuses it as too long"},
        {joined("x", repeated("\U0001F600", 49)), "",
         "99 units but 50 characters: limits in units and in characters disagree"},
        // Outside the BMP and other sequences of several code points.
        {yoshi + "\u91ce\u5bb6", "\u3088\u3057\u306e\u3084",
         "a kanji outside the BMP with no Shift_JIS or EUC-JP code, and a reading"},
        {"\U0001F600", "", "an emoji: 2 UTF-16 units, 4 UTF-8 bytes, 1 character"},
        {"\u304b\u3099", "\u304c", "が decomposed: a kana and a combining voiced mark"},
        {"e\u0301", "", "é decomposed: normalisation changes its length"},
        {"\u845b\U000E0100", "", "an ideographic variation selector (outside the BMP)"},
        {"\u2764\uFE0F", "", "variation selector 16: emoji presentation"},
        {"\U0001F468\u200D\U0001F469\u200D\U0001F467", "",
         "a ZWJ emoji family: 5 code points shown as one glyph"},
        {"\U0001F1EF\U0001F1F5", "", "a flag: two regional indicators"},
        // Japanese widths and legacy character sets.
        {"\uFF76\uFF9E\uFF77\uFF9E", "\u304c\u304e",
         "half-width katakana with half-width voiced marks"},
        {"\uFF21\uFF22\uFF23\uFF11\uFF12\uFF13", "", "full-width ASCII letters and digits"},
        {"\u301C", "", "wave dash U+301C: Shift_JIS tables map 0x8160 to it or to U+FF5E"},
        {"\uFF5E", "", "full-width tilde U+FF5E: the other side of the wave dash mapping"},
        {"\u2212", "", "minus sign U+2212: CP932 maps 0x817C to U+FF0D instead"},
        {"\u2460", "", "circled digit one: in CP932 but not in EUC-JP"},
        {"\u9AD9", "", "髙: an IBM extension kanji, in CP932 but not in EUC-JP"},
        {"\uD55C\uAD6D\uC5B4", "", "Hangul: no Shift_JIS or EUC-JP code at all"},
        {"\u30FC\u3094\u30FF", "", "prolonged sound mark, ゔ and the katakana koto ligature"},
        {"\u2126", "", "ohm sign U+2126: NFC turns it into U+03A9"},
        {"\u0130\u00DF", "", "İ and ß: changing their case changes their length"},
        {joined("\uFEFF", a), "", "a byte-order mark in front: decoders may drop it"},
        {"\uFFFD", "", "the replacement character itself: looks like a decoding failure"},
        // Blanks and quotes.
        {" ", "", "a single blank: URL-encoded as +"},
        {"a b", "", "an inner blank: a plug-in that splits on blanks gets two words"},
        {" lead", "", "a leading blank: a plug-in that strips it changes the form"},
        {"trail ", "", "a trailing blank"},
        {"\u3000", "", "the ideographic space: a blank to some, a character to others"},
        {"\"", "", "a double quote: the command line quotes values with it"},
        {"'", "", "an apostrophe: escaped as &apos; by the bridges"},
        {"it's \"quoted\"", "", "both quotes in one form"},
        // What the URL encoding, the XML document and the shell give meaning to.
        {"%", "", "a percent sign alone: a decoder that expects two hex digits fails"},
        {"%E3%81%82", "", "a form that looks URL-encoded: it must not be decoded twice"},
        {"+", "", "a plus sign: sent as %2B, it must not arrive as a blank"},
        {"1+1", "", "a plus between digits"},
        {"\\", "", "a backslash alone"},
        {"C:\\new\\n", "", "backslash-n: the bridges turn it into <br /> in plain comments"},
        {"&", "", "an ampersand: escaped first by the bridges"},
        {"&amp;", "", "an entity as text: it must not be unescaped"},
        {"<", "", "a less-than sign"},
        {"<b>x</b>", "", "markup as text"},
        {"]]>", "", "the end of a CDATA section"},
        {"$HOME `id` $(id); rm", "", "shell syntax: the command runs through /bin/sh"},
        {"--help", "", "a form that looks like an option"},
        {"-1", "", "a negative number"},
        {"1e999", "", "a number that overflows a float"},
        {"None", "", "a word that is a value in Python"},
        {"nil", "", "a word that is a value in Ruby"},
        {"undef", "", "a word that is a value in Perl"},
        // Control characters: the tool passes them on (a zero unit would end the text, so none).
        {"\t", "", "a tab alone: the bridges turn it into a blank in titles"},
        {"a\tb", "", "a tab inside: tab-separated output of a plug-in breaks"},
        {"a\nb", "", "a line feed: line-based protocols break"},
        {"a\rb", "", "a carriage return"},
        {"\x1b[31mred", "", "an escape sequence: terminals act on it"},
        {"\x7f", "", "delete: a control character above the C0 range"},
        {"\x01", "", "start of heading: XML 1.0 forbids it even as a reference"},
        // Right to left.
        {"\u05E9\u05DC\u05D5\u05DD", "", "Hebrew: right-to-left text"},
        {"\u0645\u0631\u062D\u0628\u0627", "", "Arabic: right-to-left text with joining forms"},
        {"\u202Eabc", "", "a right-to-left override: the text shows reversed"},
        {"a\u200Fb", "", "a right-to-left mark between letters"},
    };
}

std::vector<soak_input> parse_skk_dictionary(std::string_view a_euc_jp,
                                             std::size_t* a_skipped_lines) {
    std::vector<soak_input> inputs;
    std::unordered_set<std::string> seen;
    std::size_t skipped = 0;
    bool okuri_ari = false;
    for (const auto line : lines_of(a_euc_jp)) {
        if (line.starts_with(";;")) {
            if (line.find("okuri-ari entries") != std::string_view::npos) {
                okuri_ari = true;
            } else if (line.find("okuri-nasi entries") != std::string_view::npos) {
                okuri_ari = false;
            }
            continue;
        }
        const auto blank = line.find(" /");
        if (line.empty() || blank == std::string_view::npos || blank == 0) {
            continue;
        }
        std::string text;
        try {
            text = euc_jp_to_utf8(line);
        } catch (const std::exception&) {
            ++skipped;
            continue;
        }
        const auto split = text.find(" /");
        std::string reading = text.substr(0, split);
        // An okurigana entry's reading ends in the Latin letter of its inflection.
        const bool inflected = okuri_ari || (reading.size() > 1 &&
                                             static_cast<unsigned char>(reading.front()) >= 0x80 &&
                                             reading.back() >= 'a' && reading.back() <= 'z');
        if (inflected) {
            continue;
        }
        // Prefix and suffix entries ("お>", ">かい") mark the joining side with ">".
        std::erase(reading, '>');
        std::string_view candidates = std::string_view(text).substr(split + 2);
        while (!candidates.empty()) {
            const auto end = candidates.find('/');
            std::string_view candidate = candidates.substr(0, end);
            candidates.remove_prefix(end == std::string_view::npos ? candidates.size() : end + 1);
            candidate = candidate.substr(0, candidate.find(';'));
            // Lisp forms compute their text (and write "/" and ";" as such).
            if (candidate.empty() || candidate.front() == '(' || reading.empty()) {
                continue;
            }
            std::string key = std::string(candidate) + '\t' + reading;
            if (seen.insert(key).second) {
                inputs.push_back({std::string(candidate), reading, {}});
            }
        }
    }
    if (a_skipped_lines != nullptr) {
        *a_skipped_lines = skipped;
    }
    return inputs;
}

std::vector<soak_input> read_skk_dictionary(const std::string& a_path) {
    const std::string text = read_whole_file(
        a_path, "the corpus skk needs " + a_path +
                    ", which the Debian package skkdic installs: sudo apt-get install skkdic");
    return parse_skk_dictionary(text);
}

std::vector<soak_input> parse_form_lines(std::string_view a_text) {
    std::vector<soak_input> inputs;
    for (const auto line : lines_of(a_text)) {
        if (line.empty()) {
            continue;
        }
        const auto tab = line.find('\t');
        soak_input input;
        input.written_form = std::string(line.substr(0, tab));
        if (tab != std::string_view::npos) {
            input.reading = std::string(line.substr(tab + 1));
        }
        inputs.push_back(std::move(input));
    }
    return inputs;
}

std::vector<soak_input> load_corpus(const std::string& a_name_or_file) {
    if (a_name_or_file == "edge") {
        return edge_corpus();
    }
    if (a_name_or_file == "skk") {
        return read_skk_dictionary(skk_dictionary_path);
    }
    const std::string text = read_whole_file(
        a_name_or_file, "no corpus " + a_name_or_file +
                            ": neither edge, skk nor a readable file of one form per line");
    try {
        string_encode::check_utf8(text);
    } catch (const std::exception&) {
        throw corpus_error("the corpus file " + a_name_or_file + " is not UTF-8");
    }
    return parse_form_lines(text);
}

std::vector<soak_input> sample_inputs(std::vector<soak_input> a_inputs,
                                      std::optional<std::size_t> a_limit, std::uint64_t a_seed) {
    if (!a_limit || *a_limit >= a_inputs.size()) {
        return a_inputs;
    }
    std::vector<std::size_t> order(a_inputs.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    // A partial Fisher-Yates shuffle with a generator whose output the standard fixes, so a seed
    // draws the same sample on every machine.
    std::mt19937_64 generator(a_seed);
    for (std::size_t index = 0; index < *a_limit; ++index) {
        const std::size_t span = order.size() - index;
        const std::size_t pick = index + static_cast<std::size_t>(generator() % span);
        std::swap(order[index], order[pick]);
    }
    order.resize(*a_limit);
    std::sort(order.begin(), order.end());
    std::vector<soak_input> sample;
    sample.reserve(order.size());
    for (const auto index : order) {
        sample.push_back(std::move(a_inputs[index]));
    }
    return sample;
}

} // namespace qiro_plugin::soak
