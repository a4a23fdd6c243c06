#include "gateway/manager/Protocol.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "gateway/manager/Random.h"

namespace quorvel::manager::test {
namespace {

std::vector<std::uint8_t> encoded(const Request& request) {
    std::vector<std::uint8_t> frame(kMaxFrame);
    frame.resize(encodeRequest(request, frame));
    return frame;
}

Request setRequest() {
    Request request;
    request.operation = Operation::kSet;
    request.words[0] = 1;
    request.words[1] = 2;
    request.texts[0] = "wlSsid";
    request.texts[1] = "Net";
    return request;
}

TEST(Requests, OfEveryOperationComeBackAsTheyWereSent) {
    for (std::uint32_t number = 1; number <= kLastOperation; ++number) {
        Request request;
        request.operation = static_cast<Operation>(number);
        const Shape shape = shapeOf(request.operation);
        for (std::size_t i = 0; i < shape.words; ++i)
            request.words[i] = number * 0x01010101U + static_cast<std::uint32_t>(i);
        for (std::size_t i = 0; i < shape.texts; ++i)
            request.texts[i] = i == 0 ? "first" : "";
        const auto frame = encoded(request);
        ASSERT_FALSE(frame.empty());
        EXPECT_EQ(frameSize(frame), frame.size());
        Request read;
        ASSERT_TRUE(decodeRequest(frame, read)) << number;
        EXPECT_EQ(read.operation, request.operation);
        EXPECT_EQ(std::memcmp(read.words, request.words, sizeof read.words), 0);
        for (std::size_t i = 0; i < shape.texts; ++i) {
            EXPECT_EQ(read.texts[i], request.texts[i]);
            EXPECT_FALSE(read.isNull[i]);
        }
    }
}

TEST(Requests, TellANullTextFromAnEmptyOne) {
    Request request = setRequest();
    request.isNull[1] = true;
    Request read;
    ASSERT_TRUE(decodeRequest(encoded(request), read));
    EXPECT_FALSE(read.isNull[0]);
    EXPECT_TRUE(read.isNull[1]);
}

TEST(Requests, AreRefusedAtEveryTruncationAndWithAnythingAfterThem) {
    const auto frame = encoded(setRequest());
    for (std::size_t size = 0; size < frame.size(); ++size) {
        std::vector<std::uint8_t> piece(frame.begin(), frame.begin() + static_cast<std::ptrdiff_t>(size));
        Request read;
        EXPECT_FALSE(decodeRequest(piece, read)) << size;
        if (size < 4) continue;
        // Also when the length ends there.
        piece[0] = static_cast<std::uint8_t>(size - 4);
        EXPECT_FALSE(decodeRequest(piece, read)) << size;
    }
    auto longer = frame;
    longer.push_back(0);
    longer[0] = static_cast<std::uint8_t>(longer[0] + 1);
    Request read;
    EXPECT_FALSE(decodeRequest(longer, read));
}

TEST(Requests, WithANulInATextAreRefused) {
    Request request = setRequest();
    request.texts[1] = std::string_view("a\0b", 3);
    Request read;
    EXPECT_FALSE(decodeRequest(encoded(request), read));
}

TEST(Requests, ThatDoNotFitAreNotEncoded) {
    const std::string large(kMaxFrame, 'x');
    Request request = setRequest();
    request.texts[1] = large;
    EXPECT_TRUE(encoded(request).empty());
    std::array<std::uint8_t, 16> small;
    EXPECT_EQ(encodeRequest(setRequest(), small), 0U);
}

TEST(Answers, ComeBackWithTheirBlocks) {
    const std::array<std::uint8_t, 3> first = {1, 2, 3};
    Answer answer;
    answer.operation = Operation::kCiScanResults;
    answer.result = -5;
    answer.value = 77;
    answer.blockCount = 2;
    answer.blocks[0] = {28, first};
    answer.blocks[1] = {4, {}};
    std::array<std::uint8_t, 100> frame;
    const std::size_t size = encodeAnswer(answer, frame);
    ASSERT_NE(size, 0U);
    Answer read;
    ASSERT_TRUE(decodeAnswer(std::span(frame).first(size), read));
    EXPECT_EQ(read.operation, answer.operation);
    EXPECT_EQ(read.result, -5);
    EXPECT_EQ(read.value, 77U);
    ASSERT_EQ(read.blockCount, 2U);
    EXPECT_EQ(read.blocks[0].offset, 28U);
    ASSERT_EQ(read.blocks[0].bytes.size(), 3U);
    EXPECT_EQ(read.blocks[0].bytes[2], 3);
    EXPECT_TRUE(read.blocks[1].bytes.empty());
    for (std::size_t cut = 0; cut < size; ++cut)
        EXPECT_FALSE(decodeAnswer(std::span(frame).first(cut), read)) << cut;
}

TEST(Answers, WithTooManyBlocksAreRefused) {
    Answer answer;
    std::array<std::uint8_t, 100> frame;
    const std::size_t size = encodeAnswer(answer, frame);
    frame[16] = kMaxBlocks + 1;
    Answer read;
    EXPECT_FALSE(decodeAnswer(std::span(frame).first(size), read));
}

TEST(Frames, HaveABoundedLength) {
    const std::array<std::uint8_t, 4> tooLong = {0xfd, 0xff, 0x00, 0x00};
    const std::array<std::uint8_t, 4> longest = {0xfc, 0xff, 0x00, 0x00};
    const std::array<std::uint8_t, 4> tooShort = {3, 0, 0, 0};
    const std::array<std::uint8_t, 4> huge = {0xff, 0xff, 0xff, 0xff};
    EXPECT_EQ(frameSize(tooLong), 0U);
    EXPECT_EQ(frameSize(longest), kMaxFrame);
    EXPECT_EQ(frameSize(tooShort), 0U);
    EXPECT_EQ(frameSize(huge), 0U);
    EXPECT_EQ(frameSize(std::span(huge).first(3)), 0U);
}

TEST(Frames, OfRandomBytesAreTakenApartWithoutReadingBeyondThem) {
    Random random(11);
    std::size_t accepted = 0;
    for (int round = 0; round < 20000; ++round) {
        // A buffer of exactly the frame's size, so that the sanitizers see any byte too many.
        std::vector<std::uint8_t> frame(static_cast<std::size_t>(random.between(8, 60)));
        for (auto& byte : frame)
            byte = static_cast<std::uint8_t>(random.between(0, 3) == 0 ? random.between(0, 255) : random.between(0, 8));
        frame[0] = static_cast<std::uint8_t>(frame.size() - 4);
        frame[1] = frame[2] = frame[3] = frame[5] = frame[6] = frame[7] = 0;
        frame[4] = static_cast<std::uint8_t>(random.between(0, static_cast<int>(kLastOperation) + 1));
        Request request;
        Answer answer;
        if (decodeRequest(frame, request)) {
            ++accepted;
            EXPECT_EQ(encoded(request), frame);
        }
        if (decodeAnswer(frame, answer)) ++accepted;
    }
    EXPECT_GT(accepted, 0U);
}

}  // namespace
}  // namespace quorvel::manager::test
