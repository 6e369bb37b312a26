// Builds candidate messages from arbitrary bytes and reads their candidate-list document back
// with libxml2: text that XML can carry gives a well-formed document holding each field as it
// was; any other text either does too or fails with the UTF-8 encoder's documented error.

#include "fuzz_require.hpp"
#include "runtime/message_script.hpp"
#include "text/string_encode.hpp"

#include <fuzzer/FuzzedDataProvider.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace {

using qiro_plugin::message_script;
using qiro_plugin::utf16_string;

const utf16_string k_definite = u"definite_string";
const utf16_string k_url_jump = u"url_jump_string";

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

bool is_xml_character(char32_t a_code) {
    return a_code == 0x9 || a_code == 0xA || a_code == 0xD ||
           (a_code >= 0x20 && a_code <= 0xD7FF) || (a_code >= 0xE000 && a_code <= 0xFFFD) ||
           (a_code >= 0x10000 && a_code <= 0x10FFFF);
}

bool is_xml_text(const utf16_string& a_text) {
    for (std::size_t i = 0; i < a_text.size(); ++i) {
        char32_t code = a_text[i];
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < a_text.size() && a_text[i + 1] >= 0xDC00 &&
            a_text[i + 1] <= 0xDFFF) {
            code = 0x10000 + ((code - 0xD800) << 10) + (a_text[i + 1] - 0xDC00);
            ++i;
        }
        if (!is_xml_character(code)) {
            return false;
        }
    }
    return true;
}

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

// What a reader of the document gets for a field: XML turns every line end into a line feed.
std::string as_read(const utf16_string& a_text) {
    std::string text = qiro_plugin::string_encode::WideCharToMultiByteUTF8(a_text.c_str());
    std::string read;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r') {
            read.push_back('\n');
            if (i + 1 < text.size() && text[i + 1] == '\n') {
                ++i;
            }
        } else {
            read.push_back(text[i]);
        }
    }
    return read;
}

std::string as_text(xmlChar* a_text) {
    std::unique_ptr<xmlChar, xmlFreeFunc> owned(a_text, xmlFree);
    return owned ? reinterpret_cast<const char*>(owned.get()) : "";
}

std::string content_of(const xmlNode* a_node) {
    return as_text(xmlNodeGetContent(a_node));
}

std::string_view name_of(const xmlNode* a_node) {
    return reinterpret_cast<const char*>(a_node->name);
}

std::string type_of(const xmlNode* a_node) {
    return as_text(xmlGetProp(a_node, reinterpret_cast<const xmlChar*>("type")));
}

std::map<std::string, const xmlNode*> children_of(const xmlNode* a_node) {
    std::map<std::string, const xmlNode*> children;
    for (const xmlNode* child = a_node->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) {
            require(children.emplace(name_of(child), child).second);
        }
    }
    return children;
}

// A field left out when empty, else present with its text.
void check_field(const std::map<std::string, const xmlNode*>& a_children, const char* a_name,
                 const utf16_string& a_text, bool a_written) {
    const auto found = a_children.find(a_name);
    require((found != a_children.end()) == a_written);
    require(!a_written || content_of(found->second) == as_read(a_text));
}

void check_item(const xmlNode* a_item, const message_script::candidate& a_candidate,
                std::size_t a_position, std::uint32_t a_plugin_index, std::uint32_t a_generation) {
    require(type_of(a_item) == "candidate");
    const auto children = children_of(a_item);
    check_field(children, "title", a_candidate.title, !a_candidate.title.empty());
    check_field(children, "comment", a_candidate.comment, !a_candidate.comment.empty());
    check_field(children, "info", a_candidate.info, !a_candidate.info.empty());
    const bool alternative =
        !a_candidate.alternative.empty() && (a_candidate.alternative_type == k_definite ||
                                             (a_candidate.alternative_type == k_url_jump &&
                                              a_candidate.alternative.starts_with(u"http")));
    require(children.contains("alternative") == alternative);
    if (alternative) {
        const xmlNode* node = children.at("alternative");
        require(type_of(node) == as_read(a_candidate.alternative_type));
        const auto inner = children_of(node);
        check_field(inner, "target", a_candidate.alternative, true);
        check_field(inner, "alias", a_candidate.alternative_alias,
                    !a_candidate.alternative_alias.empty());
        require(inner.size() == 1 + !a_candidate.alternative_alias.empty());
    }
    require(content_of(children.at("plugin_index")) == std::to_string(a_plugin_index));
    require(content_of(children.at("candidate_index")) == std::to_string(a_position));
    require(content_of(children.at("generation_id")) == std::to_string(a_generation));
    require(children.size() == 3 + !a_candidate.title.empty() + !a_candidate.comment.empty() +
                                   !a_candidate.info.empty() + alternative);
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

    std::string document;
    try {
        document = message.make_xml_string_to_candidate(plugin_index, generation);
    } catch (const std::runtime_error& error) {
        require(!xml_text &&
                error.what() == std::string("::WideCharToMultiByteShiftJis() : failed"));
        return 0;
    }
    if (!xml_text) {
        return 0;
    }
    std::unique_ptr<xmlDoc, decltype(&xmlFreeDoc)> parsed(
        xmlReadMemory(document.data(), static_cast<int>(document.size()), nullptr, nullptr,
                      XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING),
        xmlFreeDoc);
    require(parsed != nullptr);
    const xmlNode* root = xmlDocGetRootElement(parsed.get());
    require(root != nullptr && name_of(root) == "itemlist");
    std::size_t position = 0;
    for (const xmlNode* item = root->children; item != nullptr; item = item->next) {
        if (item->type != XML_ELEMENT_NODE) {
            continue;
        }
        require(name_of(item) == "item" && position < message.get_candidates().size());
        check_item(item, message.get_candidates()[position], position, plugin_index, generation);
        ++position;
    }
    require(position == message.get_candidates().size());
    return 0;
}
