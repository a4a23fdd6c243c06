#include <gtest/gtest.h>
#include <quorvel.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

class HostContext : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(Quorvel_ContextInit(block_.data(), static_cast<std::uint32_t>(block_.size())), 0U);
    }

    std::vector<unsigned char> block_ = std::vector<unsigned char>(200, 0xa5);
};

TEST(HostContextInit, RefusesNullAndBlocksSmallerThanTheHeader) {
    std::vector<unsigned char> block(QUORVEL_CONTEXT_HEADER_SIZE - 1, 0xa5);
    EXPECT_NE(Quorvel_ContextInit(nullptr, 200), 0U);
    EXPECT_NE(Quorvel_ContextInit(block.data(), QUORVEL_CONTEXT_HEADER_SIZE - 1), 0U);
    EXPECT_TRUE(std::ranges::all_of(block, [](unsigned char byte) { return byte == 0xa5; }));
}

TEST(HostContextInit, AcceptsABareHeader) {
    std::vector<unsigned char> block(QUORVEL_CONTEXT_HEADER_SIZE);
    EXPECT_EQ(Quorvel_ContextInit(block.data(), QUORVEL_CONTEXT_HEADER_SIZE), 0U);
    EXPECT_EQ(Quorvel_IsContextInit(block.data()), 0U);
}

TEST(HostContextInit, StaysInsideTheGivenSize) {
    std::vector<unsigned char> block(150, 0xa5);
    ASSERT_EQ(Quorvel_ContextInit(block.data(), 140), 0U);
    EXPECT_EQ(block[139], 0);
    EXPECT_EQ(block[140], 0xa5);
}

TEST(HostContextInit, MarksABlockAtAnyAddress) {
    std::vector<unsigned char> block(QUORVEL_CONTEXT_HEADER_SIZE + 1);
    ASSERT_EQ(Quorvel_ContextInit(block.data() + 1, QUORVEL_CONTEXT_HEADER_SIZE), 0U);
    ASSERT_EQ(Quorvel_ContextSetMap(block.data() + 1, 1023), 0U);
    EXPECT_EQ(Quorvel_IsContextInit(block.data() + 1), 0U);
    EXPECT_NE(Quorvel_IsContextSetMap(block.data() + 1, 1023), 0U);
}

TEST(HostContextInit, IsNotSeenInNullOrFreshMemory) {
    const std::vector<unsigned char> fills{0x00, 0xa5, 0xff};
    EXPECT_NE(Quorvel_IsContextInit(nullptr), 0U);
    for (const unsigned char fill : fills) {
        std::vector<unsigned char> block(200, fill);
        EXPECT_NE(Quorvel_IsContextInit(block.data()), 0U) << unsigned{fill};
    }
}

TEST_F(HostContext, StartsWithAnEmptyMapAndZeroFields) {
    for (std::uint32_t node = 0; node < 1024; ++node)
        EXPECT_EQ(Quorvel_IsContextSetMap(block_.data(), node), 0U);
    EXPECT_TRUE(
        std::all_of(block_.begin() + QUORVEL_CONTEXT_HEADER_SIZE, block_.end(), [](auto byte) { return byte == 0; }));
}

TEST_F(HostContext, KeepsEveryNodeApart) {
    for (std::uint32_t node = 0; node < 1024; ++node) {
        ASSERT_EQ(Quorvel_ContextSetMap(block_.data(), node), 0U);
        for (std::uint32_t other = 0; other < 1024; ++other)
            ASSERT_EQ(Quorvel_IsContextSetMap(block_.data(), other) != 0, other == node) << node << " " << other;
        ASSERT_EQ(Quorvel_ContextClearMap(block_.data(), node), 0U);
    }
    EXPECT_EQ(Quorvel_IsContextInit(block_.data()), 0U);
}

TEST_F(HostContext, RefusesNodesBeyondItsMap) {
    for (const std::uint32_t node : {1024U, 1056U, 0xffffffffU}) {
        EXPECT_NE(Quorvel_ContextSetMap(block_.data(), node), 0U);
        EXPECT_NE(Quorvel_ContextClearMap(block_.data(), node), 0U);
        EXPECT_EQ(Quorvel_IsContextSetMap(block_.data(), node), 0U);
    }
    EXPECT_TRUE(std::all_of(block_.begin() + 4, block_.end(), [](auto byte) { return byte == 0; }));
}

TEST_F(HostContext, LosesAllMarksButStaysInitialised) {
    block_[150] = 7;
    for (const std::uint32_t node : {0U, 1U, 56U, 1023U})
        ASSERT_EQ(Quorvel_ContextSetMap(block_.data(), node), 0U);
    EXPECT_EQ(Quorvel_ContextZeroSetMap(block_.data()), 0U);
    for (std::uint32_t node = 0; node < 1024; ++node)
        EXPECT_EQ(Quorvel_IsContextSetMap(block_.data(), node), 0U);
    EXPECT_EQ(Quorvel_IsContextInit(block_.data()), 0U);
    EXPECT_EQ(block_[150], 7);
}

TEST(HostContextCalls, RefuseNull) {
    EXPECT_NE(Quorvel_ContextSetMap(nullptr, 1), 0U);
    EXPECT_EQ(Quorvel_IsContextSetMap(nullptr, 1), 0U);
    EXPECT_NE(Quorvel_ContextClearMap(nullptr, 1), 0U);
    EXPECT_NE(Quorvel_ContextZeroSetMap(nullptr), 0U);
}

}  // namespace
