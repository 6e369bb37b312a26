#include "platform/framework/window_message.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using qiro_plugin::utility::register_window_message;

// Names are matched byte for byte, by content (each is a string of its own here). That every
// name reaches its number is shown by the messages the process_message case sends.
TEST(window_message, only_exact_names_map_to_their_numbers) {
    const std::vector<std::pair<std::string, int>> table = {
        {"[Qiro => PluginManager] message for Customize", 4},
        {"[PluginManager => Qiro] message for Result", 9},
        {"[PluginManager => Qiro] message for Result ", 0},
        {" [PluginManager => Qiro] message for Result", 0},
        {"[Qiro => PluginManager] message for customize", 0},
        {"[PluginManager => Qiro] message for", 0},
        {"", 0},
    };
    for (const auto& [name, number] : table) {
        EXPECT_EQ(register_window_message(name.c_str()), number) << name;
    }
    EXPECT_EQ(register_window_message(nullptr), 0);
}
