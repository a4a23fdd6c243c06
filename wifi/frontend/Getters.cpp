// The steps of the front ends as functions, and the getters that few calls pass through.
#include "wifi/frontend/FrontEnd.h"
#include "wifi/frontend/Steps.h"

namespace quorvel {

constinit const model::PackedTexts<kObjectCount, model::packedSize(kSourceFileNames)> kSourceFiles(kSourceFileNames);

void logEnter(const Site& site) {
    SiteLog(site).enter();
}

void logDone(const Site& site) {
    SiteLog(site).done();
}

uint32_t refuse(const Site& site, Result result) {
    const char* message = "Invalid input params";
    if (result == kInvalidContext) message = "Invalid context";
    if (result == kUninitContext) message = "Uninit context";
    if (result == kValueOutOfRange) message = "Value out of range";
    SiteLog(site).print(kLogError, message);
    return result;
}

void logResult(const Site& site, const char* format, uint32_t result) {
    SiteLog(site).print(kLogError, format, result);
}

uint32_t initContext(void* ctx, uint32_t size, const Site& site) {
    logEnter(site);
    if (ctx == nullptr) return refuse(site, kInvalidContext);
    logDone(site);
    return Quorvel_ContextInit(ctx, size);
}

bool mayAskForNode(const void* ctx, uint32_t node, uint32_t limit, const char* exceeded, const Site& site) {
    if (ctx != nullptr && node <= limit) return true;
    SiteLog(site).print(kLogError, ctx == nullptr ? "Invalid context" : exceeded);
    return false;
}

uint32_t steps::refuseNode(const void* ctx, uint32_t node, uint32_t limit, const Site& site) {
    return mayAskForNode(ctx, node, limit, "Exceeded subnodes", site) ? 1 : 0;
}

uint32_t steps::failToLock(uint32_t result, const Site& site) {
    logResult(site, "Lock failed, result %d", result);
    return result;
}

uint32_t steps::failToUnlock(uint32_t result, const Site& site) {
    logResult(site, "Unlock failed, result %d", result);
    return result;
}

uint32_t steps::leaveFailed(uint32_t result, const Site& site) {
    logResult(site, "Impl call failed, result %d", result);
    (void)WiFiUnlock();  // the implementation's failure is the one to report
    return result;
}

uint32_t checkContext(void* ctx, const Site& site) {
    return steps::check(ctx, site);
}

uint32_t lock(const Site& site) {
    return steps::take(site);
}

uint32_t unlock(uint32_t result, const Site& site) {
    return steps::leave(result, site);
}

uint32_t beginGet(const void* out, const Site& site) {
    return steps::begin(out, site, SiteLog(site));
}

uint32_t beginGetText(const char* buf, uint32_t len, uint32_t minimum, const Site& site) {
    return steps::beginText(buf, len, minimum, site, SiteLog(site));
}

uint32_t endGet(uint32_t result, const Site& site) {
    return steps::end(result, site, SiteLog(site));
}

uint32_t getInert(const void* out, const Site& site) {
    if (const uint32_t result = beginGet(out, site)) return result;
    return endGet(kSuccess, site);
}

uint32_t getInert(const char* buf, uint32_t len, const TextSite& site) {
    if (const uint32_t result = beginGetText(buf, len, site.minimum, site)) return result;
    return endGet(kSuccess, site);
}

uint32_t get(uint32_t i, char* buf, uint32_t len, uint32_t (*impl)(uint32_t, char*, uint32_t), const TextSite& site) {
    if (const uint32_t result = beginGetText(buf, len, site.minimum, site)) return result;
    return endGet(impl(i, buf, len), site);
}

uint32_t get(uint32_t i, uint32_t j, char* buf, uint32_t len, uint32_t (*impl)(uint32_t, uint32_t, char*, uint32_t),
             const TextSite& site) {
    if (const uint32_t result = beginGetText(buf, len, site.minimum, site)) return result;
    return endGet(impl(i, j, buf, len), site);
}

uint32_t get(uint32_t ap, const char* mac, int32_t* out, uint32_t (*impl)(uint32_t, const char*, int32_t*),
             const Site& site) {
    if (const uint32_t result = beginGet(mac == nullptr ? nullptr : out, site)) return result;
    return endGet(impl(ap, mac, out), site);
}

}  // namespace quorvel
