#pragma once
// Private records of the handles, shared by the accessor's translation units.

#include "xml/xml_access_utility.hpp"

#include <memory>
#include <vector>

namespace xml_access_library {

struct xml_element::impl {
    xml_node* m_element = nullptr;
};

struct xml_node_list::impl {
    std::unique_ptr<std::vector<xml_node*>> m_node_list;
};

} // namespace xml_access_library
