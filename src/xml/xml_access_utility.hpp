#pragma once
// Document-object access to one XML document held in memory, parsed once on first use.

#include "text/utf16_string.hpp"

#include <memory>
#include <string>
#include <vector>

struct _xmlNode;

namespace xml_access_library {

using xml_node = ::_xmlNode;

class xml_access_utility;

// Non-owning handle on the document node or an element node of an accessor's tree.
class xml_element {
public:
    // A handle on no node; the accessor's operations refuse it.
    xml_element();
    ~xml_element();
    xml_element(const xml_element&) = delete;
    xml_element& operator=(const xml_element&) = delete;

private:
    friend class xml_access_utility;
    struct impl;
    std::unique_ptr<impl> p_impl;
};

// Ordered, non-owning list of element nodes.
class xml_node_list {
public:
    xml_node_list();
    ~xml_node_list();
    xml_node_list(const xml_node_list&) = delete;
    xml_node_list& operator=(const xml_node_list&) = delete;

private:
    friend class xml_access_utility;
    struct impl;
    std::unique_ptr<impl> p_impl;
};

// Handles and lists it gives out are valid only while the accessor lives.
class xml_access_utility {
public:
    // Throws std::runtime_error when the text is longer than 10,485,760 bytes.
    explicit xml_access_utility(const std::string& a_xml_text);
    ~xml_access_utility();
    xml_access_utility(const xml_access_utility&) = delete;
    xml_access_utility& operator=(const xml_access_utility&) = delete;

    // The document node (the parent of the root element); throws when the text is not
    // well-formed XML.
    std::unique_ptr<xml_element> get_root_node();
    std::unique_ptr<xml_node_list>
    get_node_list_by_name_tag(const xml_element& a_element,
                              const qiro_plugin::utf16_string& a_tag) const;
    unsigned int get_node_list_length(const xml_node_list& a_node_list) const;
    std::unique_ptr<xml_element> get_node_by_node_list(const xml_node_list& a_node_list,
                                                       unsigned int a_node_list_position) const;
    // The first element named a_tag in document order, the start element included; empty when
    // there is none.
    std::unique_ptr<xml_element> get_node_by_tag_name(const xml_element& a_element,
                                                      const qiro_plugin::utf16_string& a_tag) const;
    qiro_plugin::utf16_string get_node_text(const xml_element& a_element) const;
    qiro_plugin::utf16_string
    get_node_attribute_text(const xml_element& a_element,
                            const qiro_plugin::utf16_string& a_name) const;
    bool check_node_attribute(const xml_element& a_element, const qiro_plugin::utf16_string& a_name,
                              const qiro_plugin::utf16_string& a_value) const;

private:
    struct impl;
    std::unique_ptr<impl> p_impl;
};

// Appends every element named a_tag in a_node's subtree, a_node itself first, in pre-order.
void getElementsByTagName(std::vector<xml_node*>& a_list, xml_node* a_node,
                          const qiro_plugin::utf16_string& a_tag);
// Appends the text below a_node, as UTF-8, with entity and character references decoded and
// comments and processing instructions left out.
void getTextContent(std::string& a_text, const xml_node* a_node);

} // namespace xml_access_library
