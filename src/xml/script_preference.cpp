#include "xml/script_preference.hpp"

#include "text/utf8_codec.hpp"
#include "text/wide_string.hpp"
#include "xml/xml_access_utility.hpp"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>

namespace xml_access_library {

namespace {

constexpr std::size_t k_name_limit = 100;
constexpr std::size_t k_name_short_limit = 16;
constexpr std::size_t k_description_limit = 256;
constexpr std::size_t k_copyright_limit = 256;
constexpr long k_maximum_version = 100;

// A whole decimal text as strtol reads it (leading blanks and a sign allowed); anything left
// over, a negative value, an overflow or a value above the maximum gives 0.
std::uint32_t version_number(const qiro_plugin::utf16_string& a_text) {
    const auto bytes = qiro_plugin::string_encode::detail::utf16_to_utf8(a_text);
    if (!bytes || bytes->empty()) {
        return 0;
    }
    char* end = nullptr;
    errno = 0;
    const long value = std::strtol(bytes->c_str(), &end, 10);
    const bool whole_text = end == bytes->c_str() + bytes->size();
    if (!whole_text || errno == ERANGE || value < 0 || value > k_maximum_version) {
        return 0;
    }
    return static_cast<std::uint32_t>(value);
}

} // namespace

struct script_preference::impl {
    explicit impl(const std::string& a_xml_text) : m_xml_access(a_xml_text) {}

    std::unique_ptr<xml_element> find(const xml_element& a_root,
                                      const qiro_plugin::utf16_string& a_tag) const {
        return m_xml_access.get_node_by_tag_name(a_root, a_tag);
    }

    qiro_plugin::utf16_string text_field(const xml_element& a_root,
                                         const qiro_plugin::utf16_string& a_tag,
                                         std::size_t a_limit) const {
        const auto element = find(a_root, a_tag);
        if (!element) {
            return {};
        }
        // A cut inside a surrogate pair would leave text no encoder accepts.
        return qiro_plugin::utility::cut_code_units(m_xml_access.get_node_text(*element), a_limit);
    }

    std::uint32_t version_field(const xml_element& a_root,
                                const qiro_plugin::utf16_string& a_tag) const {
        const auto element = find(a_root, a_tag);
        return element ? version_number(m_xml_access.get_node_text(*element)) : 0;
    }

    bool flag_field(const xml_element& a_root, const qiro_plugin::utf16_string& a_tag) const {
        const auto element = find(a_root, a_tag);
        return element && m_xml_access.get_node_text(*element) == u"true";
    }

    xml_access_utility m_xml_access;
    plugin_preference_data m_plugin_preference_data;
    bool m_parsed = false;
};

script_preference::script_preference(const std::string& a_xml_text)
    : p_impl(std::make_unique<impl>(a_xml_text)) {}

script_preference::~script_preference() = default;

bool script_preference::parse() {
    try {
        const auto& current = p_impl->m_plugin_preference_data;
        // The short name is not part of this test: a record counts as filled by its longer texts.
        if (!current.name.empty() || !current.description.empty() || !current.copyright.empty()) {
            throw std::runtime_error("script_preference::parse() : failed");
        }
        const auto root = p_impl->m_xml_access.get_root_node();
        plugin_preference_data read;
        read.name = p_impl->text_field(*root, u"name", k_name_limit);
        read.name_short = p_impl->text_field(*root, u"name_short", k_name_short_limit);
        read.description = p_impl->text_field(*root, u"description", k_description_limit);
        read.copyright = p_impl->text_field(*root, u"copyright", k_copyright_limit);
        read.major_version = p_impl->version_field(*root, u"major_version");
        read.minor_version = p_impl->version_field(*root, u"minor_version");
        read.preference = p_impl->flag_field(*root, u"preference");
        read.callback = p_impl->flag_field(*root, u"callback");
        p_impl->m_plugin_preference_data = std::move(read);
        p_impl->m_parsed = true;
        return true;
    } catch (...) {
        return false;
    }
}

script_preference::plugin_preference_data script_preference::get_plugin_preference_data() const {
    return p_impl->m_plugin_preference_data;
}

} // namespace xml_access_library
