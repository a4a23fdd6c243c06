// The bounded queue between the host's threads, which record, and the writer, which stores.
#pragma once

#include <semaphore.h>

#include <atomic>
#include <cstdint>

#include "recorder/library/Values.h"

namespace quorvel::recorder {

/// The head of a record in the queue; its thread and time are its batch's.
struct QueuedHead {
    uint32_t length;  ///< bytes with the head, a multiple of 4
    RecordKind kind;
    uint8_t values;
    uint16_t function;
    int32_t error;
};
static_assert(sizeof(QueuedHead) == 12);

/// Records of one thread that go into the queue together.
struct BatchHead {
    std::atomic<uint32_t> length;  ///< bytes with the head, a multiple of 8; 0 until the batch is closed
    uint32_t thread;               ///< names the thread among those that live
    uint32_t seconds;
    uint32_t nanoseconds;
};
static_assert(sizeof(BatchHead) == 16);

/// Many threads append, one takes. A thread never waits: a record that finds no room is counted as lost.
class Queue {
  public:
    /// Bytes of the queue unless the settings say otherwise.
    static constexpr uint32_t kCapacity = 1U << 19;
    /// A longer record counts as lost, whatever the queue's capacity.
    static constexpr uint32_t kLargestRecord = 1U << 16;

    /// Maps the queue's memory, `capacity` bytes: a power of two from 2 * kLargestRecord. Returns false when the system
    /// has none.
    [[nodiscard]] bool open(uint32_t capacity = kCapacity);
    /// Lets every later record be dropped uncounted: nobody takes them.
    void abandon() {
        capacity_ = 0;
    }

    /// Appends a record of `values` to the calling thread's batch; `function` and `error` are the record's.
    template <typename... Values>
    void append(RecordKind kind, uint16_t function, int32_t error, const Values&... values) {
        static_assert(sizeof...(values) < 256);
        const uint32_t size = uint32_t{sizeof(QueuedHead)} + (0 + ... + sizeInRecord(values));
        uint8_t* const record = reserve(size);
        if (record == nullptr) return;
        ValueWriter writer(record + sizeof(QueuedHead));
        (writer.put(values), ...);
        finish(record, {size, kind, sizeof...(values), function, error});
    }

    /// Returns room for a record of `size` bytes in the calling thread's batch, which becomes a new one when it has no
    /// room. Null when the queue has none either.
    [[nodiscard]] uint8_t* reserve(uint32_t size) {
        if (size <= static_cast<uint32_t>(batch.end - batch.at)) return batch.at;
        return reserveInNew(size);
    }
    /// Adds the record that was written at reserve's place; `head.length` is its real size, at most the reserved one.
    void finish(uint8_t* record, const QueuedHead& head) {
        memcpy(record, &head, sizeof head);
        batch.at = record + head.length;
    }
    /// Hands the calling thread's batch over to the writer. Called where a call ends, and before one that may wait.
    void close();

    /// Returns the oldest batch, or null when it is not closed yet or there is none. For the writer alone.
    [[nodiscard]] const BatchHead* front();
    /// Gives the oldest batch's room back.
    void pop();
    /// Waits until there may be something to take.
    void wait();
    /// Ends a wait.
    void wake();
    /// Tells whether records were lost before the front batch (or at all, when the queue is drained), how many in
    /// `lost`, and forgets them. For the writer alone.
    [[nodiscard]] bool lostBefore(bool drained, uint32_t& lost);

  private:
    // The calling thread's open batch; all null when it has none.
    struct OpenBatch {
        uint8_t* begin;
        uint8_t* at;
        uint8_t* end;
    };
    // Few bytes, of those that the C library keeps for libraries that are loaded late.
    [[gnu::tls_model("initial-exec")]] static thread_local constinit OpenBatch batch;

    uint8_t* reserveInNew(uint32_t size);
    uint8_t* claim(uint32_t size);

    uint8_t* memory_ = nullptr;
    uint32_t capacity_ = 0;
    // Positions count bytes from the queue's beginning and wrap with their type.
    std::atomic<uint32_t> reserved_{0};
    std::atomic<uint32_t> taken_{0};
    std::atomic<uint32_t> lost_{0};
    std::atomic<uint32_t> firstLost_{0};  // where the first of them would have been
    std::atomic<bool> writerWaits_{false};
    sem_t filled_{};
};

/// Calls `visit(head)` for each record of a batch; the record's values follow its head.
template <typename Visit>
void forEachRecord(const BatchHead& closed, Visit visit) {
    const auto* const begin = reinterpret_cast<const uint8_t*>(&closed);
    uint32_t at = sizeof closed;
    const uint32_t length = closed.length.load(std::memory_order_relaxed);
    // Bytes that were reserved and not needed are zero.
    while (at + sizeof(QueuedHead) <= length) {
        const auto* const head = reinterpret_cast<const QueuedHead*>(begin + at);
        if (head->length == 0) return;
        visit(*head);
        at += head->length;
    }
}

extern Queue queue;

}  // namespace quorvel::recorder
