#include "runtime/sha_hash.hpp"

#include <gtest/gtest.h>

TEST(create_sha_hash, gives_upper_case_hex_digest_and_nothing_for_empty_text) {
    EXPECT_EQ(qiro_plugin::create_sha_hash(""), "");
    EXPECT_EQ(qiro_plugin::create_sha_hash("abc"), "A9993E364706816ABA3E25717850C26C9CD0D89D");
}
