// A library that breaks one rule of its front ends in each of its few functions.
#include <quorvel.h>

#include <cstdint>
#include <cstring>

namespace {

void* mutex;

void lockOnce() {
    if (mutex == nullptr) (void)QuorvelOsCreateMutex("WiFi", &mutex);
    (void)QuorvelOsMutexLock(mutex);
}

// Offsets of two fields in a radio's context.
constexpr std::size_t kEnable = 132;
constexpr std::size_t kAlias = 165;

}  // namespace

#define BROKEN extern "C" __attribute__((visibility("default"))) std::uint32_t

// A context of the wrong size.
BROKEN WiFiRadioInitContext(void* context) {
    if (context == nullptr) return 2;
    return Quorvel_ContextInit(context, 9956);
}

// A node too many.
BROKEN WiFiRadioCheckContextNodeSet(void* context, std::uint32_t node) {
    if (context == nullptr || node > 66) return 0;
    return Quorvel_IsContextSetMap(context, node);
}

// A null output is taken, the lock's result is not looked at, and the lock is never given back.
BROKEN WiFiRadioEnableGet(std::uint32_t, std::uint8_t*) {
    lockOnce();
    return 0;
}

// A buffer that is one byte short is good enough.
BROKEN WiFiRadioAliasGet(std::uint32_t, char* buffer, std::uint32_t length) {
    if (buffer == nullptr) return 6;
    if (length < 63) return 8;
    if (const std::uint32_t result = QuorvelOsMutexLock(mutex)) return result;
    return QuorvelOsMutexUnlock(mutex);
}

// Takes 2 for a truth, and marks another node.
BROKEN WiFiRadioEnableSet(void* context, std::uint32_t, std::uint32_t value) {
    if (context == nullptr) return 2;
    if (Quorvel_IsContextInit(context) != 0) return 5;
    if (value > 2) return 8;
    static_cast<char*>(context)[kEnable] = static_cast<char>(value);
    (void)Quorvel_ContextSetMap(context, 4);
    return 0;
}

// Takes a text that does not fit, and does not ask whether the context was initialised.
BROKEN WiFiRadioAliasSet(void* context, std::uint32_t, const char* text, std::uint32_t length) {
    if (context == nullptr) return 2;
    if (text == nullptr) return 6;
    if (length > 65) return 8;
    std::memcpy(static_cast<char*>(context) + kAlias, text, length);
    (void)Quorvel_ContextSetMap(context, 3);
    return 0;
}

// Goes on when the lock fails, and keeps the marks.
BROKEN WiFiRadioApplyContext(void* context, std::uint32_t) {
    if (context == nullptr) return 2;
    if (Quorvel_IsContextInit(context) != 0) return 5;
    (void)QuorvelOsMutexLock(mutex);
    return QuorvelOsMutexUnlock(mutex);
}

// Leaves a mark and the lock.
BROKEN WiFiRadioInstanceGet(void* context, std::uint32_t) {
    (void)Quorvel_ContextInit(context, 9960);
    (void)Quorvel_ContextSetMap(context, 1);
    return QuorvelOsMutexLock(mutex);
}
