// The steps of the front ends, for the functions that most calls pass through: compiled into them, so that a site's
// words are looked up once. FrontEnd.h declares the same steps as functions.
#pragma once

#include <cstdint>

#include "wifi/QuorvelWiFiExports.h"
#include "wifi/Result.h"
#include "wifi/frontend/FrontEnd.h"
#include "wifi/frontend/SiteLog.h"

namespace quorvel::steps {

// The steps of calls that fail are functions of their own, so that their words are in the file once.

/// Refuses a null context, or a node above `limit`. Returns 0: not marked. The arguments are in the registers that they
/// have in its caller.
[[gnu::noinline, gnu::visibility("hidden")]] uint32_t refuseNode(const void* ctx, uint32_t node, uint32_t limit,
                                                                 const Site& site);
/// Log the failure of the lock or its release and return its code, which is `result`.
[[gnu::noinline, gnu::visibility("hidden")]] uint32_t failToLock(uint32_t result, const Site& site);
[[gnu::noinline, gnu::visibility("hidden")]] uint32_t failToUnlock(uint32_t result, const Site& site);
/// Unlocks after an implementation that failed with `result`, which is the failure to report.
[[gnu::noinline, gnu::visibility("hidden")]] uint32_t leaveFailed(uint32_t result, const Site& site);

[[gnu::always_inline]] inline uint32_t check(void* ctx, const Site& site) {
    if (ctx == nullptr) return refuse(site, kInvalidContext);
    if (kPlatform.isContextInit(ctx) != 0) return refuse(site, kUninitContext);
    return kSuccess;
}

[[gnu::always_inline]] inline uint32_t take(const Site& site) {
    const uint32_t result = WiFiLock();
    return result == 0 ? kSuccess : failToLock(result, site);
}

[[gnu::always_inline]] inline uint32_t leave(uint32_t result, const Site& site) {
    if (result != 0) return leaveFailed(result, site);
    result = WiFiUnlock();
    return result == 0 ? kSuccess : failToUnlock(result, site);
}

[[gnu::always_inline]] inline uint32_t begin(const void* out, const Site& site, const SiteLog& log) {
    log.enter();
    if (out == nullptr) return refuse(site, kInvalidInput);
    return take(site);
}

[[gnu::always_inline]] inline uint32_t beginText(const char* buf, uint32_t len, uint32_t minimum, const Site& site,
                                                 const SiteLog& log) {
    log.enter();
    if (buf == nullptr) return refuse(site, kInvalidInput);
    if (len < minimum) return refuse(site, kValueOutOfRange);
    return take(site);
}

[[gnu::always_inline]] inline uint32_t end(uint32_t result, const Site& site, const SiteLog& log) {
    result = leave(result, site);
    if (result == 0) log.done();
    return result;
}

}  // namespace quorvel::steps
