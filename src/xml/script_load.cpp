#include "xml/script_load.hpp"

#include "text/wide_string.hpp"
#include "xml/xml_access_utility.hpp"

#include <cstddef>
#include <stdexcept>

namespace xml_access_library {

namespace {

constexpr std::size_t k_title_limit = 100;
constexpr std::size_t k_comment_limit = 10240;
constexpr std::size_t k_alternative_limit = 512;
constexpr std::size_t k_alternative_alias_limit = 100;
constexpr std::size_t k_info_limit = 64;
// One more than a bridge ever writes: the bound is the reader's own.
constexpr std::size_t k_last_index_appended = 100;

const qiro_plugin::utf16_string k_definite_string = u"definite_string";
const qiro_plugin::utf16_string k_url_jump_string = u"url_jump_string";

} // namespace

struct script_load::impl {
    explicit impl(const std::string& a_xml_text) : m_xml_access(a_xml_text) {}

    // The first code units of the first element named a_tag below a_item, up to a_limit.
    qiro_plugin::utf16_string field_text(const xml_element& a_item,
                                         const qiro_plugin::utf16_string& a_tag,
                                         std::size_t a_limit) const {
        const auto element = m_xml_access.get_node_by_tag_name(a_item, a_tag);
        if (!element) {
            return {};
        }
        // A cut inside a surrogate pair would leave text no encoder accepts.
        return qiro_plugin::utility::cut_code_units(m_xml_access.get_node_text(*element), a_limit);
    }

    candidate_data read_item(const xml_element& a_item) const {
        candidate_data candidate;
        candidate.title = field_text(a_item, u"title", k_title_limit);
        candidate.comment = field_text(a_item, u"comment", k_comment_limit);
        if (const auto alternative = m_xml_access.get_node_by_tag_name(a_item, u"alternative")) {
            for (const auto* type : {&k_definite_string, &k_url_jump_string}) {
                if (m_xml_access.check_node_attribute(*alternative, u"type", *type)) {
                    candidate.alternative_type = *type;
                    candidate.alternative = qiro_plugin::utility::cut_code_units(
                        m_xml_access.get_node_text(*alternative), k_alternative_limit);
                    break;
                }
            }
        }
        candidate.alternative_alias =
            field_text(a_item, u"alternative_alias", k_alternative_alias_limit);
        candidate.info = field_text(a_item, u"info", k_info_limit);
        return candidate;
    }

    xml_access_utility m_xml_access;
    std::vector<candidate_data> m_candidate_data_array;
    bool m_parsed = false;
};

script_load::script_load(const std::string& a_xml_text)
    : p_impl(std::make_unique<impl>(a_xml_text)) {}

script_load::~script_load() = default;

bool script_load::parse() {
    try {
        if (!p_impl->m_candidate_data_array.empty()) {
            throw std::runtime_error("script_load::parse() : failed");
        }
        auto& access = p_impl->m_xml_access;
        const auto root = access.get_root_node();
        const auto items = access.get_node_list_by_name_tag(*root, u"item");
        const unsigned int count = access.get_node_list_length(*items);
        for (unsigned int position = 0; position < count; ++position) {
            const auto item = access.get_node_by_node_list(*items, position);
            if (!access.check_node_attribute(*item, u"type", u"script_candidate")) {
                continue;
            }
            // Items past the bound are visited but dropped, so their fields need not be read.
            if (p_impl->m_candidate_data_array.size() > k_last_index_appended) {
                continue;
            }
            p_impl->m_candidate_data_array.push_back(p_impl->read_item(*item));
        }
        p_impl->m_parsed = true;
        return true;
    } catch (...) {
        return false;
    }
}

std::vector<script_load::candidate_data> script_load::get_candidate_data_array() const {
    return p_impl->m_candidate_data_array;
}

} // namespace xml_access_library
