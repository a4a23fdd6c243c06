#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/ScriptedRun.h"
#include "wifi/QuorvelWiFiExports.h"

#if defined(__SANITIZE_ADDRESS__)
#define QUORVEL_ADDRESS_SANITIZER
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QUORVEL_ADDRESS_SANITIZER
#endif
#endif
#ifdef QUORVEL_ADDRESS_SANITIZER
// Of the sanitizer's run-time library; not every compiler comes with its header.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*released)(const volatile void*));
#endif

// The event stream, cut into reads at arbitrary places: each chunk is its length, two bytes, and its bytes.

extern "C" void* qvl_thread_main_loop(void* callback);

namespace {

using quorvel::fuzz::Input;
using quorvel::fuzz::require;
using quorvel::scripted::Platform;
using quorvel::scripted::ReadStep;

constexpr std::size_t kRecordSize = 124;
constexpr std::size_t kReceiveSize = 4096;

// A listener that ends leaves its receive buffer behind; a fuzzer that runs it many thousand times takes it back.
thread_local bool isListener = false;
void* receiveBuffer = nullptr;

#ifdef QUORVEL_ADDRESS_SANITIZER
void noteAllocation(const volatile void* memory, std::size_t size) {
    if (isListener && size == kReceiveSize) {
        receiveBuffer = const_cast<void*>(memory);
    }
}
void noteRelease(const volatile void*) {}

[[maybe_unused]] const int installed = __sanitizer_install_malloc_and_free_hooks(noteAllocation, noteRelease);
#endif

std::uint32_t takeStation(std::uint32_t, std::uint32_t event, void* station) {
    require(event == 8 || event == 12, "only known events reach the callback");
    require(!Platform::instance().lockHeld(), "the callback runs without the lock");
    char record[kRecordSize];
    std::memcpy(record, station, sizeof record);
    require(std::memchr(record, '\0', 32) == record + 17, "the address is a text of 17 characters");
    return 0;
}

void* listen(void* callback) {
    isListener = true;
    return qvl_thread_main_loop(callback);
}

// Discards the listener's lines on standard output.
bool silence() {
    return std::freopen("/dev/null", "w", stdout) != nullptr;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool silent = silence();
    require(silent, "standard output can be put aside");
    quorvel::fuzz::ScriptedRun run;
    Input input(data, size);
    std::vector<ReadStep> steps;
    while (!input.isEmpty() && steps.size() < 64) {
        const std::size_t length = input.byte() + 256U * input.byte();
        ReadStep step;
        step.bytes = input.bytes(length % (kReceiveSize + 1));
        step.error = 104;
        steps.push_back(step);
    }
    run.platform.scriptReads(steps);
    run.platform.runInThread(listen, reinterpret_cast<void*>(takeStation));
    (void)WiFiNewAPAssociatedDeviceCallbackDeRegister();  // closes the socket
    std::free(receiveBuffer);
    receiveBuffer = nullptr;
    return 0;
}
