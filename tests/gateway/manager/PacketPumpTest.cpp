#include "gateway/manager/PacketPump.h"

#include <gtest/gtest.h>

#include "tests/gateway/manager/TestBoard.h"

namespace quorvel::manager::test {
namespace {

class CountedTraffic : public testing::Test {
  protected:
    [[nodiscard]] bool has(const std::string& line) const {
        return common::InterfaceCounters(file_).networkDevices().find(line) != std::string::npos;
    }

    TemporaryFolder folder_;
    std::string file_ = folder_.path("interfaces");
    PacketPump pump_{file_};
};

TEST_F(CountedTraffic, ComesInPacketsAsTheInterfacesWouldCarryIt) {
    ASSERT_EQ(common::InterfaceCounters::create(file_, {"wl0", "wl1.2"}), 0);
    pump_.send({{1, 2, 3000, 1}});
    // 1400 + 1400 + 200 bytes sent; the shortest frame has 60.
    EXPECT_TRUE(has("\n wl1.2:      60       1    0    0    0     0          0         0     3000       3    0 "));
    EXPECT_TRUE(has("\n   wl0:       0       0 "));
    pump_.send({{1, 2, 0, 10'000'000}});
    EXPECT_TRUE(has("\n wl1.2: 1400060    1001    0    0    0     0          0         0     3000       3    0 "))
        << "at most 1000 frames in a second";
}

TEST_F(CountedTraffic, BeginsWhenTheDriverIsLoaded) {
    pump_.send({{0, 0, 100, 100}});
    ASSERT_EQ(common::InterfaceCounters::create(file_, {"wl0"}), 0);
    pump_.send({{0, 0, 100, 0}});
    EXPECT_TRUE(has("\n   wl0:       0       0    0    0    0     0          0         0      100       1    0 "));
}

}  // namespace
}  // namespace quorvel::manager::test
