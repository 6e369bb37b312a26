// Builds candidate messages from arbitrary bytes and reads their candidate-list document back
// with libxml2: text that XML can carry gives a well-formed document holding each field as it
// was; any other text either does too or fails with the UTF-8 encoder's documented error.

#include "candidate_list_check.hpp"
#include "fuzz_require.hpp"
#include "runtime/message_script.hpp"

#include <fuzzer/FuzzedDataProvider.h>
#include <libxml/parser.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace candidate_list_check;

// Pieces that meet the escaping and the alternative rule; the last four are not XML text.
const std::vector<utf16_string> k_pieces = {u"&",
                                            u"<",
                                            u">",
                                            u"'",
                                            u"\"",
                                            u"http",
                                            u"https://",
                                            u"\r\n",
                                            u"\r",
                                            u"\t",
                                            u"]]>",
                                            u"&amp;",
                                            u"\u3042",
                                            u"\U00020BB7",
                                            u"\uFFFD",
                                            utf16_string(1, u'\xD800'),
                                            utf16_string(1, u'\xDC00'),
                                            utf16_string(1, u'\x01'),
                                            utf16_string(1, u'\xFFFE')};
constexpr std::size_t k_xml_pieces = 15;

utf16_string fuzzed_text(FuzzedDataProvider& a_input, bool a_any_unit) {
    utf16_string text;
    const auto pieces = a_input.ConsumeIntegralInRange<std::size_t>(0, 24);
    for (std::size_t i = 0; i < pieces; ++i) {
        const auto choice = a_input.ConsumeIntegral<std::uint8_t>();
        if (choice < k_pieces.size()) {
            text += k_pieces[a_any_unit ? choice : choice % k_xml_pieces];
        } else if (choice < 64) {
            auto unit = a_input.ConsumeIntegral<char16_t>();
            text.push_back(a_any_unit || is_xml_text(utf16_string(1, unit)) ? unit : u'\uFFFD');
        } else {
            text.push_back(choice);
        }
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    xmlInitParser();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size) {
    FuzzedDataProvider input(a_data, a_size);
    const auto plugin_index = input.ConsumeIntegral<std::uint32_t>();
    const auto generation = input.ConsumeIntegral<std::uint32_t>();
    const bool any_unit = input.ConsumeBool();

    message_script message;
    bool xml_text = true;
    while (input.remaining_bytes() > 0 && message.get_candidates().size() < 128) {
        message_script::candidate candidate;
        candidate.title = fuzzed_text(input, any_unit);
        candidate.comment = fuzzed_text(input, any_unit);
        candidate.alternative = fuzzed_text(input, any_unit);
        candidate.alternative_alias = fuzzed_text(input, any_unit);
        switch (input.ConsumeIntegralInRange(0, 3)) {
        case 1:
            candidate.alternative_type = k_definite;
            break;
        case 2:
            candidate.alternative_type = k_url_jump;
            break;
        case 3:
            candidate.alternative_type = fuzzed_text(input, any_unit);
            break;
        default:
            break;
        }
        candidate.info = fuzzed_text(input, any_unit);
        for (const auto* field :
             {&candidate.title, &candidate.comment, &candidate.alternative,
              &candidate.alternative_alias, &candidate.alternative_type, &candidate.info}) {
            xml_text = xml_text && is_xml_text(*field);
        }
        message.add_candidate(candidate);
    }

    if (xml_text) {
        require_readable(message, plugin_index, generation);
        return 0;
    }
    try {
        static_cast<void>(message.make_xml_string_to_candidate(plugin_index, generation));
    } catch (const std::runtime_error& error) {
        require(error.what() == std::string("::WideCharToMultiByteShiftJis() : failed"));
    }
    return 0;
}
