#include "common/MacAddress.h"

#include <gtest/gtest.h>

namespace quorvel::common {
namespace {

TEST(MacAddresses, AreReadInEitherCaseAndWrittenInLowerCase) {
    const auto mac = parseMac("02:Ab:cD:00:11:fF");
    ASSERT_TRUE(mac);
    EXPECT_EQ(formatMac(*mac), "02:ab:cd:00:11:ff");
    for (const char* wrong : {"", "02:ab:cd:00:11", "02-ab-cd-00-11-ff", "02:ab:cd:00:11:fg", "02:ab:cd:00:11:ff:"}) {
        EXPECT_FALSE(parseMac(wrong)) << wrong;
    }
}

TEST(MacAddresses, OfAGroupHaveTheLowestBitOfTheirFirstByte) {
    EXPECT_TRUE(isGroupAddress({{0x01, 0, 0x5e, 0, 0, 1}}));
    EXPECT_FALSE(isGroupAddress({{0x02, 1, 1, 1, 1, 1}}));
}

}  // namespace
}  // namespace quorvel::common
