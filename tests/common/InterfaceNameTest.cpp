#include "common/InterfaceName.h"

#include <gtest/gtest.h>

namespace quorvel::common {
namespace {

TEST(InterfaceNames, HaveASuffixFromTheSecondBssOn) {
    EXPECT_EQ(interfaceName(0, 0), "wl0");
    EXPECT_EQ(interfaceName(2, 7), "wl2.7");
    EXPECT_EQ(interfaceName(1, 0, "air"), "air1");
    EXPECT_EQ(interfaceName(1, 3, "air"), "air1.3");
}

}  // namespace
}  // namespace quorvel::common
