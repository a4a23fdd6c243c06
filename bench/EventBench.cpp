// Station events through the listener, against a loop that makes the same reads, prints and flushes.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <pthread.h>
#include <quorvel.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "bench/counts/NullPlatform.h"
#include "host/StationRecords.h"
#include "wifi/QuorvelWiFiExports.h"

namespace {

constexpr std::uint32_t kEvents = 16384;
constexpr std::size_t kReadSize = 4096;

// Discards standard output for the life of the object.
class SilentOutput {
  public:
    SilentOutput() : kept_(dup(STDOUT_FILENO)) {
        std::fflush(stdout);
        const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (dup2(null, STDOUT_FILENO) < 0) std::abort();
        close(null);
    }
    ~SilentOutput() {
        std::fflush(stdout);
        (void)dup2(kept_, STDOUT_FILENO);
        close(kept_);
    }
    SilentOutput(const SilentOutput&) = delete;
    SilentOutput& operator=(const SilentOutput&) = delete;

  private:
    int kept_;
};

std::string writeEvents() {
    std::string path = "/tmp/quorvel-bench-XXXXXX";
    const int descriptor = mkstemp(path.data());
    AssociationMessage message{};
    message.header.radio = 1;
    message.header.bss = 2;
    message.header.event = QUORVEL_EVENT_ASSOCIATED;
    for (std::uint32_t n = 0; n < kEvents; ++n) {
        message.header.mac[5] = static_cast<std::uint8_t>(n);
        if (write(descriptor, &message, sizeof message) != sizeof message) std::abort();
    }
    close(descriptor);
    return path;
}

std::uint32_t received;
const char* eventsPath;

std::uint32_t onEvent(std::uint32_t, std::uint32_t, void*) {
    // The listener itself never ends.
    if (++received == kEvents) pthread_exit(nullptr);
    return 0;
}

void events(benchmark::State& state, void* (*listener)(void*)) {
    const std::string path = writeEvents();
    eventsPath = path.c_str();
    quorvel::bench::setEvents(eventsPath);
    {
        const SilentOutput silent;
        for (auto _ : state) {
            received = 0;
            pthread_t thread{};
            if (pthread_create(&thread, nullptr, listener, reinterpret_cast<void*>(&onEvent)) != 0) std::abort();
            pthread_join(thread, nullptr);
            state.PauseTiming();
            (void)WiFiNewAPAssociatedDeviceCallbackDeRegister();
            state.ResumeTiming();
        }
    }
    quorvel::bench::setEvents(nullptr);
    (void)unlink(path.c_str());
    state.SetItemsProcessed(state.iterations() * kEvents);
}

// Starts the library's own listener and waits for its end.
void* viaLibrary(void* callback) {
    (void)WiFiNewAPAssociatedDeviceCallbackRegister(reinterpret_cast<AssociatedDeviceCallback>(callback));
    pthread_join(qvlThreadId, nullptr);
    qvlThreadId = {};
    return nullptr;
}

void* bareLoop(void*) {
    static std::uint8_t buffer[kReadSize];
    static char record[124];
    const int events = open(eventsPath, O_RDONLY | O_CLOEXEC);
    for (;;) {
        const ssize_t length = read(events, buffer, sizeof buffer);
        if (length <= 0) break;
        std::printf("%s: receive total_len=%d\n", "bareLoop", static_cast<int>(length));
        std::fflush(stdout);
        for (ssize_t at = 0; at < length; at += static_cast<ssize_t>(sizeof(AssociationMessage))) {
            AssociationMessage message;
            std::memcpy(&message, buffer + at, sizeof message);
            const StationEventHeader& header = message.header;
            char mac[32];
            std::snprintf(mac, sizeof mac, "%02X:%02X:%02X:%02X:%02X:%02X", header.mac[0], header.mac[1], header.mac[2],
                          header.mac[3], header.mac[4], header.mac[5]);
            Quorvel_LogPrint(2, "bench", "bareLoop", 1, "%d %d %d %s", header.radio, header.bss, header.event, mac);
            std::printf("%s: recev event on wl%d.%d Event=%d STA MAC=[%s] len=%d\n", "bareLoop",
                        static_cast<int>(header.radio), static_cast<int>(header.bss), static_cast<int>(header.event),
                        mac, static_cast<int>(length - at));
            std::fflush(stdout);
            std::memcpy(record, mac, sizeof mac);
            ++received;
        }
    }
    close(events);
    return nullptr;
}

void eventsThroughListener(benchmark::State& state) {
    events(state, viaLibrary);
}
BENCHMARK(eventsThroughListener)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

void eventsBareLoop(benchmark::State& state) {
    events(state, bareLoop);
}
BENCHMARK(eventsBareLoop)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();

}  // namespace
