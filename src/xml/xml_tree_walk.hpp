#pragma once
// Walks over the parser's tree: element search by tag name, text gathering, attribute values.

#include <libxml/tree.h>

#include <string>
#include <string_view>

namespace xml_access_library::detail {

// A name as written in the document ("prefix:local" or "local"), compared without namespace
// processing against elements and attributes, whose prefix the parser keeps apart.
class qualified_name {
public:
    explicit qualified_name(std::string_view a_utf8_name);
    bool matches(const xmlChar* a_local, const xmlNs* a_ns) const;
    std::string_view whole() const { return m_whole; }
    std::string_view prefix() const { return m_prefix; }
    std::string_view local() const { return m_local; }

private:
    std::string_view m_whole;
    std::string_view m_prefix;
    std::string_view m_local;
};

inline bool is_element_named(const xmlNode* a_node, const qualified_name& a_tag) {
    return a_node->type == XML_ELEMENT_NODE && a_tag.matches(a_node->name, a_node->ns);
}

// Pre-order, depth-first over a_start's subtree, a_start first; a_on_match returns false to stop.
template <typename on_match_type>
void for_each_element_named(xmlNode* a_start, const qualified_name& a_tag,
                            on_match_type&& a_on_match) {
    xmlNode* node = a_start;
    while (node != nullptr) {
        if (is_element_named(node, a_tag) && !a_on_match(node)) {
            return;
        }
        const bool has_element_children =
            node->type == XML_ELEMENT_NODE || node->type == XML_DOCUMENT_NODE;
        if (has_element_children && node->children != nullptr) {
            node = node->children;
            continue;
        }
        while (node != a_start && node->next == nullptr) {
            node = node->parent;
        }
        node = node == a_start ? nullptr : node->next;
    }
}

// An entity reference as written ("&name;", "%name;" for a parameter entity), with the predefined
// entities and character references replaced by their character.
void append_entity_reference(std::string& a_text, const xmlNode* a_reference);

// Sets a_value and answers true when the element bears the attribute; namespace declarations
// count as the attributes they are written as.
bool find_attribute_value(const xmlNode* a_element, const qualified_name& a_name,
                          std::string& a_value);

} // namespace xml_access_library::detail
