#include "xml/xml_access_utility.hpp"

#include "platform/failed_assertion.hpp"
#include "text/utf8_codec.hpp"
#include "xml/xml_handle_impl.hpp"
#include "xml/xml_tree_walk.hpp"

#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <cstddef>
#include <limits>
#include <mutex>
#include <stdexcept>

namespace xml_access_library {

namespace {

constexpr std::size_t k_maximum_text_size = 10485760;

// Entities stay unexpanded (XML_PARSE_NOENT would read external ones from disk), no DTD is
// loaded, nothing goes to the network, and XML_PARSE_HUGE stays off so that the parser's own
// limits stop entity-amplification documents. Whitespace-only runs are dropped again by the
// text walk; NOBLANKS and COMPACT only make the tree smaller.
constexpr int k_parse_options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING |
                                XML_PARSE_NOBLANKS | XML_PARSE_COMPACT;

struct document_deleter {
    void operator()(xmlDoc* a_document) const { xmlFreeDoc(a_document); }
};

void ignore_structured_error(void*, xmlErrorPtr) {}
void ignore_generic_error(void*, const char*, ...) {}

// Some errors (encoding conversion, I/O) bypass the parser context and would reach stderr
// through the thread's global handlers; they are silenced for the parse and then restored.
class error_silencer {
public:
    error_silencer()
        : m_structured(xmlStructuredError), m_structured_context(xmlStructuredErrorContext),
          m_generic(xmlGenericError), m_generic_context(xmlGenericErrorContext) {
        xmlSetStructuredErrorFunc(nullptr, ignore_structured_error);
        xmlSetGenericErrorFunc(nullptr, ignore_generic_error);
    }
    ~error_silencer() {
        xmlSetStructuredErrorFunc(m_structured_context, m_structured);
        xmlSetGenericErrorFunc(m_generic_context, m_generic);
    }
    error_silencer(const error_silencer&) = delete;
    error_silencer& operator=(const error_silencer&) = delete;

private:
    xmlStructuredErrorFunc m_structured;
    void* m_structured_context;
    xmlGenericErrorFunc m_generic;
    void* m_generic_context;
};

const std::string& checked_text(const std::string& a_xml_text) {
    if (a_xml_text.size() > k_maximum_text_size) {
        throw std::runtime_error("xml_access_utility_impl::xml_access_utility_impl() : failed");
    }
    return a_xml_text;
}

qiro_plugin::utf16_string to_utf16(const std::string& a_text) {
    auto converted = qiro_plugin::string_encode::detail::utf8_to_utf16(a_text);
    return converted ? std::move(*converted) : qiro_plugin::utf16_string();
}

} // namespace

xml_element::xml_element() : p_impl(std::make_unique<impl>()) {}
xml_element::~xml_element() = default;

xml_node_list::xml_node_list() : p_impl(std::make_unique<impl>()) {
    p_impl->m_node_list = std::make_unique<std::vector<xml_node*>>();
}
xml_node_list::~xml_node_list() = default;

struct xml_access_utility::impl {
    explicit impl(const std::string& a_xml_text) : m_xml_text(checked_text(a_xml_text)) {}

    std::unique_ptr<xmlDoc, document_deleter> m_document;
    std::string m_xml_text;
};

xml_access_utility::xml_access_utility(const std::string& a_xml_text)
    : p_impl(std::make_unique<impl>(a_xml_text)) {}

xml_access_utility::~xml_access_utility() = default;

std::unique_ptr<xml_element> xml_access_utility::get_root_node() {
    if (!p_impl->m_document) {
        static std::once_flag initialised;
        std::call_once(initialised, [] { xmlInitParser(); });
        const error_silencer silencer;
        xmlParserCtxt* context = xmlNewParserCtxt();
        if (context == nullptr) {
            throw std::runtime_error("xml_access_utility::get_root_node() : failed 1");
        }
        static_assert(k_maximum_text_size <= std::numeric_limits<int>::max());
        xmlDoc* document = xmlCtxtReadMemory(context, p_impl->m_xml_text.data(),
                                             static_cast<int>(p_impl->m_xml_text.size()), nullptr,
                                             nullptr, k_parse_options);
        xmlFreeParserCtxt(context);
        if (document == nullptr) {
            throw std::runtime_error("xml_access_utility::get_root_node() : failed 2");
        }
        p_impl->m_document.reset(document);
    }
    auto handle = std::make_unique<xml_element>();
    handle->p_impl->m_element = reinterpret_cast<xml_node*>(p_impl->m_document.get());
    return handle;
}

std::unique_ptr<xml_node_list>
xml_access_utility::get_node_list_by_name_tag(const xml_element& a_element,
                                              const qiro_plugin::utf16_string& a_tag) const {
    auto list = std::make_unique<xml_node_list>();
    getElementsByTagName(*list->p_impl->m_node_list, a_element.p_impl->m_element, a_tag);
    return list;
}

unsigned int xml_access_utility::get_node_list_length(const xml_node_list& a_node_list) const {
    QIRO_ASSERT(a_node_list.p_impl->m_node_list);
    return static_cast<unsigned int>(a_node_list.p_impl->m_node_list->size());
}

std::unique_ptr<xml_element>
xml_access_utility::get_node_by_node_list(const xml_node_list& a_node_list,
                                          unsigned int a_node_list_position) const {
    QIRO_ASSERT(a_node_list.p_impl->m_node_list);
    // clang-format off
    QIRO_ASSERT(a_node_list_position < get_node_list_length( a_node_list ));
    // clang-format on
    xml_node* node = (*a_node_list.p_impl->m_node_list)[a_node_list_position];
    if (node == nullptr || (node->type != XML_ELEMENT_NODE && node->type != XML_DOCUMENT_NODE)) {
        throw std::runtime_error("xml_access_utility::get_node_by_node_list() : failed");
    }
    auto handle = std::make_unique<xml_element>();
    handle->p_impl->m_element = node;
    return handle;
}

std::unique_ptr<xml_element>
xml_access_utility::get_node_by_tag_name(const xml_element& a_element,
                                         const qiro_plugin::utf16_string& a_tag) const {
    QIRO_ASSERT(a_element.p_impl->m_element);
    const auto tag = qiro_plugin::string_encode::detail::utf16_to_utf8(a_tag);
    if (!tag) {
        return nullptr;
    }
    xml_node* found = nullptr;
    detail::for_each_element_named(a_element.p_impl->m_element, detail::qualified_name(*tag),
                                   [&found](xmlNode* a_match) {
                                       found = a_match;
                                       return false;
                                   });
    if (found == nullptr) {
        return nullptr;
    }
    auto handle = std::make_unique<xml_element>();
    handle->p_impl->m_element = found;
    return handle;
}

qiro_plugin::utf16_string xml_access_utility::get_node_text(const xml_element& a_element) const {
    QIRO_ASSERT(a_element.p_impl->m_element);
    std::string text;
    getTextContent(text, a_element.p_impl->m_element);
    return to_utf16(text);
}

qiro_plugin::utf16_string
xml_access_utility::get_node_attribute_text(const xml_element& a_element,
                                            const qiro_plugin::utf16_string& a_name) const {
    const xmlNode* element = a_element.p_impl->m_element;
    if (element != nullptr && element->type == XML_DOCUMENT_NODE) {
        element = xmlDocGetRootElement(reinterpret_cast<const xmlDoc*>(element));
    }
    const auto name = qiro_plugin::string_encode::detail::utf16_to_utf8(a_name);
    std::string value;
    if (element == nullptr || element->type != XML_ELEMENT_NODE || !name ||
        !detail::find_attribute_value(element, detail::qualified_name(*name), value)) {
        return {};
    }
    return to_utf16(value);
}

bool xml_access_utility::check_node_attribute(const xml_element& a_element,
                                              const qiro_plugin::utf16_string& a_name,
                                              const qiro_plugin::utf16_string& a_value) const {
    QIRO_ASSERT(a_element.p_impl->m_element);
    const xmlNode* element = a_element.p_impl->m_element;
    if (element->type != XML_ELEMENT_NODE) {
        return false;
    }
    const auto name = qiro_plugin::string_encode::detail::utf16_to_utf8(a_name);
    const auto expected = qiro_plugin::string_encode::detail::utf16_to_utf8(a_value);
    std::string value;
    // UTF-8 is a one-to-one image of well-formed UTF-16, so comparing bytes compares code units;
    // a value that is not well-formed UTF-16 cannot equal anything the parser delivers.
    return name && expected &&
           detail::find_attribute_value(element, detail::qualified_name(*name), value) &&
           value == *expected;
}

} // namespace xml_access_library
