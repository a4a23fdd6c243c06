#include "common/EditDistance.h"

#include <gtest/gtest.h>

namespace quorvel::common {
namespace {

TEST(EditDistance, CountsHalfLetters) {
    EXPECT_EQ(editDistance("Channel", "Channel"), 0U);
    EXPECT_EQ(editDistance("channel", "Channel"), 1U);
    EXPECT_EQ(editDistance("Chanel", "Channel"), 2U);
    EXPECT_EQ(editDistance("Chnanel", "Channel"), 2U);
    EXPECT_EQ(editDistance("", "abc"), 6U);
}

}  // namespace
}  // namespace quorvel::common
