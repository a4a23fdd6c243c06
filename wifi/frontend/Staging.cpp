#include "wifi/frontend/Staging.h"

#include <cstring>

#include "wifi/frontend/Steps.h"

namespace quorvel {
namespace {

[[gnu::always_inline]] inline uint32_t beginStaging(void* ctx, const Site& site, const SiteLog& log) {
    log.enter();
    return steps::check(ctx, site);
}

[[gnu::always_inline]] inline uint32_t endStaging(void* ctx, const StagingSite& site, const SiteLog& log) {
    (void)kPlatform.contextSetMap(ctx, site.node);  // an initialised context takes every node
    log.done();
    return kSuccess;
}

char* fieldOf(void* ctx, const StagingSite& site) {
    return static_cast<char*>(ctx) + site.offset;
}

[[gnu::always_inline]] inline uint32_t storeWord(void* ctx, uint32_t value, const StagingSite& site,
                                                 const SiteLog& log) {
    memcpy(fieldOf(ctx, site), &value, sizeof value);
    return endStaging(ctx, site, log);
}

// Refuses a null text and one that is longer than the field.
uint32_t beginStagingText(void* ctx, const char* src, uint32_t len, const TextStagingSite& site, const SiteLog& log) {
    if (const uint32_t result = beginStaging(ctx, site, log)) return result;
    if (src == nullptr) return refuse(site, kInvalidInput);
    if (len > site.capacity) return refuse(site, kValueOutOfRange);
    return kSuccess;
}

}  // namespace

uint32_t stageBoolean(void* ctx, uint32_t, uint32_t value, const StagingSite& site) {
    const SiteLog log(site);
    if (const uint32_t result = beginStaging(ctx, site, log)) return result;
    if (value > 1) return refuse(site, kValueOutOfRange);
    *fieldOf(ctx, site) = static_cast<char>(value);
    return endStaging(ctx, site, log);
}

uint32_t stageWord(void* ctx, uint32_t, uint32_t value, const StagingSite& site) {
    const SiteLog log(site);
    if (const uint32_t result = beginStaging(ctx, site, log)) return result;
    return storeWord(ctx, value, site, log);
}

uint32_t stageWordInRange(void* ctx, uint32_t, uint32_t value, const RangeStagingSite& site) {
    const SiteLog log(site);
    if (const uint32_t result = beginStaging(ctx, site, log)) return result;
    if (value < site.low || value > site.high) return refuse(site, kValueOutOfRange);
    return storeWord(ctx, value, site, log);
}

uint32_t stageText(void* ctx, const char* src, uint32_t len, const TextStagingSite& site) {
    const SiteLog log(site);
    if (const uint32_t result = beginStagingText(ctx, src, len, site, log)) return result;
    fillField(fieldOf(ctx, site), site.capacity, src, len);
    return endStaging(ctx, site, log);
}

uint32_t stageTextOfLength(void* ctx, const char* src, uint32_t len, const LengthStagingSite& site) {
    const SiteLog log(site);
    if (const uint32_t result = beginStagingText(ctx, src, len, site, log)) return result;
    const size_t length = strnlen(src, len);
    if (length != site.one && length != site.other) return refuse(site, kValueOutOfRange);
    fillField(fieldOf(ctx, site), site.capacity, src, len);
    return endStaging(ctx, site, log);
}

void fillField(char* field, size_t capacity, const char* src, size_t len) {
    const size_t length = strnlen(src, len);
    memcpy(field, src, length);
    memset(field + length, 0, capacity - length);
}

}  // namespace quorvel
