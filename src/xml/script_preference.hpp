#pragma once
// Reader of a plug-in's preference document: names, description, version and offered dialogs.

#include "text/utf16_string.hpp"
#include "xml/abstract_xml_access.hpp"

#include <cstdint>
#include <memory>
#include <string>

namespace xml_access_library {

class script_preference : public abstract_xml_access {
public:
    struct plugin_preference_data {
        qiro_plugin::utf16_string name;
        qiro_plugin::utf16_string name_short;
        qiro_plugin::utf16_string description;
        qiro_plugin::utf16_string copyright;
        std::uint32_t major_version = 0;
        std::uint32_t minor_version = 0;
        bool preference = false;
        bool callback = false;
    };

    // Throws std::runtime_error when the text is longer than 10,485,760 bytes.
    explicit script_preference(const std::string& a_xml_text);
    ~script_preference() override;
    script_preference(const script_preference&) = delete;
    script_preference& operator=(const script_preference&) = delete;

    // Fills the record once; false when the document is not well-formed or the record is
    // already filled. On false the record is left as it was.
    bool parse() override;
    plugin_preference_data get_plugin_preference_data() const;

private:
    struct impl;
    std::unique_ptr<impl> p_impl;
};

} // namespace xml_access_library
