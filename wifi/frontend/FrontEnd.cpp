#include "wifi/frontend/FrontEnd.h"

#include "wifi/bridge/Mapped.h"

namespace quorvel {
namespace {

// Source files by object index.
constexpr const char* kFiles[kObjectCount] = {
    "wifi/QuorvelWiFiSystem",
#define OBJECT_ROW(prefix, ...) "wifi/Quorvel" #prefix,
#include "wifi/model/DataModel.def"
};

const char* nameOf(const Site& site) {
    return reinterpret_cast<const char*>(&site) + site.nameAt;
}

template <typename... Values>
void log(const Site& site, LogLevel level, const char* format, Values... values) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    Quorvel_LogPrint(level, kFiles[site.object], nameOf(site), site.line, format, values...);
#pragma GCC diagnostic pop
}

}  // namespace

void logEnter(const Site& site) {
    log(site, kLogTrace, "%s Enter", nameOf(site));
}

void logDone(const Site& site) {
    log(site, kLogTrace, "%s DONE", nameOf(site));
}

uint32_t refuse(const Site& site, Result result, const char* message) {
    log(site, kLogError, message);
    return result;
}

void logResult(const Site& site, const char* format, uint32_t result) {
    log(site, kLogError, format, result);
}

uint32_t initContext(void* ctx, uint32_t size, const Site& site) {
    logEnter(site);
    if (ctx == nullptr) return refuse(site, kInvalidContext, "Invalid context");
    logDone(site);
    return Quorvel_ContextInit(ctx, size);
}

bool mayAskForNode(const void* ctx, uint32_t node, uint32_t limit, const char* exceeded, const Site& site) {
    if (ctx != nullptr && node <= limit) return true;
    log(site, kLogError, ctx == nullptr ? "Invalid context" : exceeded);
    return false;
}

[[gnu::flatten]] uint32_t checkContextNodeSet(void* ctx, uint32_t node, uint32_t limit, const Site& site) {
    if (!mayAskForNode(ctx, node, limit, "Exceeded subnodes", site)) return 0;
    logDone(site);
    return Quorvel_IsContextSetMap(ctx, node);
}

uint32_t checkContext(void* ctx, const Site& site) {
    if (ctx == nullptr) return refuse(site, kInvalidContext, "Invalid context");
    if (Quorvel_IsContextInit(ctx) != 0) return refuse(site, kUninitContext, "Uninit context");
    return kSuccess;
}

uint32_t lock(const Site& site) {
    const uint32_t result = WiFiLock();
    if (result != 0) logResult(site, "Lock failed, result %d", result);
    return result;
}

uint32_t unlock(uint32_t result, const Site& site) {
    if (result != 0) {
        logResult(site, "Impl call failed, result %d", result);
        (void)WiFiUnlock();  // the implementation's failure is the one to report
        return result;
    }
    result = WiFiUnlock();
    if (result != 0) logResult(site, "Unlock failed, result %d", result);
    return result;
}

uint32_t beginGet(const void* out, const Site& site) {
    logEnter(site);
    if (out == nullptr) return refuse(site, kInvalidInput, "Invalid input params");
    return lock(site);
}

uint32_t beginGetText(const char* buf, uint32_t len, uint32_t minimum, const Site& site) {
    logEnter(site);
    if (buf == nullptr) return refuse(site, kInvalidInput, "Invalid input params");
    if (len < minimum) return refuse(site, kValueOutOfRange, "Value out of range");
    return lock(site);
}

uint32_t endGet(uint32_t result, const Site& site) {
    result = unlock(result, site);
    if (result == 0) logDone(site);
    return result;
}

uint32_t beginApply(void* ctx, const Site& site) {
    logEnter(site);
    if (const uint32_t result = checkContext(ctx, site)) return result;
    return lock(site);
}

uint32_t endApply(void* ctx, uint32_t result, uint32_t size, const Site& site) {
    result = unlock(result, site);
    if (result != 0) return result;
    (void)Quorvel_ContextInit(ctx, size);  // the values are written: a host that refuses the context changes nothing
    logDone(site);
    return kSuccess;
}

[[gnu::flatten]] uint32_t getMapped(uint32_t i, void* out, const MappedSite& site) {
    if (const uint32_t result = beginGet(out, site)) return result;
    return endGet(readMapped(site.row, i, out), site);
}

[[gnu::flatten]] uint32_t getMapped(uint32_t i, char* buf, uint32_t len, const MappedSite& site) {
    if (const uint32_t result = beginGetText(buf, len, site.minimum, site)) return result;
    return endGet(readMapped(site.row, i, buf, len), site);
}

uint32_t getInert(const void* out, const Site& site) {
    if (const uint32_t result = beginGet(out, site)) return result;
    return endGet(kSuccess, site);
}

uint32_t getInert(const char* buf, uint32_t len, const TextSite& site) {
    if (const uint32_t result = beginGetText(buf, len, site.minimum, site)) return result;
    return endGet(kSuccess, site);
}

uint32_t get(uint32_t (*impl)(uint32_t, char*, uint32_t), const TextSite& site, uint32_t i, char* buf, uint32_t len) {
    if (const uint32_t result = beginGetText(buf, len, site.minimum, site)) return result;
    return endGet(impl(i, buf, len), site);
}

uint32_t get(uint32_t (*impl)(uint32_t, uint32_t, char*, uint32_t), const TextSite& site, uint32_t i, uint32_t j,
             char* buf, uint32_t len) {
    if (const uint32_t result = beginGetText(buf, len, site.minimum, site)) return result;
    return endGet(impl(i, j, buf, len), site);
}

uint32_t get(uint32_t (*impl)(uint32_t, const char*, int32_t*), const Site& site, uint32_t ap, const char* mac,
             int32_t* out) {
    if (const uint32_t result = beginGet(mac == nullptr ? nullptr : out, site)) return result;
    return endGet(impl(ap, mac, out), site);
}

}  // namespace quorvel
