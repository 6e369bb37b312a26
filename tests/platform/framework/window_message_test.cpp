#include "platform/framework/window_message.hpp"

#include <gtest/gtest.h>

#include <string>

using qiro_plugin::utility::register_window_message;

TEST(window_message, names_map_to_their_fixed_numbers) {
    EXPECT_EQ(register_window_message("[Qiro => PluginManager] message for Request all plugin"), 1);
    EXPECT_EQ(
        register_window_message("[Qiro => PluginManager] message for Request individually plugin"),
        2);
    EXPECT_EQ(register_window_message(
                  "[Qiro => PluginManager] message for Request all individually plugin"),
              3);
    EXPECT_EQ(register_window_message("[Qiro => PluginManager] message for Customize"), 4);
    EXPECT_EQ(register_window_message("[Qiro => PluginManager] message for Request Cancel"), 5);
    EXPECT_EQ(register_window_message("[Qiro => PluginManager] message for Callback Request"), 6);
    EXPECT_EQ(register_window_message("[Qiro => PluginManager] message for process complete"), 7);
    EXPECT_EQ(register_window_message("[PluginManager => Qiro] message for Result"), 9);
    EXPECT_EQ(register_window_message("[PluginManager => Qiro] update message for manager "
                                      "preference and Load Plugin Info"),
              10);
    EXPECT_EQ(register_window_message("[PluginManager => Qiro] message for palette send"), 11);
}

TEST(window_message, only_exact_names_are_known) {
    EXPECT_EQ(register_window_message("[PluginManager => Qiro] message for Result "), 0);
    EXPECT_EQ(register_window_message("[Qiro => PluginManager] message for customize"), 0);
    EXPECT_EQ(register_window_message("[PluginManager => Qiro] message for"), 0);
    EXPECT_EQ(register_window_message(" [PluginManager => Qiro] message for Result"), 0);
    EXPECT_EQ(register_window_message(""), 0);
    EXPECT_EQ(register_window_message(nullptr), 0);
    // The same text in a buffer of its own: compared by content, not by address.
    const std::string copy = "[Qiro => PluginManager] message for Customize";
    EXPECT_EQ(register_window_message(copy.c_str()), 4);
}
