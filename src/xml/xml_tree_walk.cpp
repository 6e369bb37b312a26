#include "xml/xml_tree_walk.hpp"

#include "text/utf8_codec.hpp"
#include "xml/xml_access_utility.hpp"

#include <cstdint>
#include <cstring>

namespace xml_access_library {

namespace detail {

namespace {

std::string_view view_of(const xmlChar* a_text) {
    return a_text == nullptr ? std::string_view()
                             : std::string_view(reinterpret_cast<const char*>(a_text));
}

bool is_blank(const xmlChar* a_text) {
    for (const xmlChar* p = a_text; p != nullptr && *p != 0; ++p) {
        if (*p != ' ' && *p != '\t' && *p != '\n' && *p != '\r') {
            return false;
        }
    }
    return true;
}

bool is_parameter_entity(const xmlNode* a_reference) {
    const xmlNode* target = a_reference->children;
    if (target == nullptr || target->type != XML_ENTITY_DECL) {
        return false;
    }
    const auto kind = reinterpret_cast<const xmlEntity*>(target)->etype;
    return kind == XML_INTERNAL_PARAMETER_ENTITY || kind == XML_EXTERNAL_PARAMETER_ENTITY;
}

// The character a "#65" or "#x41" reference names, or 0 when it names none.
std::uint32_t character_reference_value(std::string_view a_name) {
    if (a_name.size() < 2 || a_name[0] != '#') {
        return 0;
    }
    const bool hexadecimal = a_name[1] == 'x';
    const std::string_view digits = a_name.substr(hexadecimal ? 2 : 1);
    if (digits.empty() || digits.size() > 8) {
        return 0;
    }
    std::uint32_t value = 0;
    for (const char digit : digits) {
        std::uint32_t unit = 0;
        if (digit >= '0' && digit <= '9') {
            unit = static_cast<std::uint32_t>(digit - '0');
        } else if (hexadecimal && digit >= 'a' && digit <= 'f') {
            unit = static_cast<std::uint32_t>(digit - 'a' + 10);
        } else if (hexadecimal && digit >= 'A' && digit <= 'F') {
            unit = static_cast<std::uint32_t>(digit - 'A' + 10);
        } else {
            return 0;
        }
        value = value * (hexadecimal ? 16 : 10) + unit;
    }
    if (value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
        return 0;
    }
    return value;
}

char predefined_entity_value(std::string_view a_name) {
    if (a_name == "amp") {
        return '&';
    }
    if (a_name == "lt") {
        return '<';
    }
    if (a_name == "gt") {
        return '>';
    }
    if (a_name == "apos") {
        return '\'';
    }
    if (a_name == "quot") {
        return '"';
    }
    return 0;
}

void append_node_text(std::string& a_text, const xmlNode* a_node) {
    if (a_node->type == XML_ENTITY_REF_NODE) {
        append_entity_reference(a_text, a_node);
    } else if (a_node->type == XML_CDATA_SECTION_NODE ||
               (a_node->type == XML_TEXT_NODE && !is_blank(a_node->content))) {
        a_text.append(view_of(a_node->content));
    }
}

// Text, CDATA and references below a_parent in document order; comments and processing
// instructions are passed over, and entity references are not followed.
void append_descendant_text(std::string& a_text, const xmlNode* a_parent) {
    const xmlNode* node = a_parent->children;
    while (node != nullptr) {
        if (node->type == XML_ELEMENT_NODE && node->children != nullptr) {
            node = node->children;
            continue;
        }
        append_node_text(a_text, node);
        while (node != a_parent && node->next == nullptr) {
            node = node->parent;
        }
        node = node == a_parent ? nullptr : node->next;
    }
}

const xmlNs* find_namespace_declaration(const xmlNode* a_element, std::string_view a_prefix,
                                        bool a_default) {
    for (const xmlNs* ns = a_element->nsDef; ns != nullptr; ns = ns->next) {
        if (a_default ? ns->prefix == nullptr
                      : ns->prefix != nullptr && view_of(ns->prefix) == a_prefix) {
            return ns;
        }
    }
    return nullptr;
}

} // namespace

qualified_name::qualified_name(std::string_view a_utf8_name) : m_whole(a_utf8_name) {
    const auto colon = a_utf8_name.find(':');
    if (colon != std::string_view::npos) {
        m_prefix = a_utf8_name.substr(0, colon);
        m_local = a_utf8_name.substr(colon + 1);
    }
}

bool qualified_name::matches(const xmlChar* a_local, const xmlNs* a_ns) const {
    if (a_ns == nullptr || a_ns->prefix == nullptr) {
        return view_of(a_local) == m_whole;
    }
    return !m_local.empty() && view_of(a_local) == m_local && view_of(a_ns->prefix) == m_prefix;
}

void append_entity_reference(std::string& a_text, const xmlNode* a_reference) {
    const std::string_view name = view_of(a_reference->name);
    if (!is_parameter_entity(a_reference)) {
        if (const char predefined = predefined_entity_value(name)) {
            a_text.push_back(predefined);
            return;
        }
        if (const std::uint32_t code = character_reference_value(name)) {
            qiro_plugin::string_encode::detail::append_utf8(a_text, code);
            return;
        }
    }
    a_text.push_back(is_parameter_entity(a_reference) ? '%' : '&');
    a_text.append(name);
    a_text.push_back(';');
}

bool find_attribute_value(const xmlNode* a_element, const qualified_name& a_name,
                          std::string& a_value) {
    for (const xmlAttr* attribute = a_element->properties; attribute != nullptr;
         attribute = attribute->next) {
        if (!a_name.matches(attribute->name, attribute->ns)) {
            continue;
        }
        a_value.clear();
        for (const xmlNode* part = attribute->children; part != nullptr; part = part->next) {
            if (part->type == XML_TEXT_NODE) {
                a_value.append(view_of(part->content));
            } else if (part->type == XML_ENTITY_REF_NODE) {
                append_entity_reference(a_value, part);
            }
        }
        return true;
    }
    // The parser keeps namespace declarations apart from the attributes; a reader that asks
    // for them by their written name still finds them.
    const xmlNs* declaration = nullptr;
    if (a_name.whole() == "xmlns") {
        declaration = find_namespace_declaration(a_element, {}, true);
    } else if (a_name.prefix() == "xmlns" && !a_name.local().empty()) {
        declaration = find_namespace_declaration(a_element, a_name.local(), false);
    }
    if (declaration == nullptr) {
        return false;
    }
    a_value.assign(view_of(declaration->href));
    return true;
}

} // namespace detail

void getElementsByTagName(std::vector<xml_node*>& a_list, xml_node* a_node,
                          const qiro_plugin::utf16_string& a_tag) {
    const auto tag = qiro_plugin::string_encode::detail::utf16_to_utf8(a_tag);
    if (a_node == nullptr || !tag) {
        return;
    }
    detail::for_each_element_named(a_node, detail::qualified_name(*tag), [&](xmlNode* a_match) {
        a_list.push_back(a_match);
        return true;
    });
}

void getTextContent(std::string& a_text, const xml_node* a_node) {
    if (a_node == nullptr) {
        return;
    }
    switch (a_node->type) {
    case XML_TEXT_NODE:
    case XML_CDATA_SECTION_NODE:
    case XML_ENTITY_REF_NODE:
        detail::append_node_text(a_text, a_node);
        break;
    case XML_COMMENT_NODE:
    case XML_PI_NODE:
        a_text.append(detail::view_of(a_node->content));
        break;
    case XML_ELEMENT_NODE:
    case XML_ENTITY_DECL:
        detail::append_descendant_text(a_text, a_node);
        break;
    default:
        break;
    }
}

} // namespace xml_access_library
