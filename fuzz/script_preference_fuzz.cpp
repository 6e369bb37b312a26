// Feeds arbitrary bytes to the preference document reader and checks the bounds of its record.

#include "fuzz_require.hpp"
#include "xml/script_preference.hpp"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* a_data, std::size_t a_size) {
    const std::string text(reinterpret_cast<const char*>(a_data), a_size);
    xml_access_library::script_preference reader(text);
    if (!reader.parse()) {
        const auto untouched = reader.get_plugin_preference_data();
        require(untouched.name.empty() && untouched.major_version == 0 && !untouched.callback);
        return 0;
    }
    const auto data = reader.get_plugin_preference_data();
    require(data.name.size() <= 100);
    require(data.name_short.size() <= 16);
    require(data.description.size() <= 256);
    require(data.copyright.size() <= 256);
    require(data.major_version <= 100);
    require(data.minor_version <= 100);
    // Filled longer texts make a second parse fail and leave the record as it was.
    const bool filled = !data.name.empty() || !data.description.empty() || !data.copyright.empty();
    require(reader.parse() == !filled);
    const auto again = reader.get_plugin_preference_data();
    require(again.name == data.name && again.major_version == data.major_version &&
            again.preference == data.preference);
    return 0;
}
