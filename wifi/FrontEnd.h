// The one pattern of all front ends: check the arguments, lock, call, unlock, log. A front-end function names its site
// and jumps here.
#pragma once

#include <quorvel.h>

#include <cstddef>
#include <cstdint>

#include "wifi/FunctionName.h"
#include "wifi/QuorvelWiFiContexts.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiImplementations.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// What the library's functions return. Codes that are not listed come from the lock or from an implementation.
enum Result : uint32_t {
    kSuccess = 0,
    kFailed = 1,           ///< a manager operation failed
    kInvalidContext = 2,   ///< null context
    kUninitContext = 5,    ///< context that InitContext has not seen
    kInvalidInput = 6,     ///< null output or text, or an instance out of range
    kValueOutOfRange = 8,  ///< value, text length or buffer length out of range
};

enum LogLevel : uint32_t { kLogError = 0, kLogWarning = 1, kLogTraffic = 2, kLogTrace = 3 };

/// Returns the name of a site's function.
[[nodiscard]] FunctionText functionOf(const Site& site);

/// Logs `text` with the function's name at level 3 ("%s Enter", "%s DONE").
void logEnter(const Site& site);
void logDone(const Site& site);
/// Logs `message` at level 0 and returns `result`.
uint32_t refuse(const Site& site, Result result, const char* message);

/// Logs `format` with `result` at level 0.
void logResult(const Site& site, const char* format, uint32_t result);

/// Initialises the context with its object's size. Returns the host's code.
uint32_t initialiseContext(void* ctx, const Site& site);
uint32_t initContext(void* ctx, const Site& site);

/// A question for a node's mark: its site and the highest node that may be asked for.
struct NodeCheck {
    Site site;
    uint8_t limit;
};

/// Refuses a null context and a node above the limit: no code, but no answer either.
bool mayAskForNode(const void* ctx, uint32_t node, const NodeCheck& check);
uint32_t checkContextNodeSet(void* ctx, uint32_t node, const NodeCheck& check);

/// Refuses a null context (2) and one that was not initialised (5).
uint32_t checkContext(void* ctx, const Site& site);
uint32_t lock(const Site& site);
/// Unlocks after an implementation that returned `result`, and says which of the two failed.
uint32_t unlock(uint32_t result, const Site& site);

/// A getter of a mapped parameter: all there is to know of it.
struct Mapped {
    Site site;
    uint16_t minimum;  ///< smallest buffer of a text getter
    uint8_t node;
};

/// Getters of mapped parameters; `i` is the instance, 1 where the object has none.
uint32_t getMapped(uint32_t i, void* out, const Mapped& mapped);
uint32_t getMapped(uint32_t i, char* buf, uint32_t len, const Mapped& mapped);

/// Getters that succeed and leave the output as it is.
uint32_t getInert(const void* out, const Site& site);
uint32_t getInert(const char* buf, uint32_t len, uint32_t minimum, const Site& site);

/// Refuses a null output, then locks.
uint32_t beginGet(const void* out, const Site& site);
/// Unlocks and logs "%s DONE" after success.
uint32_t endGet(uint32_t result, const Site& site);
/// Refuses a null or short buffer, then locks.
uint32_t beginGetText(const char* buf, uint32_t len, uint32_t minimum, const Site& site);
/// Enters an apply: checks the context and locks.
uint32_t beginApply(void* ctx, const Site& site);
/// Leaves an apply: unlocks and initialises the context again after success.
uint32_t endApply(void* ctx, uint32_t result, const Site& site);

template <typename Value>
[[gnu::noinline]] uint32_t get(Value* out, uint32_t (*impl)(Value*), const Site& site) {
    if (const uint32_t result = beginGet(out, site)) return result;
    return endGet(impl(out), site);
}

template <typename Value>
[[gnu::noinline]] uint32_t get(uint32_t i, Value* out, uint32_t (*impl)(uint32_t, Value*), const Site& site) {
    if (const uint32_t result = beginGet(out, site)) return result;
    return endGet(impl(i, out), site);
}

template <typename Value>
[[gnu::noinline]] uint32_t get(uint32_t i, uint32_t j, Value* out, uint32_t (*impl)(uint32_t, uint32_t, Value*),
                               const Site& site) {
    if (const uint32_t result = beginGet(out, site)) return result;
    return endGet(impl(i, j, out), site);
}

/// Text getters; `minimum` is the smallest buffer they take.
uint32_t get(uint32_t i, char* buf, uint32_t len, uint32_t (*impl)(uint32_t, char*, uint32_t), uint32_t minimum,
             const Site& site);
uint32_t get(uint32_t i, uint32_t j, char* buf, uint32_t len, uint32_t (*impl)(uint32_t, uint32_t, char*, uint32_t),
             uint32_t minimum, const Site& site);

/// The per-station getters take the station's MAC text; a null one is refused like a null output.
uint32_t getOfStation(uint32_t ap, const char* mac, int32_t* out, uint32_t (*impl)(uint32_t, const char*, int32_t*),
                      const Site& site);

/// The highest number of a setter that accepts all of them; no range ends so high.
inline constexpr uint8_t kNoLimit = 0xFF;

/// What a setter accepts: a range of numbers, or exact lengths of a text.
struct Accepted {
    uint8_t low = 0;
    uint8_t high = kNoLimit;
    uint8_t length = 0;   ///< when not 0, a text's length is this one or ...
    uint8_t length2 = 0;  ///< ... this one
};

namespace accepted {

inline constexpr Accepted any{};

constexpr Accepted range(uint8_t low, uint8_t high) {
    return {low, high, 0, 0};
}

constexpr Accepted lengths(uint8_t one, uint8_t other) {
    return {0, kNoLimit, one, other};
}

}  // namespace accepted

/// `accepted` with no number above `highest`.
constexpr Accepted atMost(Accepted accepted, uint8_t highest) {
    if (accepted.high > highest) accepted.high = highest;
    return accepted;
}

/// A staging setter: its site, the node it marks, the field it fills and what it accepts.
struct Staging {
    Site site;
    uint16_t node;
    uint16_t offset;
    uint16_t capacity;  ///< bytes of the field
    Accepted accepted;
};

uint32_t stageByte(void* ctx, uint32_t value, const Staging& staging);
uint32_t stageWord(void* ctx, uint32_t value, const Staging& staging);
uint32_t stageText(void* ctx, const char* src, uint32_t len, const Staging& staging);

}  // namespace quorvel

#pragma GCC visibility pop
