#pragma once
// Reader of a plug-in run's result document: the candidates of its script_candidate items.

#include "text/utf16_string.hpp"
#include "xml/abstract_xml_access.hpp"

#include <memory>
#include <string>
#include <vector>

namespace xml_access_library {

class script_load : public abstract_xml_access {
public:
    struct candidate_data {
        qiro_plugin::utf16_string title;
        qiro_plugin::utf16_string comment;
        qiro_plugin::utf16_string alternative;
        qiro_plugin::utf16_string alternative_type;
        qiro_plugin::utf16_string alternative_alias;
        qiro_plugin::utf16_string info;
    };

    // Throws std::runtime_error when the text is longer than 10,485,760 bytes.
    explicit script_load(const std::string& a_xml_text);
    ~script_load() override;
    script_load(const script_load&) = delete;
    script_load& operator=(const script_load&) = delete;

    // Reads the document once; false when it is not well-formed or was already read.
    bool parse() override;
    std::vector<candidate_data> get_candidate_data_array() const;

private:
    struct impl;
    std::unique_ptr<impl> p_impl;
};

} // namespace xml_access_library
