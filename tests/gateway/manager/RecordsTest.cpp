#include "host/StationRecords.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/gateway/manager/TestBoard.h"

namespace quorvel::manager::test {
namespace {

std::int32_t number(const std::string& bytes, std::size_t offset) {
    std::int32_t value = 0;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

TEST(StationRecords, HaveTheirFieldsWhereReadersLookForThem) {
    Model model = defaultModel();
    model.advanceTo(20'000);
    const std::string bytes = model.get(0, 0, "wlStaInfo_0").value_or("");
    ASSERT_EQ(bytes.size(), 236U);
    EXPECT_STREQ(bytes.c_str(), "02:5a:00:00:01:01");
    EXPECT_EQ(bytes[98], 1);
    EXPECT_EQ(bytes[99], 1);
    EXPECT_EQ(number(bytes, 100), -48);
    EXPECT_EQ(number(bytes, 108), static_cast<std::int32_t>(model.downlinkRate(station(model, 1))));
    EXPECT_EQ(number(bytes, 112), static_cast<std::int32_t>(model.uplinkRate(station(model, 1))));
    EXPECT_EQ(number(bytes, 116), static_cast<std::int32_t>(station(model, 1).counters.txRetries));
    EXPECT_EQ(number(bytes, 120), -48 - model.noise(0));
    EXPECT_STREQ(bytes.c_str() + 124, "ac");
    EXPECT_EQ(number(bytes, 188), 80);
    EXPECT_EQ(number(bytes, 232), 20);
}

}  // namespace
}  // namespace quorvel::manager::test
