#include "wifi/FrontEnd.h"

#include <cstring>

#include "wifi/QuorvelWiFiInternal.h"

// What most calls pass through is one piece where code may be large.
#ifdef __OPTIMIZE_SIZE__
#define QUORVEL_IN_ONE_PIECE
#define QUORVEL_IN_PLACE
#else
#define QUORVEL_IN_ONE_PIECE [[gnu::flatten]]
#define QUORVEL_IN_PLACE [[gnu::always_inline]] inline
#endif

namespace quorvel {
namespace {

struct Object {
    const char* file;
    uint16_t contextSize;
};

// By object index; the system object has no row in the definitions.
constexpr Object kObjects[kObjectCount] = {
    {"wifi/QuorvelWiFiSystem", kContextHeaderSize},
#define OBJECT(index, path, parameters, contextSize, ...) {"wifi/Quorvel" QUORVEL_TEXT(THIS_OBJECT), contextSize},
#include "wifi/QuorvelWiFiDataModel.def"
};

template <typename... Values>
void log(const Site& site, LogLevel level, const char* function, const char* format, Values... values) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
    Quorvel_LogPrint(level, kObjects[site.object].file, function, site.line, format, values...);
#pragma GCC diagnostic pop
}

// Logs a format that takes the function's name.
QUORVEL_IN_PLACE void logTrace(const Site& site, const char* format) {
    const FunctionText function = functionOf(site);
    log(site, kLogTrace, function.text(), format, function.text());
}

}  // namespace

FunctionText functionOf(const Site& site) {
    return {site, kObjects[site.object].file};
}

#ifdef QUORVEL_COMPOSED_NAMES
FunctionText::FunctionText(const Site& site, const char* file) {
    char* end = stpcpy(text_, file + kFileStem.size());
    if (site.name.entry != FunctionName::kNoEntry) {
        end = stpcpy(end, gQuorvelWiFiDataModelTable.entries[site.name.entry].words[kNameWord].text);
    }
    stpcpy(end, kEndings + site.name.ending);
}
#endif

void logEnter(const Site& site) {
    logTrace(site, "%s Enter");
}

void logDone(const Site& site) {
    logTrace(site, "%s DONE");
}

uint32_t refuse(const Site& site, Result result, const char* message) {
    log(site, kLogError, functionOf(site).text(), message);
    return result;
}

void logResult(const Site& site, const char* format, uint32_t result) {
    log(site, kLogError, functionOf(site).text(), format, result);
}

uint32_t initialiseContext(void* ctx, const Site& site) {
    return Quorvel_ContextInit(ctx, kObjects[site.object].contextSize);
}

uint32_t initContext(void* ctx, const Site& site) {
    logEnter(site);
    if (ctx == nullptr) return refuse(site, kInvalidContext, "Invalid context");
    logDone(site);
    return initialiseContext(ctx, site);
}

bool mayAskForNode(const void* ctx, uint32_t node, const NodeCheck& check) {
    if (ctx == nullptr) {
        (void)refuse(check.site, kInvalidContext, "Invalid context");
        return false;
    }
    if (node > check.limit) {
        // The top-level object has nodes, the others have subnodes: meant.
        const bool topLevel = check.site.object == kWiFiObject;
        (void)refuse(check.site, kValueOutOfRange, topLevel ? "Exceeded nodes" : "Exceeded subnodes");
        return false;
    }
    return true;
}

QUORVEL_IN_ONE_PIECE uint32_t checkContextNodeSet(void* ctx, uint32_t node, const NodeCheck& check) {
    if (!mayAskForNode(ctx, node, check)) return 0;
    logDone(check.site);
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

uint32_t endGet(uint32_t result, const Site& site) {
    result = unlock(result, site);
    if (result == 0) logDone(site);
    return result;
}

uint32_t beginGetText(const char* buf, uint32_t len, uint32_t minimum, const Site& site) {
    logEnter(site);
    if (buf == nullptr) return refuse(site, kInvalidInput, "Invalid input params");
    if (len < minimum) return refuse(site, kValueOutOfRange, "Value out of range");
    return lock(site);
}

QUORVEL_IN_ONE_PIECE uint32_t getMapped(uint32_t i, void* out, const Mapped& mapped) {
    const Site& site = mapped.site;
    if (const uint32_t result = beginGet(out, site)) return result;
    return endGet(readMapped(site.object, i, mapped.node, out), site);
}

QUORVEL_IN_ONE_PIECE uint32_t getMapped(uint32_t i, char* buf, uint32_t len, const Mapped& mapped) {
    const Site& site = mapped.site;
    if (const uint32_t result = beginGetText(buf, len, mapped.minimum, site)) return result;
    return endGet(readMapped(site.object, i, mapped.node, buf, len), site);
}

uint32_t getInert(const void* out, const Site& site) {
    if (const uint32_t result = beginGet(out, site)) return result;
    return endGet(kSuccess, site);
}

uint32_t getInert(const char* buf, uint32_t len, uint32_t minimum, const Site& site) {
    if (const uint32_t result = beginGetText(buf, len, minimum, site)) return result;
    return endGet(kSuccess, site);
}

uint32_t get(uint32_t i, char* buf, uint32_t len, uint32_t (*impl)(uint32_t, char*, uint32_t), uint32_t minimum,
             const Site& site) {
    if (const uint32_t result = beginGetText(buf, len, minimum, site)) return result;
    return endGet(impl(i, buf, len), site);
}

uint32_t get(uint32_t i, uint32_t j, char* buf, uint32_t len, uint32_t (*impl)(uint32_t, uint32_t, char*, uint32_t),
             uint32_t minimum, const Site& site) {
    if (const uint32_t result = beginGetText(buf, len, minimum, site)) return result;
    return endGet(impl(i, j, buf, len), site);
}

uint32_t getOfStation(uint32_t ap, const char* mac, int32_t* out, uint32_t (*impl)(uint32_t, const char*, int32_t*),
                      const Site& site) {
    if (const uint32_t result = beginGet(mac == nullptr ? nullptr : out, site)) return result;
    return endGet(impl(ap, mac, out), site);
}

uint32_t beginApply(void* ctx, const Site& site) {
    logEnter(site);
    if (const uint32_t result = checkContext(ctx, site)) return result;
    return lock(site);
}

uint32_t endApply(void* ctx, uint32_t result, const Site& site) {
    result = unlock(result, site);
    if (result != 0) return result;
    // The values are written: what becomes of the context is the host's affair.
    (void)initialiseContext(ctx, site);
    logDone(site);
    return kSuccess;
}

namespace {

uint32_t beginStaging(void* ctx, const Site& site) {
    logEnter(site);
    return checkContext(ctx, site);
}

uint32_t endStaging(void* ctx, const Staging& staging) {
    (void)Quorvel_ContextSetMap(ctx, staging.node);  // an initialised context takes every node
    logDone(staging.site);
    return kSuccess;
}

uint32_t stageNumber(void* ctx, uint32_t value, const Staging& staging, size_t width) {
    if (const uint32_t result = beginStaging(ctx, staging.site)) return result;
    const Accepted& accepted = staging.accepted;
    if (value < accepted.low || (value > accepted.high && accepted.high != kNoLimit)) {
        return refuse(staging.site, kValueOutOfRange, "Value out of range");
    }
    char* field = static_cast<char*>(ctx) + staging.offset;
    if (width == 1) {
        *field = static_cast<char>(value);
    } else {
        memcpy(field, &value, sizeof value);
    }
    return endStaging(ctx, staging);
}

bool lengthAccepted(const char* src, uint32_t len, const Staging& staging) {
    if (len > staging.capacity) return false;
    if (staging.accepted.length == 0) return true;
    const size_t length = strnlen(src, len);
    return length == staging.accepted.length || length == staging.accepted.length2;
}

}  // namespace

uint32_t stageByte(void* ctx, uint32_t value, const Staging& staging) {
    return stageNumber(ctx, value, staging, 1);
}

uint32_t stageWord(void* ctx, uint32_t value, const Staging& staging) {
    return stageNumber(ctx, value, staging, 4);
}

uint32_t stageText(void* ctx, const char* src, uint32_t len, const Staging& staging) {
    if (const uint32_t result = beginStaging(ctx, staging.site)) return result;
    if (src == nullptr) return refuse(staging.site, kInvalidInput, "Invalid input params");
    if (!lengthAccepted(src, len, staging)) return refuse(staging.site, kValueOutOfRange, "Value out of range");
    // The whole field is the new text: a text that fills it has no terminator, a shorter one leaves nothing behind it.
    char* field = static_cast<char*>(ctx) + staging.offset;
    const size_t length = strnlen(src, len);
    memcpy(field, src, length);
    memset(field + length, 0, staging.capacity - length);
    return endStaging(ctx, staging);
}

}  // namespace quorvel
