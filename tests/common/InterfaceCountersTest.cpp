#include "common/InterfaceCounters.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "tests/gateway/framework/ScratchFolder.h"

namespace quorvel::common {
namespace {

class Counters : public testing::Test {
  protected:
    ScratchFolder folder_;
    std::string file_ = folder_.path() + "/interfaces";
};

TEST_F(Counters, AreNoneBeforeTheDriverIsLoaded) {
    const InterfaceCounters counters(file_);
    EXPECT_TRUE(counters.empty());
    EXPECT_NE(counters.networkDevices().find("    lo:       0"), std::string::npos);
}

TEST_F(Counters, AreMadeOnce) {
    EXPECT_EQ(InterfaceCounters::create(file_, {"wl0", "wl0.1"}), 0);
    EXPECT_EQ(InterfaceCounters::create(file_, {"wl0"}), EEXIST);
    EXPECT_EQ(InterfaceCounters::create(file_ + "2", {std::string(16, 'x')}), ENAMETOOLONG);
    EXPECT_EQ(InterfaceCounters::create(folder_.path() + "/none/file", {"wl0"}), ENOENT);
}

TEST_F(Counters, GrowByWhatIsCountedAndAreSeenByOthers) {
    ASSERT_EQ(InterfaceCounters::create(file_, {"wl0", "wl0.1"}), 0);
    InterfaceCounters counting(file_);
    const InterfaceCounters watching(file_);
    counting.count("wl0.1", {1000, 2, 30, 1});
    counting.count("wl0.1", {1, 1, 1, 1});
    counting.count("wl7", {1, 1, 1, 1});
    EXPECT_EQ(watching.networkDevices(),
              "Inter-|   Receive                                                |  Transmit\n"
              " face |bytes    packets errs drop fifo frame compressed multicast|bytes    packets errs drop fifo colls "
              "carrier compressed\n"
              "    lo:       0       0    0    0    0     0          0         0        0       0    0    0    0     0 "
              "      0          0\n"
              "  air0:       0       0    0    0    0     0          0         0        0       0    0    0    0     0 "
              "      0          0\n"
              "   wl0:       0       0    0    0    0     0          0         0        0       0    0    0    0     0 "
              "      0          0\n"
              "air0.1:      31       2    0    0    0     0          0         0     1001       3    0    0    0     0 "
              "      0          0\n"
              " wl0.1:    1001       3    0    0    0     0          0         0       31       2    0    0    0     0 "
              "      0          0\n");
}

}  // namespace
}  // namespace quorvel::common
