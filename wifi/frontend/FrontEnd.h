// The steps of all front ends: check the arguments, lock, call, unlock, log.
#pragma once

#include <quorvel.h>

#include <cstddef>
#include <cstdint>

#include "wifi/Log.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/Result.h"
#include "wifi/frontend/Site.h"
#include "wifi/model/Mapping.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// Log `text` with the function's name at level 3 ("%s Enter", "%s DONE").
void logEnter(const Site& site);
void logDone(const Site& site);
/// Logs at level 0 why a call is refused and returns `result`.
[[nodiscard]] uint32_t refuse(const Site& site, Result result);
/// Logs `format` with `result` at level 0.
void logResult(const Site& site, const char* format, uint32_t result);

/// InitContext of an object whose contexts have `size` bytes. Returns 2 for a null context, else the host's code.
[[nodiscard]] uint32_t initContext(void* ctx, uint32_t size, const Site& site);

/// Refuses a null context, and, with the message `exceeded`, a node above `limit`. Returns whether the node may be
/// asked for.
[[nodiscard]] bool mayAskForNode(const void* ctx, uint32_t node, uint32_t limit, const char* exceeded,
                                 const Site& site);
/// CheckContextNodeSet: a truth value.
[[nodiscard]] uint32_t checkContextNodeSet(void* ctx, uint32_t node, uint32_t limit, const Site& site);

/// Refuses a null context (2) and one that was not initialised (5).
[[nodiscard]] uint32_t checkContext(void* ctx, const Site& site);
/// Locks. Returns the lock's code, which it logs when it is a failure.
[[nodiscard]] uint32_t lock(const Site& site);
/// Unlocks after an implementation that returned `result`. Logs which of the two failed and returns its code.
[[nodiscard]] uint32_t unlock(uint32_t result, const Site& site);

/// Refuses a null output (6), then locks.
[[nodiscard]] uint32_t beginGet(const void* out, const Site& site);
/// Refuses a null buffer (6) or one shorter than `minimum` (8), then locks.
[[nodiscard]] uint32_t beginGetText(const char* buf, uint32_t len, uint32_t minimum, const Site& site);
/// Unlocks and logs "%s DONE" after success.
[[nodiscard]] uint32_t endGet(uint32_t result, const Site& site);

/// Enters an apply: checks the context and locks.
[[nodiscard]] uint32_t beginApply(void* ctx, const Site& site);
/// Leaves an apply: unlocks and, after success, initialises the context of `size` bytes again.
[[nodiscard]] uint32_t endApply(void* ctx, uint32_t result, uint32_t size, const Site& site);

/// A function of an object whose contexts have `size` bytes.
struct ContextSite : Site {
    uint16_t size;
};

/// Applies of the pattern: their own arguments first, which stay in their registers.
[[nodiscard]] uint32_t apply(void* ctx, uint32_t (*impl)(void*), const ContextSite& site);
[[nodiscard]] uint32_t apply(void* ctx, uint32_t i, uint32_t (*impl)(void*, uint32_t), const ContextSite& site);
[[nodiscard]] uint32_t apply(void* ctx, uint32_t i, uint32_t j, uint32_t (*impl)(void*, uint32_t, uint32_t),
                             const ContextSite& site);

/// A getter of a text; `minimum` is the smallest buffer that it takes.
struct TextSite : Site {
    uint16_t minimum;
};

/// A getter of a mapped parameter.
struct MappedSite : TextSite {
    OwnRow row;
};

/// Getters of mapped parameters; `i` is the instance, 1 where the object has none.
[[nodiscard]] uint32_t getMapped(uint32_t i, void* out, const MappedSite& site);
[[nodiscard]] uint32_t getMapped(uint32_t i, char* buf, uint32_t len, const MappedSite& site);

/// Getters that succeed and leave the output unchanged.
[[nodiscard]] uint32_t getInert(const void* out, const Site& site);
[[nodiscard]] uint32_t getInert(const char* buf, uint32_t len, const TextSite& site);

/// Getters that call an implementation function, with their own arguments first, which stay in their registers. The
/// overloads are by what the function takes.
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
[[nodiscard]] uint32_t get(uint32_t i, char* buf, uint32_t len, uint32_t (*impl)(uint32_t, char*, uint32_t),
                           const TextSite& site);
[[nodiscard]] uint32_t get(uint32_t i, uint32_t j, char* buf, uint32_t len,
                           uint32_t (*impl)(uint32_t, uint32_t, char*, uint32_t), const TextSite& site);
/// The getters of one station take its MAC text; a null one is refused like a null output.
[[nodiscard]] uint32_t get(uint32_t ap, const char* mac, int32_t* out,
                           uint32_t (*impl)(uint32_t, const char*, int32_t*), const Site& site);

}  // namespace quorvel

#pragma GCC visibility pop
