#include "runtime/message_script.hpp"

#include "bridges/protocol.hpp"
#include "text/string_encode.hpp"
#include "text/url_xml_escape.hpp"

#include <string_view>

namespace qiro_plugin {

struct message_script::impl {
    std::vector<candidate> m_candidate_array;
};

namespace {

std::string to_utf8(const utf16_string& a_text) {
    return string_encode::WideCharToMultiByteUTF8(a_text.c_str());
}

std::string escaped_utf8(const utf16_string& a_text) {
    return to_utf8(utility::convert_xml_entity(a_text));
}

bool is_type_word(const utf16_string& a_type, std::string_view a_word) {
    return a_type.size() == a_word.size() &&
           std::equal(a_type.begin(), a_type.end(), a_word.begin(),
                      [](qiro_plugin_utf16_t a_unit, char a_char) {
                          return a_unit == static_cast<unsigned char>(a_char);
                      });
}

// An address-type alternative is offered only when it names a web address; the test is
// case-sensitive and anchored at the start, as the input method's tooltip expects.
bool is_written_alternative(const utf16_string& a_type, const utf16_string& a_escaped_alternative) {
    if (a_escaped_alternative.empty()) {
        return false;
    }
    if (is_type_word(a_type, QIRO_PLUGIN_ALTERNATIVE_TYPE_DEFINITE_STRING)) {
        return true;
    }
    return is_type_word(a_type, QIRO_PLUGIN_ALTERNATIVE_TYPE_URL_JUMP_STRING) &&
           a_escaped_alternative.starts_with(u"http");
}

void append_element(std::string& a_xml, const char* a_indent_and_open, const std::string& a_text,
                    const char* a_close) {
    a_xml += a_indent_and_open;
    a_xml += a_text;
    a_xml += a_close;
}

} // namespace

message_script::message_script() : p_impl(std::make_unique<impl>()) {}

message_script::~message_script() = default;

void message_script::add_candidate(const candidate& a_candidate) {
    p_impl->m_candidate_array.push_back(a_candidate);
}

const std::vector<message_script::candidate>& message_script::get_candidates() const {
    return p_impl->m_candidate_array;
}

int message_script::get_return_type() const {
    return p_impl->m_candidate_array.empty() ? RETURN_TYPE_NO_CANDIDATE : RETURN_TYPE_CANDIDATES;
}

std::string message_script::make_xml_string_to_candidate(std::uint32_t a_plugin_index,
                                                         std::uint32_t a_generation_id) const {
    const std::string plugin_index = std::to_string(a_plugin_index);
    const std::string generation_id = std::to_string(a_generation_id);

    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n\n<itemlist>\n";
    std::size_t candidate_index = 0;
    for (const candidate& item : p_impl->m_candidate_array) {
        xml += "\t<item type=\"candidate\">\n";
        if (!item.title.empty()) {
            append_element(xml, "\t\t<title>", escaped_utf8(item.title), "</title>\n");
        }
        if (!item.comment.empty()) {
            append_element(xml, "\t\t<comment>", escaped_utf8(item.comment), "</comment>\n");
        }
        if (!item.alternative.empty()) {
            const utf16_string alternative = utility::convert_xml_entity(item.alternative);
            if (is_written_alternative(item.alternative_type, alternative)) {
                // The type word is one of two fixed words, so it needs no escaping.
                append_element(xml, "\t\t<alternative type=\"", to_utf8(item.alternative_type),
                               "\">\n");
                append_element(xml, "\t\t\t<target>", to_utf8(alternative), "</target>\n");
                if (!item.alternative_alias.empty()) {
                    append_element(xml, "\t\t\t<alias>", escaped_utf8(item.alternative_alias),
                                   "</alias>\n");
                }
                xml += "\t\t</alternative>\n";
            }
        }
        if (!item.info.empty()) {
            append_element(xml, "\t\t<info>", escaped_utf8(item.info), "</info>\n");
        }
        append_element(xml, "\t\t<plugin_index>", plugin_index, "</plugin_index>\n");
        append_element(xml, "\t\t<candidate_index>", std::to_string(candidate_index),
                       "</candidate_index>\n");
        append_element(xml, "\t\t<generation_id>", generation_id, "</generation_id>\n");
        xml += "\t</item>\n";
        ++candidate_index;
    }
    xml += "</itemlist>\n";
    return xml;
}

} // namespace qiro_plugin
