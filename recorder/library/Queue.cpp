#include "recorder/library/Queue.h"

#include <pthread.h>
#include <sys/mman.h>
#include <time.h>

#include <cerrno>

namespace quorvel::recorder {

constinit Queue queue;

[[gnu::tls_model("initial-exec")]] thread_local constinit Queue::OpenBatch Queue::batch{};

namespace {

// Room for the records of an ordinary read.
constexpr uint32_t kBatchSize = 640;

// The thread of a batch that only fills the queue's memory up to its end.
constexpr uint32_t kFiller = 0;

constexpr uint32_t rounded(uint32_t size) {
    return (size + 7) & ~7U;
}

uint32_t nameOfThread() {
    // Handles are addresses of aligned blocks: below 2^36 nothing of them is lost.
    return static_cast<uint32_t>(static_cast<uint64_t>(pthread_self()) >> 4) | 1;
}

}  // namespace

bool Queue::open(uint32_t capacity) {
    void* memory = mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return false;
    memory_ = static_cast<uint8_t*>(memory);
    capacity_ = capacity;
    (void)sem_init(&filled_, 0, 0);  // fails for values beyond SEM_VALUE_MAX alone
    return true;
}

inline uint8_t* Queue::claim(uint32_t size) {
    const uint32_t capacity = capacity_;
    uint32_t position = reserved_.load(std::memory_order_relaxed);
    for (;;) {
        // A batch does not wrap: the memory's end is skipped when it is too short.
        const uint32_t toEnd = capacity - (position & (capacity - 1));
        const uint32_t skipped = size > toEnd ? toEnd : 0;
        const uint32_t next = position + skipped + size;
        if (next - taken_.load(std::memory_order_acquire) > capacity) {
            lose(position);
            return nullptr;
        }
        if (!reserved_.compare_exchange_weak(position, next, std::memory_order_relaxed)) continue;
        uint8_t* const at = memory_ + (position & (capacity - 1));
        if (skipped == 0) return at;
        // The skipped end may have room for no more than these two words.
        auto* const filler = reinterpret_cast<BatchHead*>(at);
        filler->thread = kFiller;
        filler->length.store(skipped, std::memory_order_release);
        return memory_;
    }
}

void Queue::lose(uint32_t position) {
    if (capacity_ == 0) return;
    if (lost_.fetch_add(1, std::memory_order_acq_rel) == 0) firstLost_.store(position, std::memory_order_release);
}

Queue::OpenBatch* Queue::openBatch(uint32_t words) {
    close();
    uint32_t whole = kBatchSize;
    if (words > (kBatchSize - sizeof(BatchHead)) / sizeof(Word)) {
        if (words > kLargestRecord / sizeof(Word)) {
            lose(reserved_.load(std::memory_order_relaxed));
            return nullptr;
        }
        whole = rounded(words * uint32_t{sizeof(Word)} + uint32_t{sizeof(BatchHead)});
    }
    uint8_t* const begin = claim(whole);
    if (begin == nullptr) return nullptr;
    OpenBatch& open = current();
    open.begin = reinterpret_cast<BatchHead*>(begin);
    open.at = reinterpret_cast<Word*>(begin + sizeof(BatchHead));
    open.end = reinterpret_cast<Word*>(begin + whole);
    if (open.thread == 0) open.thread = nameOfThread();
    open.begin->thread = open.thread;
    timespec now;
    (void)clock_gettime(CLOCK_MONOTONIC, &now);  // every Linux has this clock
    open.begin->seconds = static_cast<uint32_t>(now.tv_sec);
    open.begin->nanoseconds = static_cast<uint32_t>(now.tv_nsec);
    return &open;
}

const BatchHead* Queue::front() {
    for (;;) {
        const uint32_t position = taken_.load(std::memory_order_relaxed);
        if (position == reserved_.load(std::memory_order_acquire)) return nullptr;
        const auto* const head = reinterpret_cast<const BatchHead*>(memory_ + (position & (capacity_ - 1)));
        if (head->length.load(std::memory_order_acquire) == 0) return nullptr;
        if (head->thread != kFiller) return head;
        pop();
    }
}

void Queue::pop() {
    const uint32_t position = taken_.load(std::memory_order_relaxed);
    uint8_t* const at = memory_ + (position & (capacity_ - 1));
    const uint32_t length = reinterpret_cast<BatchHead*>(at)->length.load(std::memory_order_relaxed);
    // The next batch here must not look closed before it is, nor have records that it does not have.
    memset(at, 0, length);
    taken_.store(position + length, std::memory_order_release);
}

bool Queue::lostBefore(bool drained, uint32_t& lost) {
    if (lost_.load(std::memory_order_acquire) == 0) return false;
    const uint32_t distance = taken_.load(std::memory_order_relaxed) - firstLost_.load(std::memory_order_acquire);
    // Positions wrap: a small distance is behind the place, a large one before it.
    if (!drained && distance > capacity_) return false;
    lost = lost_.exchange(0, std::memory_order_acq_rel);
    return true;
}

void Queue::wait() {
    writerWaits_.store(true, std::memory_order_seq_cst);
    // A batch that was closed meanwhile did not wake anyone: a wait is never longer than this.
    constexpr long kLongestWait = 200'000'000;
    constexpr long kSecond = 1'000'000'000;
    timespec until{};
    (void)clock_gettime(CLOCK_REALTIME, &until);
    until.tv_nsec += kLongestWait;
    until.tv_sec += until.tv_nsec / kSecond;
    until.tv_nsec %= kSecond;
    if (front() == nullptr) {
        while (sem_timedwait(&filled_, &until) != 0 && errno == EINTR) {
        }
    }
    writerWaits_.store(false, std::memory_order_relaxed);
}

void Queue::wake() {
    writerWaits_.store(false, std::memory_order_relaxed);
    (void)sem_post(&filled_);  // at its maximum the writer has enough to wake for
}

}  // namespace quorvel::recorder
