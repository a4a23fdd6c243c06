// The log: one line per call, filtered by level, to a sink.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>

#include "gateway/framework/Platform.h"

namespace {

constexpr std::uint32_t kHighestLevel = 3;
constexpr std::array<const char*, kHighestLevel + 1> kLevelNames{"error", "warning", "notice", "trace"};
constexpr std::size_t kTextSize = 4096;
constexpr std::size_t kLineSize = kTextSize + 512;

// Until the environment is read, every level passes the first check.
constexpr std::uint32_t kUnread = 0xffffffff;
std::atomic<std::uint32_t> threshold{kUnread};

std::mutex sinkMutex;
QuorvelHostLogSink sinkFunction = nullptr;
void* sinkUser = nullptr;
bool fileOpened = false;
int fileDescriptor = -1;

thread_local std::array<char, kTextSize> lastError{};

std::uint32_t levelFromEnvironment() {
    const char* text = std::getenv("QUORVEL_LOG_LEVEL");
    if (text == nullptr || text[0] < '0' || text[0] > '3' || text[1] != '\0') return 0;
    return static_cast<std::uint32_t>(text[0] - '0');
}

std::uint32_t readThreshold() {
    std::uint32_t seen = kUnread;
    const std::uint32_t level = levelFromEnvironment();
    // A host that has set the level meanwhile keeps its own.
    return threshold.compare_exchange_strong(seen, level) ? level : seen;
}

int openFile() {
    const char* name = std::getenv("QUORVEL_LOG_FILE");
    if (name == nullptr || std::strcmp(name, "stderr") == 0) return STDERR_FILENO;
    if (name[0] == '\0') return -1;
    const int opened = open(name, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    if (opened >= 0) return opened;
    std::fprintf(stderr, "Cannot open the log file %s: %s. Lines go to standard error; set QUORVEL_LOG_FILE.\n", name,
                 std::strerror(errno));
    return STDERR_FILENO;
}

// One write per line, so that lines of several processes do not mix in an appended file.
void writeAll(int descriptor, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = write(descriptor, bytes, count);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

void emit(std::uint32_t level, const char* line, std::size_t length) {
    const std::lock_guard<std::mutex> guard(sinkMutex);
    if (sinkFunction != nullptr) {
        sinkFunction(level, line, sinkUser);
        return;
    }
    if (!fileOpened) {
        fileOpened = true;
        fileDescriptor = openFile();
    }
    if (fileDescriptor >= 0) writeAll(fileDescriptor, line, length);
}

void logLine(std::uint32_t level, const char* file, const char* function, std::uint32_t line, const char* format,
             va_list arguments) __attribute__((format(printf, 5, 0)));

void logLine(std::uint32_t level, const char* file, const char* function, std::uint32_t line, const char* format,
             va_list arguments) {
    std::array<char, kTextSize> text{};
    if (std::vsnprintf(text.data(), text.size(), format, arguments) < 0) return;
    std::size_t length = std::strlen(text.data());
    while (length > 0 && text[length - 1] == '\n')
        text[--length] = '\0';
    if (level == 0) std::copy_n(text.begin(), length + 1, lastError.begin());

    timespec now{};
    (void)clock_gettime(CLOCK_MONOTONIC, &now);  // cannot fail for this clock
    std::array<char, kLineSize> whole{};
    const int written = std::snprintf(whole.data(), whole.size(), "[%6lld.%06ld] %s %.128s:%u %.128s: %s\n",
                                      static_cast<long long>(now.tv_sec), static_cast<long>(now.tv_nsec / 1000),
                                      kLevelNames[std::min(level, kHighestLevel)], file == nullptr ? "?" : file, line,
                                      function == nullptr ? "?" : function, text.data());
    if (written <= 0) return;
    emit(level, whole.data(), std::min(static_cast<std::size_t>(written), whole.size() - 1));
}

}  // namespace

void Quorvel_LogPrint(std::uint32_t level, const char* file, const char* function, std::uint32_t line,
                      const char* format, ...) {
    std::uint32_t limit = threshold.load(std::memory_order_relaxed);
    if (__builtin_expect(level > limit, 1)) return;
    const int saved = errno;
    if (limit == kUnread) limit = readThreshold();
    if (level <= limit && format != nullptr) {
        va_list arguments;
        va_start(arguments, format);
        logLine(level, file, function, line, format, arguments);
        va_end(arguments);
    }
    errno = saved;
}

const char* QuorvelHost_LastError(void) {
    return lastError.data();
}

void QuorvelHost_ClearLastError(void) {
    lastError[0] = '\0';
}

void QuorvelHost_SetLogLevel(std::uint32_t level) {
    threshold.store(std::min(level, kHighestLevel), std::memory_order_relaxed);
}

void QuorvelHost_SetLogSink(QuorvelHostLogSink sink, void* user) {
    const std::lock_guard<std::mutex> guard(sinkMutex);
    sinkFunction = sink;
    sinkUser = user;
    if (sink != nullptr) return;
    if (fileOpened && fileDescriptor > STDERR_FILENO) close(fileDescriptor);
    fileOpened = false;
    fileDescriptor = -1;
}
