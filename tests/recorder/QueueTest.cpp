#include "recorder/library/Queue.h"

#include <gtest/gtest.h>

#include <map>
#include <thread>
#include <vector>

namespace quorvel::recorder_test {
namespace {

using recorder::BatchHead;
using recorder::Bytes;
using recorder::Error;
using recorder::Number;
using recorder::Queue;
using recorder::QueuedHead;
using recorder::RecordKind;

// A place where records were lost.
constexpr int64_t kLost = -1;

uint32_t numberIn(const QueuedHead& head) {
    return static_cast<uint32_t>(reinterpret_cast<const recorder::Word*>(&head + 1)[0]);
}

// Each thread has one open batch: a test closes its own before the queue goes away.
class OpenQueue : public testing::Test {
  protected:
    explicit OpenQueue(uint32_t capacity = Queue::kCapacity) : capacity_(capacity) {}
    void SetUp() override {
        ASSERT_TRUE(queue_.open(capacity_));
    }
    void TearDown() override {
        queue_.close();
    }

    void append(uint32_t number) {
        queue_.append<RecordKind::kThread>(0, Number{number});
    }
    void append(uint32_t number, uint32_t size) {
        queue_.append<RecordKind::kThread>(0, Number{number}, Bytes{filling_.data(), size});
    }

    // Takes the closed batches. Returns the numbers of the records, kLost where some were lost.
    std::vector<int64_t> drain() {
        std::vector<int64_t> numbers;
        for (;;) {
            const BatchHead* const batch = queue_.front();
            uint32_t lost = 0;
            if (queue_.lostBefore(batch == nullptr, lost)) numbers.push_back(kLost);
            if (batch == nullptr) return numbers;
            forEachRecord(*batch, [&](const QueuedHead& head) { numbers.push_back(numberIn(head)); });
            queue_.pop();
        }
    }

    std::vector<uint8_t> filling_ = std::vector<uint8_t>(Queue::kLargestRecord + 1, 7);
    const uint32_t capacity_;
    Queue queue_;
};

// Has room for all that several threads append before anybody takes it.
class LargeQueue : public OpenQueue {
  protected:
    LargeQueue() : OpenQueue(1U << 22) {}
};

TEST_F(OpenQueue, GivesRecordsInTheirOrder) {
    for (uint32_t i = 0; i < 5; ++i)
        queue_.append<RecordKind::kThread>(9, Number{i}, Error{-3});
    queue_.close();
    const BatchHead* const batch = queue_.front();
    ASSERT_NE(batch, nullptr);
    const auto& first = *reinterpret_cast<const QueuedHead*>(batch + 1);
    EXPECT_EQ(first.layout->kind, RecordKind::kThread);
    EXPECT_EQ(first.layout->count, 2);
    EXPECT_EQ(first.function(), 9);
    EXPECT_EQ(first.words(), recorder::kHeadWords + 2);
    EXPECT_EQ(drain(), (std::vector<int64_t>{0, 1, 2, 3, 4}));
}

// Both are found at the same words by the writer, whatever the text's length and place.
TEST(QueuedText, TakesTheWordsOfItsLength) {
    for (size_t length = 0; length < 6 * sizeof(recorder::Word); ++length) {
        for (size_t offset = 0; offset < sizeof(recorder::Word); ++offset) {
            alignas(recorder::Word) char text[16 * sizeof(recorder::Word)] = {};
            std::memset(text + offset, 'x', length);
            recorder::Word room[16] = {};
            recorder::Word size = 0;
            const recorder::Word* const behind = recorder::copyText(room, room + 16, &size, text + offset);
            ASSERT_NE(behind, nullptr);
            EXPECT_EQ(size, length);
            EXPECT_EQ(behind - room, recorder::wordsOfText(static_cast<uint32_t>(length)))
                << length << " at " << offset;
            EXPECT_EQ(std::memcmp(room, text + offset, length), 0);
            EXPECT_EQ(recorder::copyText(room, behind - 1, &size, text + offset), nullptr) << length;
        }
    }
}

TEST_F(OpenQueue, GivesABatchOnceItIsClosed) {
    append(1);
    EXPECT_EQ(queue_.front(), nullptr);
    queue_.close();
    EXPECT_EQ(drain(), std::vector<int64_t>{1});
    // There is nothing to close twice.
    queue_.close();
    EXPECT_EQ(queue_.front(), nullptr);
}

TEST_F(OpenQueue, ClosesABatchThatIsFull) {
    for (uint32_t i = 0; i < 200; ++i)
        append(i);
    EXPECT_GT(drain().size(), 0U);
}

TEST_F(OpenQueue, GoesRoundItsMemoryManyTimes) {
    const uint32_t records = 10 * Queue::kCapacity / 1000;
    uint32_t next = 0;
    for (uint32_t i = 0; i < records; ++i) {
        append(i, 900 + i % 100);
        if (i % 7 != 6) continue;
        queue_.close();
        for (const int64_t number : drain())
            ASSERT_EQ(number, next++);
    }
    queue_.close();
    for (const int64_t number : drain())
        ASSERT_EQ(number, next++);
    EXPECT_EQ(next, records);
}

TEST_F(OpenQueue, CountsWhatFindsNoRoomAndSaysWhere) {
    for (uint32_t i = 0; i < 2 * Queue::kCapacity / 10000; ++i)
        append(i, 10000);
    queue_.close();
    std::vector<int64_t> numbers = drain();
    ASSERT_FALSE(numbers.empty());
    EXPECT_EQ(numbers.back(), kLost);
    numbers.pop_back();
    EXPECT_GT(numbers.size(), 0U);
    for (size_t i = 0; i < numbers.size(); ++i)
        ASSERT_EQ(numbers[i], static_cast<int64_t>(i));
    // There is room again.
    append(77);
    queue_.close();
    EXPECT_EQ(drain(), std::vector<int64_t>{77});
}

TEST_F(OpenQueue, RefusesARecordThatWouldTakeTooMuchOfIt) {
    append(1, Queue::kLargestRecord + 1);
    EXPECT_EQ(drain(), std::vector<int64_t>{kLost});
}

TEST_F(OpenQueue, RecordsNothingOnceItIsAbandoned) {
    queue_.abandon();
    append(1);
    queue_.close();
    EXPECT_EQ(drain(), std::vector<int64_t>{});
}

TEST_F(LargeQueue, TakesRecordsOfManyThreads) {
    constexpr uint32_t kThreads = 4;
    constexpr uint32_t kRecords = 2000;
    std::vector<std::thread> threads;
    for (uint32_t thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([this, thread] {
            for (uint32_t i = 0; i < kRecords; ++i) {
                append(thread * kRecords + i);
                if (i % 9 == 8) queue_.close();
            }
            queue_.close();
        });
    }
    std::vector<uint32_t> next(kThreads, 0);
    std::map<uint32_t, uint32_t> names;  // of the threads in the queue, and which of these it is
    uint32_t taken = 0;
    while (taken < kThreads * kRecords) {
        const BatchHead* const batch = queue_.front();
        if (batch == nullptr) {
            queue_.wait();
            continue;
        }
        forEachRecord(*batch, [&](const QueuedHead& head) {
            const uint32_t thread = numberIn(head) / kRecords;
            EXPECT_EQ(names.try_emplace(batch->thread, thread).first->second, thread);
            EXPECT_EQ(numberIn(head) % kRecords, next[thread]++);
            ++taken;
        });
        queue_.pop();
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(queue_.front(), nullptr);
}

}  // namespace
}  // namespace quorvel::recorder_test
