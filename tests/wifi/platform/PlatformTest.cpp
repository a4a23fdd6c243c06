#include "tests/wifi/platform/PlatformTest.h"

namespace quorvel::scripted {

PlatformTest::PlatformTest() : platform(Platform::instance()) {
    platform.reset();
    platform.activate(true);
    countBlocksFromHere();
}

PlatformTest::~PlatformTest() {
    platform.endThreads();
    platform.activate(false);
    if (!blocksMayBeLeft_) {
        EXPECT_EQ(platform.liveBlocks(), blocks_) << "heap blocks are left";
    }
    platform.reset();
    const Resources after = Resources::onceThreadsAreGone(before_.threads);
    EXPECT_EQ(after.descriptors, before_.descriptors) << "descriptors are left";
    EXPECT_EQ(after.threads, before_.threads) << "threads are left";
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
