#include "bridge_runner.hpp"

namespace qiro_plugin::test {
namespace {

TEST(embedded_script, decodes_to_the_source_file_byte_for_byte) {
    for (const auto& each : k_languages) {
        const std::string source = read_file(std::filesystem::path(QIRO_BRIDGES_SOURCE_DIR) /
                                             (std::string("bridge.") + each.extension));
        ASSERT_FALSE(source.empty()) << each.name;
        EXPECT_EQ(utility::url_decode(each.stored_script()), source) << each.name;
        // The stored form is exactly what the host's own encoder makes of the file.
        EXPECT_EQ(each.stored_script(), utility::url_encode(source)) << each.name;
    }
}

} // namespace
} // namespace qiro_plugin::test
