// The bounded queue between the host's threads, which record, and the writer, which stores.
#pragma once

#include <semaphore.h>

#include <atomic>
#include <cstdint>

#include "recorder/library/QueuedValues.h"

namespace quorvel::recorder {

/// The head of a record in the queue, whose values follow; thread and time are its batch's.
struct QueuedHead {
    const Layout* layout;
    Word sizeAndFunction;

    [[nodiscard]] uint32_t words() const {  ///< with the head
        return sizeAndFunction & 0xFFFF;
    }
    [[nodiscard]] uint16_t function() const {
        return static_cast<uint16_t>(sizeAndFunction >> 16);
    }
};
inline constexpr uint32_t kHeadWords = sizeof(QueuedHead) / sizeof(Word);

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

    /// The calling thread's open batch; without one, begin is null and at is end.
    struct OpenBatch {
        BatchHead* begin;
        Word* at;
        Word* end;
        uint32_t thread;  ///< the thread's name, 0 until it has one
    };
    /// Returns it.
    static OpenBatch& current() {
        // The compiler would look for it again for each member.
        OpenBatch* open = &batch;
        asm("" : "+r"(open));
        return *open;
    }
    /// Returns the second word of a record's head.
    static constexpr Word sizeAndFunction(ptrdiff_t words, uint16_t function) {
        return static_cast<uint32_t>(words) | static_cast<Word>(function) << 16;
    }

    /// Appends a record of `values` to the calling thread's batch, or to a new one when that has no room.
    template <RecordKind kKind, typename... Values>
    void append(uint16_t function, Values... values) {
        constexpr uint32_t kFixed = kHeadWords + sizeof...(Values);
        OpenBatch& open = current();
        const bool fits = static_cast<uint32_t>(open.end - open.at) >= kFixed;
        if (fits && fill<kKind>(open, function, values...)) return;
        appendInNew<kKind>(function, values...);
    }
    /// The same, and hands the batch over: where a call ends.
    template <RecordKind kKind, typename... Values>
    void appendLast(uint16_t function, Values... values) {
        constexpr uint32_t kFixed = kHeadWords + sizeof...(Values);
        OpenBatch& open = current();
        const bool fits = static_cast<uint32_t>(open.end - open.at) >= kFixed;
        if (!fits || !fill<kKind>(open, function, values...)) appendInNew<kKind>(function, values...);
        close(open);
    }
    /// The same as append, in a new batch: where a call begins.
    // The values are small, and by value so that they need no memory where the record fits.
    template <RecordKind kKind, typename... Values>
    [[gnu::noinline]] void appendInNew(uint16_t function, Values... values) {
        const uint32_t words = kHeadWords + uint32_t{sizeof...(Values)} + (0 + ... + values.tailWords());
        OpenBatch* const open = openBatch(words);
        if (open == nullptr) return;
        // Fails when the caller changes a text meanwhile.
        if (!fill<kKind>(*open, function, values...)) lose(reserved_.load(std::memory_order_relaxed));
    }
    /// Hands the calling thread's batch over to the writer. Called where a call ends, and before one that may wait.
    void close() {
        close(current());
    }

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
    // Few bytes, of those that the C library keeps for libraries that are loaded late.
    [[gnu::tls_model("initial-exec")]] static thread_local constinit OpenBatch batch;
    // Writes a record whose fixed part has room. False when its tail has none: there is no record then.
    template <RecordKind kKind, typename... Values>
    [[gnu::always_inline]] static bool fill(OpenBatch& open, uint16_t function, Values... values) {
        static_assert(sizeof...(Values) <= Layout::kMaxValues);
        Word* const at = open.at;
        [[maybe_unused]] const Word* const end = open.end;
        Word* fixed = at + kHeadWords;
        Word* tail = fixed + sizeof...(Values);
        if (!((tail = values.put(*fixed++, tail, end)) && ...)) return false;
        at[0] = reinterpret_cast<Word>(&kLayoutOf<kKind, Values...>);
        at[1] = sizeAndFunction(tail - at, function);
        open.at = tail;
        return true;
    }
    void close(OpenBatch& open) {
        BatchHead* const begin = open.begin;
        if (begin == nullptr) return;
        const auto length = reinterpret_cast<uintptr_t>(open.end) - reinterpret_cast<uintptr_t>(begin);
        open.begin = nullptr;
        open.at = open.end;
        begin->length.store(static_cast<uint32_t>(length), std::memory_order_release);
        if (writerWaits_.load(std::memory_order_relaxed)) wake();
    }
    OpenBatch* openBatch(uint32_t words);
    void lose(uint32_t position);
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
    const auto* at = reinterpret_cast<const Word*>(&closed + 1);
    const Word* const end =
        reinterpret_cast<const Word*>(&closed) + closed.length.load(std::memory_order_relaxed) / sizeof(Word);
    while (static_cast<uint32_t>(end - at) >= kHeadWords) {
        const auto* const head = reinterpret_cast<const QueuedHead*>(at);
        // Words that were reserved and not needed: no record has begun there.
        if (head->layout == nullptr) return;
        visit(*head);
        at += head->words();
    }
}

[[gnu::visibility("hidden")]] extern Queue queue;

}  // namespace quorvel::recorder
