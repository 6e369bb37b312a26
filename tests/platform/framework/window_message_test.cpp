#include "platform/framework/window_message.hpp"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using qiro_plugin::utility::register_window_message;

// Names are matched byte for byte, by content (each is a string of its own here), and 8 is
// nobody's number.
TEST(window_message, only_exact_names_map_to_their_numbers) {
    const std::vector<std::pair<std::string, int>> table = {
        {"[Qiro => PluginManager] message for Request all plugin", 1},
        {"[Qiro => PluginManager] message for Request individually plugin", 2},
        {"[Qiro => PluginManager] message for Request all individually plugin", 3},
        {"[Qiro => PluginManager] message for Customize", 4},
        {"[Qiro => PluginManager] message for Request Cancel", 5},
        {"[Qiro => PluginManager] message for Callback Request", 6},
        {"[Qiro => PluginManager] message for process complete", 7},
        {"[PluginManager => Qiro] message for Result", 9},
        {"[PluginManager => Qiro] update message for manager preference and Load Plugin Info", 10},
        {"[PluginManager => Qiro] message for palette send", 11},
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
