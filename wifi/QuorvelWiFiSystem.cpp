// System operations: fixed dimensions, the access-point slot table, and commands to the manager as a whole.
#include <wlcsm.h>

#include "wifi/Log.h"
#include "wifi/bridge/ManagerText.h"
#include "wifi/frontend/FrontEnd.h"

using quorvel::kAccessPoints;
using quorvel::kAccessPointsPerRadio;
using quorvel::kFailed;
using quorvel::kSuccess;

namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiSystem";

constexpr uint32_t kNoRadio = 0xFFFFFFFF;

// Which access point each radio's slots hold; 0 is a free slot. Read and written without a lock.
uint32_t slots[quorvel::kRadios][kAccessPointsPerRadio] = {
    {1, 2, 3, 4, 5, 6, 7, 8},
    {9, 10, 11, 12, 13, 14, 15, 16},
    {17, 18, 19, 20, 21, 22, 23, 24},
};

struct Slot {
    uint32_t radio;  // from 0
    uint32_t position;
    bool found;
};

Slot find(uint32_t ap) {
    // It is in one slot at most, mostly still its first.
    const uint32_t home = ap - 1;
    if (home < kAccessPoints && slots[home / kAccessPointsPerRadio][home % kAccessPointsPerRadio] == ap) {
        return {home / kAccessPointsPerRadio, home % kAccessPointsPerRadio, true};
    }
    for (uint32_t radio = 0; radio < quorvel::kRadios; ++radio) {
        for (uint32_t position = 0; position < kAccessPointsPerRadio; ++position) {
            if (slots[radio][position] == ap) return {radio, position, true};
        }
    }
    return {0, 0, false};
}

// These helpers log under the name of the operation that they work for.

bool isRadio(const char* function, uint32_t radio) {
    if (radio != 0 && radio <= quorvel::kRadios) return true;
    QUORVEL_LOG(Error, function, "Invalid input params radioIndex:%d WiFiSystemMaxNumberOfRadios():%d", radio,
                WiFiSystemMaxNumberOfRadios());
    return false;
}

bool isAccessPoint(const char* function, uint32_t ap) {
    if (ap != 0 && ap <= kAccessPoints) return true;
    QUORVEL_LOG(Error, function, "Invalid input params accessPointIndex:%d max:%d", ap, kAccessPoints);
    return false;
}

uint32_t lock(const char* function) {
    const uint32_t result = WiFiLock();
    if (result != 0) QUORVEL_LOG(Error, function, "Lock failed, result %d", result);
    return result;
}

uint32_t succeed(const char* function) {
    QUORVEL_LOG(Trace, function, "%s DONE", function);
    return kSuccess;
}

// Ends a locked operation: its failure, already logged, counts more than the unlock's.
uint32_t unlock(const char* function, bool failed) {
    const uint32_t result = WiFiUnlock();
    if (failed) return kFailed;
    if (result == 0) return succeed(function);
    QUORVEL_LOG(Error, function, "Unlock failed, result %d", result);
    return result;
}

uint32_t failWithoutMatch(const char* function) {
    QUORVEL_LOG(Error, function, "No access point match found");
    return kFailed;
}

}  // namespace

uint32_t WiFiSystemMaxNumberOfRadios(void) {
    return quorvel::kRadios;
}

uint32_t WiFiSystemMaxNumberOfAccessPointsPerRadio(void) {
    return kAccessPointsPerRadio;
}

uint32_t WiFiSystemInit(void) {
    if (const uint32_t result = lock(__func__)) return result;
    const bool failed = wlcsm_mngr_wifi_hal_started(0, 10, 1) == 0;
    if (failed) QUORVEL_LOG(Error, __func__, "wlcsm_mngr_run_cmd - WLCSM_MNGR_CMD_WIFI_HAL_STARTED, FAIL.");
    return unlock(__func__, failed);
}

uint32_t WiFiSystemStartStopSecurityDaemons(uint32_t start, uint32_t index) {
    constexpr uint32_t kStart = 7;
    constexpr uint32_t kStop = 8;
    if (const uint32_t result = lock(__func__)) return result;
    const bool failed = wlcsm_mngr_start_stop_services(index, 0, 1, start != 0 ? kStart : kStop) == 0;
    if (failed) QUORVEL_LOG(Error, __func__, "wlcsm_mngr_start_stop_security_daemons: FAIL.");
    return unlock(__func__, failed);
}

uint32_t WiFiSystemReset(void) {
    return succeed(__func__);
}

uint32_t WiFiSystemResetToFactory(void) {
    return succeed(__func__);
}

uint32_t WiFiSystemRadioInit(uint32_t radio) {
    if (!isRadio(__func__, radio)) return kFailed;
    if (const uint32_t result = lock(__func__)) return result;
    const bool failed = wlcsm_mngr_restart(radio - 1, 0, 0, 1) == 0;
    if (failed) QUORVEL_LOG(Error, __func__, "wlcsm_mngr_restart: radio[%d], FAIL.", radio - 1);
    return unlock(__func__, failed);
}

uint32_t WiFiSystemResetRadioToFactory(uint32_t radio) {
    if (!isRadio(__func__, radio)) return kFailed;
    if (const uint32_t result = lock(__func__)) return result;
    const bool failed = wlcsm_mngr_set(radio - 1, 0, "wlResetRadio", "1") != 0;
    if (failed) QUORVEL_LOG(Error, __func__, "wlcsm_mngr_set wlResetRadio FAIL, radio[%d]", radio - 1);
    return unlock(__func__, failed);
}

uint32_t WiFiSystemResetRadiosToFactory(void) {
    for (uint32_t radio = 1; radio <= WiFiSystemMaxNumberOfRadios(); ++radio) {
        const uint32_t result = WiFiSystemResetRadioToFactory(radio);
        if (result == 0) continue;
        QUORVEL_LOG(Error, __func__, "WiFiSystemResetRadioToFactory FAIL result %d", result);
        return result;
    }
    return succeed(__func__);
}

uint32_t WiFiSystemAccessPointRadioInstanceGet(uint32_t ap) {
    if (!isAccessPoint(__func__, ap)) return kNoRadio;
    const Slot slot = find(ap);
    if (!slot.found) {
        (void)failWithoutMatch(__func__);
        return kNoRadio;
    }
    (void)succeed(__func__);
    return slot.radio + 1;
}

uint32_t WiFiSystemAccessPointDelete(uint32_t ap) {
    if (!isAccessPoint(__func__, ap)) return kFailed;
    const Slot slot = find(ap);
    if (!slot.found) return failWithoutMatch(__func__);
    slots[slot.radio][slot.position] = 0;
    return succeed(__func__);
}

uint32_t WiFiSystemAccessPointCreate(uint32_t radio, uint32_t ap) {
    if (!isRadio(__func__, radio)) return kFailed;
    if (!isAccessPoint(__func__, ap)) return kFailed;
    (void)WiFiSystemAccessPointDelete(ap);  // it may be in no slot
    for (uint32_t& slot : slots[radio - 1]) {
        if (slot != 0) continue;
        slot = ap;
        return succeed(__func__);
    }
    // Quirk: in a full row the access point stays without a slot.
    return failWithoutMatch(__func__);
}

uint32_t WiFiSystemResetAccessPointToFactory(uint32_t ap) {
    // Quirk: looked up before the lock and not checked; the manager answers for an unknown access point.
    const uint32_t radio = WiFiSystemAccessPointRadioInstanceGet(ap);
    // Quirk: its position follows its number, not the slot that it may have been moved to.
    const uint32_t sub = quorvel::subIndex(ap);
    if (const uint32_t result = lock(__func__)) return result;
    const bool failed = wlcsm_mngr_set(radio - 1, sub, "wlResetAP", "1") != 0;
    if (failed) {
        QUORVEL_LOG(Error, __func__, "wlcsm_mngr_set wlResetAP FAIL, radio[%d] accessPointIndex[%d]", radio - 1, sub);
    }
    return unlock(__func__, failed);
}

// The system object's front ends. It has no parameters and so no definition.

namespace {
constexpr uint32_t kContextSize = quorvel::kContextSizes[quorvel::kWiFiSystemObject];
}

uint32_t WiFiSystemInitContext(void* ctx) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiSystemObject, __func__);
    return quorvel::initContext(ctx, kContextSize, site);
}

uint32_t WiFiSystemCheckContextNodeSet(void* ctx, uint32_t node) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiSystemObject, __func__);
    return quorvel::checkContextNodeSet(ctx, node, 0, site) != 0 ? 1 : 0;
}

uint32_t WiFiSystemApplyContext(void* ctx) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiSystemObject, __func__);
    uint32_t result = quorvel::beginApply(ctx, site);
    if (result != 0) return result;
    result = quorvel::unlock(WiFiSystemApplyContextImpl(ctx), site);
    if (result != 0) return result;
    // Quirk: clears the marks instead of initialising the context again.
    (void)Quorvel_ContextZeroSetMap(ctx);
    quorvel::logDone(site);
    return kSuccess;
}

uint32_t WiFiSystemApplyContextImpl(void*) {
    return kSuccess;
}

uint32_t WiFiSystemInstanceGet(void* ctx) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiSystemObject, __func__);
    quorvel::logEnter(site);
    (void)Quorvel_ContextInit(ctx, kContextSize);  // a context that the host refuses stays unchanged
    quorvel::logDone(site);
    return kSuccess;
}
