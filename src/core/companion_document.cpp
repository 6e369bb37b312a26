#include "core/companion_document.hpp"

#include "core/change_watch.hpp"

#include <fstream>
#include <iterator>

namespace qiro_plugin::debugger {

std::optional<xml_access_library::script_preference::plugin_preference_data>
read_companion_document(const plugin_entry& a_plugin) {
    // The reader refuses documents above 10 MiB, so a larger file is not read at all.
    constexpr std::uintmax_t size_limit = 10485760;
    const auto document = watched_files(a_plugin).at(1);
    std::error_code error;
    const auto size = std::filesystem::file_size(document, error);
    if (error || size > size_limit) {
        return std::nullopt;
    }
    std::ifstream stream(document, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(stream),
                           std::istreambuf_iterator<char>()};
    try {
        xml_access_library::script_preference reader(text);
        if (!reader.parse()) {
            return std::nullopt;
        }
        return reader.get_plugin_preference_data();
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

} // namespace qiro_plugin::debugger
