#include "tests/wifi/platform/PlatformTest.h"

namespace quorvel::scripted {

PlatformTest::PlatformTest() : platform(Platform::instance()) {
    platform.reset();
    platform.activate(true);
}

PlatformTest::~PlatformTest() {
    platform.endThreads();
    platform.activate(false);
    platform.reset();
}

void PlatformTest::TearDown() {
    if (!lockMayStayHeld_) {
        EXPECT_FALSE(platform.lockHeld()) << "the lock was left held";
    }
    if (!lockMayBeMisused_) {
        EXPECT_EQ(platform.lockMisuse(), std::vector<std::string>{});
    }
    EXPECT_EQ(platform.openStreams(), std::vector<std::string>{}) << "streams were left open";
}

}  // namespace quorvel::scripted
