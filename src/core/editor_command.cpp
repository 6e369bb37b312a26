#include "core/editor_command.hpp"

#include <cstdlib>
#include <sstream>

namespace qiro_plugin::debugger {

std::vector<std::string> editor_command(const std::string& a_file, std::uint32_t a_line) {
    std::vector<std::string> command;
    for (const char* name : {"VISUAL", "EDITOR"}) {
        const char* value = std::getenv(name);
        std::istringstream words(value != nullptr ? value : "");
        for (std::string word; words >> word;) {
            command.push_back(word);
        }
        if (!command.empty()) {
            command.push_back(std::string("+").append(std::to_string(a_line)));
            command.push_back(a_file);
            break;
        }
    }
    return command;
}

} // namespace qiro_plugin::debugger
