#include "platform/timeout_timer.hpp"

#include <gtest/gtest.h>

namespace {

using qiro_plugin::utility::timeout_timer;

TEST(timeout_timer, counts_down_to_zero_and_is_over_from_the_moment_it_is_reached) {
    timeout_timer timer(1000);
    EXPECT_GT(timer.get_wait_time(), 0);
    EXPECT_LE(timer.get_wait_time(), 1000);
    EXPECT_FALSE(timer.is_timeout());

    qiro_plugin::utility::sleep(1050);
    EXPECT_EQ(timer.get_wait_time(), 0);
    EXPECT_TRUE(timer.is_timeout());
    timer.reset();
    EXPECT_GT(timer.get_wait_time(), 0);
    EXPECT_FALSE(timer.is_timeout());

    // A time-out of 0 is reached at once (elapsed equals it); a negative one is past.
    for (const int timeout : {0, -5}) {
        const timeout_timer over(timeout);
        EXPECT_TRUE(over.is_timeout()) << timeout;
        EXPECT_EQ(over.get_wait_time(), 0) << timeout;
    }
}

} // namespace
