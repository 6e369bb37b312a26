#pragma once
// Fixture files and document builders shared by the XML tests.

#include <fstream>
#include <sstream>
#include <string>

namespace xml_test_support {

inline std::string read_data_file(const std::string& a_name) {
    std::ifstream in(std::string(QIRO_TEST_DATA_DIR) + "/xml/" + a_name, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

// An item as a bridge writes it, with the given inner lines.
inline std::string bridge_item(const std::string& a_inner,
                               const std::string& a_type = "script_candidate") {
    return "\t<item type=\"" + a_type + "\">\n" + a_inner + "\t</item>\n";
}

inline std::string bridge_document(const std::string& a_items) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>\n\n<itemlist>\n" + a_items +
           "</itemlist>\n";
}

inline std::string element(const std::string& a_tag, const std::string& a_text) {
    return "\t\t<" + a_tag + ">" + a_text + "</" + a_tag + ">\n";
}

} // namespace xml_test_support
