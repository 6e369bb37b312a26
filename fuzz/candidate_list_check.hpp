#pragma once
// Reads a message's candidate-list document back with libxml2 and requires that it holds every
// candidate's fields and indices as given, under the rule for writing the alternative.

#include "fuzz_require.hpp"
#include "runtime/message_script.hpp"
#include "text/string_encode.hpp"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace candidate_list_check {

using qiro_plugin::message_script;
using qiro_plugin::utf16_string;

inline const utf16_string k_definite = u"definite_string";
inline const utf16_string k_url_jump = u"url_jump_string";

inline bool is_xml_character(char32_t a_code) {
    return a_code == 0x9 || a_code == 0xA || a_code == 0xD ||
           (a_code >= 0x20 && a_code <= 0xD7FF) || (a_code >= 0xE000 && a_code <= 0xFFFD) ||
           (a_code >= 0x10000 && a_code <= 0x10FFFF);
}

inline bool is_xml_text(const utf16_string& a_text) {
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

// What a reader of the document gets for a field: XML turns every line end into a line feed.
inline std::string as_read(const utf16_string& a_text) {
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

inline std::string as_text(xmlChar* a_text) {
    std::unique_ptr<xmlChar, xmlFreeFunc> owned(a_text, xmlFree);
    return owned ? reinterpret_cast<const char*>(owned.get()) : "";
}

inline std::string content_of(const xmlNode* a_node) {
    return as_text(xmlNodeGetContent(a_node));
}

inline std::string_view name_of(const xmlNode* a_node) {
    return reinterpret_cast<const char*>(a_node->name);
}

inline std::string type_of(const xmlNode* a_node) {
    return as_text(xmlGetProp(a_node, reinterpret_cast<const xmlChar*>("type")));
}

inline std::map<std::string, const xmlNode*> children_of(const xmlNode* a_node) {
    std::map<std::string, const xmlNode*> children;
    for (const xmlNode* child = a_node->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) {
            require(children.emplace(name_of(child), child).second);
        }
    }
    return children;
}

// A field left out when empty, else present with its text.
inline void check_field(const std::map<std::string, const xmlNode*>& a_children, const char* a_name,
                        const utf16_string& a_text, bool a_written) {
    const auto found = a_children.find(a_name);
    require((found != a_children.end()) == a_written);
    require(!a_written || content_of(found->second) == as_read(a_text));
}

inline void check_item(const xmlNode* a_item, const message_script::candidate& a_candidate,
                       std::size_t a_position, std::uint32_t a_plugin_index,
                       std::uint32_t a_generation) {
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

// Text that XML can carry (the case for everything the result document reader gives) must come
// out as a document that reads back to the message.
inline void require_readable(const message_script& a_message, std::uint32_t a_plugin_index,
                             std::uint32_t a_generation) {
    const std::string document =
        a_message.make_xml_string_to_candidate(a_plugin_index, a_generation);
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
        require(name_of(item) == "item" && position < a_message.get_candidates().size());
        check_item(item, a_message.get_candidates()[position], position, a_plugin_index,
                   a_generation);
        ++position;
    }
    require(position == a_message.get_candidates().size());
}

} // namespace candidate_list_check
