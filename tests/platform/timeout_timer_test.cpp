#include "platform/timeout_timer.hpp"

#include <gtest/gtest.h>

#include <chrono>

namespace {

using qiro_plugin::utility::timeout_timer;

TEST(timeout_timer, counts_down_to_zero_and_turns_timed_out) {
    timeout_timer timer(1000);
    const int left = timer.get_wait_time();
    EXPECT_GT(left, 0);
    EXPECT_LE(left, 1000);
    EXPECT_FALSE(timer.is_timeout());

    qiro_plugin::utility::sleep(1050);
    EXPECT_EQ(timer.get_wait_time(), 0);
    EXPECT_TRUE(timer.is_timeout());

    timer.reset();
    EXPECT_GT(timer.get_wait_time(), 0);
    EXPECT_FALSE(timer.is_timeout());
}

TEST(timeout_timer, zero_and_negative_time_outs_are_over_at_once) {
    const timeout_timer zero(0);
    EXPECT_TRUE(zero.is_timeout());
    EXPECT_EQ(zero.get_wait_time(), 0);

    const timeout_timer negative(-5);
    EXPECT_TRUE(negative.is_timeout());
    EXPECT_EQ(negative.get_wait_time(), 0);
}

TEST(timeout_timer, sleep_blocks_at_least_the_interval_and_ignores_non_positive) {
    auto start = std::chrono::steady_clock::now();
    qiro_plugin::utility::sleep(30);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));

    start = std::chrono::steady_clock::now();
    qiro_plugin::utility::sleep(0);
    qiro_plugin::utility::sleep(-1000);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(900));
}

} // namespace
