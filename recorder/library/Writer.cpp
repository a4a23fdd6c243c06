#include "recorder/library/Writer.h"

#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/random.h>
#include <time.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "recorder/library/Expansion.h"
#include "recorder/library/Imports.h"
#include "recorder/library/Queue.h"
#include "recorder/library/RecordingFile.h"
#include "recorder/secrets/Secrets.h"

namespace quorvel::recorder {

namespace {

// The file numbers the texts of the library from here on; functions have smaller numbers.
constexpr uint32_t kFirstConstant = 1024;
constexpr uint32_t kMaxConstants = 1024;
constexpr uint32_t kMaxThreads = 64;

// Seconds that the host waits for a slow disk when it ends the library.
constexpr time_t kLongestStoring = 2;

class Writer {
  public:
    constexpr Writer(const SipKey& key, Secrets::Kept kept) : secrets_(key, kept), kept_(kept) {}

    const char* open(const Settings& settings);
    void run();
    void storeEverything();
    void stop() {
        stops_.store(true, std::memory_order_release);
    }

  private:
    const char* beginFile(bool replayable);
    void store(const BatchHead& batch);
    void store(const BatchHead& batch, const QueuedHead& queued);
    void convert(const BatchHead& batch, const QueuedHead& queued);
    void add(const RecordHead& record);
    void addGap(uint32_t lost, GapReason reason);
    void addName(uint32_t number, const char* text);
    uint32_t numberOfConstant(const char* text);
    uint32_t numberOfThread(uint32_t token, bool begins);

    Secrets secrets_;
    Secrets::Kept kept_;
    RecordingFile file_{};
    const Settings* settings_ = nullptr;
    void storeEnd();

    std::atomic<bool> stops_{false};
    std::atomic<uint32_t> asked_{0};  // how often everything was to be stored
    uint32_t done_ = 0;
    sem_t stored_{};
    uint32_t lostToDisk_ = 0;
    bool endsInOrder_ = false;  // the last record is an end
    bool functionNamed_[kNumbersInRecords] = {};
    const char* constants_[kMaxConstants] = {};
    uint32_t constantCount_ = 0;
    struct Thread {
        uint32_t token;
        uint32_t number;
    };
    Thread threads_[kMaxThreads] = {};
    uint32_t threadCount_ = 0;
    uint32_t lastThread_ = 0;
    alignas(8) uint8_t record_[Queue::kLargestRecord + kMostAdded];
    alignas(8) uint8_t small_[1024];
};

constexpr uint32_t rounded(uint32_t size) {
    return (size + 7) & ~7U;
}

// Completes a record whose values were written behind its head. Returns the head.
RecordHead& finish(uint8_t* record, const ValueWriter& values, RecordKind kind) {
    const uint32_t size = uint32_t{sizeof(RecordHead)} + values.size();
    memset(record + size, 0, rounded(size) - size);
    RecordHead head{};
    head.length = rounded(size);
    head.kind = kind;
    head.values = static_cast<uint8_t>(values.count());
    memcpy(record, &head, sizeof head);
    return *reinterpret_cast<RecordHead*>(record);
}

const char* Writer::open(const Settings& settings) {
    settings_ = &settings;
    (void)sem_init(&stored_, 0, 0);  // fails for values beyond SEM_VALUE_MAX alone
    return beginFile(true);
}

const char* Writer::beginFile(bool replayable) {
    if (const char* const failure = file_.open(settings_->file, settings_->limit); failure != nullptr) return failure;
    memset(functionNamed_, 0, sizeof functionNamed_);
    constantCount_ = 0;
    timespec now{};
    (void)clock_gettime(CLOCK_REALTIME, &now);  // every Linux has this clock
    const uint32_t flags =
        (replayable ? kReplayable : 0U) | (kept_.macs ? kMacsKept : 0U) | (kept_.ssids ? kSsidsKept : 0U);
    const char* const slash = strrchr(settings_->library, '/');
    const char* const name = slash == nullptr ? settings_->library : slash + 1;
    ValueWriter values(small_ + sizeof(RecordHead));
    values.number(kFormatVersion);
    values.number(sizeof(void*));
    values.number(flags);
    values.wide(static_cast<uint64_t>(now.tv_sec));
    values.text(name, static_cast<uint32_t>(strlen(name)));
    add(finish(small_, values, RecordKind::kStart));
    return nullptr;
}

void Writer::run() {
    for (;;) {
        const BatchHead* const batch = queue.front();
        uint32_t lost = 0;
        if (queue.lostBefore(batch == nullptr, lost)) addGap(lost, GapReason::kQueueFull);
        if (batch != nullptr) {
            store(*batch);
            queue.pop();
            continue;
        }
        if (!file_.flush()) lostToDisk_ += file_.lostRecords();
        if (const uint32_t asked = asked_.load(std::memory_order_acquire); asked != done_) {
            done_ = asked;
            storeEnd();
            (void)sem_post(&stored_);  // at its maximum there is nobody left who waits
        }
        // A thread that waits in the platform may keep its batch for ever.
        if (stops_.load(std::memory_order_acquire)) break;
        queue.wait();
    }
    if (!endsInOrder_) storeEnd();
    file_.close();
}

void Writer::storeEnd() {
    add(finish(small_, ValueWriter(small_), RecordKind::kEnd));
    if (!file_.flush()) lostToDisk_ += file_.lostRecords();
    endsInOrder_ = true;
}

void Writer::storeEverything() {
    asked_.fetch_add(1, std::memory_order_release);
    queue.wake();
    timespec until{};
    (void)clock_gettime(CLOCK_REALTIME, &until);  // every Linux has this clock
    until.tv_sec += kLongestStoring;
    while (sem_timedwait(&stored_, &until) != 0 && errno == EINTR) {
    }
}

void Writer::add(const RecordHead& record) {
    if (lostToDisk_ != 0) {
        const uint32_t lost = lostToDisk_;
        lostToDisk_ = 0;
        addGap(lost, GapReason::kDiskFull);
        if (lostToDisk_ != 0) {
            lostToDisk_ = lost + 1;
            return;
        }
    }
    if (!file_.add(&record, record.length)) lostToDisk_ += file_.lostRecords();
}

void Writer::addGap(uint32_t lost, GapReason reason) {
    alignas(8) uint8_t record[64];
    ValueWriter values(record + sizeof(RecordHead));
    values.number(lost);
    values.number(static_cast<uint32_t>(reason));
    const RecordHead& head = finish(record, values, RecordKind::kGap);
    if (!file_.add(&head, head.length)) lostToDisk_ += file_.lostRecords();
}

void Writer::addName(uint32_t number, const char* text) {
    ValueWriter values(small_ + sizeof(RecordHead));
    values.number(number);
    values.text(text, static_cast<uint32_t>(strnlen(text, sizeof small_ / 2)));
    add(finish(small_, values, RecordKind::kName));
}

uint32_t Writer::numberOfConstant(const char* text) {
    for (uint32_t i = 0; i < constantCount_; ++i) {
        if (constants_[i] == text) return kFirstConstant + i;
    }
    // The library has some four hundred; with more than there is room for the last number is used again.
    const uint32_t index = constantCount_ < kMaxConstants ? constantCount_++ : kMaxConstants - 1;
    constants_[index] = text;
    addName(kFirstConstant + index, text);
    return kFirstConstant + index;
}

uint32_t Writer::numberOfThread(uint32_t token, bool begins) {
    Thread* free = nullptr;
    for (uint32_t i = 0; i < threadCount_; ++i) {
        if (threads_[i].token == token) free = &threads_[i];
    }
    if (free != nullptr && !begins) return free->number;
    // A new thread may have the handle of one that has ended.
    if (free == nullptr) free = &threads_[threadCount_ < kMaxThreads ? threadCount_++ : kMaxThreads - 1];
    *free = {token, ++lastThread_};
    return free->number;
}

// Writes a queued record in the file's form into record_.
void Writer::convert(const BatchHead& batch, const QueuedHead& queued) {
    ValueWriter values(record_ + sizeof(RecordHead));
    Expansion expansion(queued, values, [this](const char* text) { return numberOfConstant(text); });
    const int32_t error = expansion.run();
    RecordHead& head = finish(record_, values, queued.layout->kind);
    head.function = queued.function();
    head.thread = numberOfThread(batch.thread, queued.layout->kind == RecordKind::kThread);
    head.seconds = batch.seconds;
    head.nanoseconds = batch.nanoseconds;
    head.error = error;
}

void Writer::store(const BatchHead& batch) {
    forEachRecord(batch, [&](const QueuedHead& queued) { store(batch, queued); });
}

void Writer::store(const BatchHead& batch, const QueuedHead& queued) {
    endsInOrder_ = false;
    if (file_.isFull()) {
        add(finish(small_, ValueWriter(small_), RecordKind::kEnd));
        if (!file_.flush()) lostToDisk_ += file_.lostRecords();
        file_.close();
        // The library keeps scan results, slots and more between calls, which the next file does not know.
        if (const char* const failure = beginFile(false); failure != nullptr) {
            (void)fprintf(stderr, "quorvel_wifi recorder: %s\n", failure);
        }
    }
    const bool hasFunction = queued.layout->kind != RecordKind::kThread;
    if (hasFunction && !functionNamed_[queued.function()]) {
        functionNamed_[queued.function()] = true;
        addName(queued.function(), nameOfNumber(queued.function()));
    }
    convert(batch, queued);
    auto* const record = reinterpret_cast<RecordHead*>(record_);
    secrets_.replaceIn(record, hasFunction ? nameOfNumber(queued.function()) : "",
                       [this](uint32_t number) { return constants_[number - kFirstConstant]; });
    add(*record);
}

// Made in place when recording begins: the writer is large, and most hosts never record.
alignas(Writer) uint8_t writerMemory[sizeof(Writer)];
Writer* writer;
pthread_t writerThread;
Settings writerSettings;

SipKey freshKey() {
    SipKey key{};
    if (getrandom(&key, sizeof key, 0) == static_cast<ssize_t>(sizeof key)) return key;
    // An old kernel: addresses and time are what there is.
    timespec now{};
    (void)clock_gettime(CLOCK_MONOTONIC, &now);
    key.low = static_cast<uint64_t>(now.tv_nsec) << 32 ^ reinterpret_cast<uintptr_t>(&key);
    key.high = static_cast<uint64_t>(now.tv_sec) ^ reinterpret_cast<uintptr_t>(&writer) << 16;
    return key;
}

void* runWriter(void* /*unused*/) {
    writer->run();
    return nullptr;
}

}  // namespace

const char* beginWriting(const Settings& settings) {
    writerSettings = settings;
    auto* const created = new (writerMemory) Writer(freshKey(), {settings.keepMacs, settings.keepSsids});
    if (const char* const failure = created->open(writerSettings); failure != nullptr) return failure;
    writer = created;
    // The host's signals are not the writer's.
    sigset_t all;
    sigset_t before;
    (void)sigfillset(&all);
    (void)pthread_sigmask(SIG_BLOCK, &all, &before);
    const int code = pthread_create(&writerThread, nullptr, runWriter, nullptr);
    (void)pthread_sigmask(SIG_SETMASK, &before, nullptr);
    if (code == 0) return nullptr;
    writer = nullptr;
    return "the system has no thread for the writer";
}

void storeEverything() {
    if (writer != nullptr) writer->storeEverything();
}

void endWriting() {
    if (writer == nullptr) return;
    writer->stop();
    queue.wake();
    (void)pthread_join(writerThread, nullptr);  // it was created joinable and ends by itself
    writer = nullptr;
}

}  // namespace quorvel::recorder
