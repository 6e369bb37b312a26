#pragma once
// The message that carries one processing run's candidates back to the host.

#include "runtime/plugin_message.hpp"
#include "text/utf16_string.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace qiro_plugin {

class message_script : public abstract_qiro_plugin_message {
public:
    struct candidate {
        utf16_string title;
        utf16_string comment;
        utf16_string alternative;       // the tooltip's text (or address)
        utf16_string alternative_alias; // the tooltip's label
        utf16_string alternative_type;  // "definite_string", "url_jump_string" or empty
        utf16_string info;              // character-type information
    };

    // Result-type codes of the message framework.
    static constexpr int RETURN_TYPE_CANDIDATES = 0;
    static constexpr int RETURN_TYPE_NO_CANDIDATE = 2;

    message_script();
    ~message_script() override;
    message_script(const message_script&) = delete;
    message_script& operator=(const message_script&) = delete;

    void add_candidate(const candidate& a_candidate);
    const std::vector<candidate>& get_candidates() const;
    int get_return_type() const;
    // The candidate-list document, UTF-8.
    std::string make_xml_string_to_candidate(std::uint32_t a_plugin_index,
                                             std::uint32_t a_generation_id) const;

private:
    struct impl;
    std::unique_ptr<impl> p_impl;
};

} // namespace qiro_plugin
