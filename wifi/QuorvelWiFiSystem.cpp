// System operations: fixed dimensions, the access-point slot table, and commands to the manager as a whole.
#include <wlcsm.h>

#include "QuorvelWiFiInternal.h"

using quorvel::kFailed;
using quorvel::kSuccess;

namespace {

constexpr char kLogFile[] = "wifi/QuorvelWiFiSystem";

constexpr uint32_t kAccessPointsPerRadio = 8;
constexpr uint32_t kAccessPoints = quorvel::kRadios * kAccessPointsPerRadio;
constexpr uint32_t kNoRadio = 0xFFFFFFFF;

// Which access point each radio's slots hold; 0 is a free slot. Read and written without a lock, as the host is told.
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

}  // namespace

// The checks log under the name of the operation that makes them.
#define QUORVEL_REFUSE_RADIO(radio, result)                                                             \
    if ((radio) == 0 || (radio) > quorvel::kRadios) {                                                   \
        QUORVEL_LOG_ERROR("Invalid input params radioIndex:%d WiFiSystemMaxNumberOfRadios():%d", radio, \
                          WiFiSystemMaxNumberOfRadios());                                               \
        return result;                                                                                  \
    }
#define QUORVEL_REFUSE_ACCESS_POINT(ap, result)                                                  \
    if ((ap) == 0 || (ap) > kAccessPoints) {                                                     \
        QUORVEL_LOG_ERROR("Invalid input params accessPointIndex:%d max:%d", ap, kAccessPoints); \
        return result;                                                                           \
    }
#define QUORVEL_LOCK()                                       \
    if (const uint32_t result = WiFiLock()) {                \
        QUORVEL_LOG_ERROR("Lock failed, result %d", result); \
        return result;                                       \
    }
// Ends a locked operation: its failure, already logged, counts more than the unlock's.
#define QUORVEL_UNLOCK(failed)                                 \
    if (failed) {                                              \
        (void)WiFiUnlock();                                    \
        return kFailed;                                        \
    }                                                          \
    if (const uint32_t result = WiFiUnlock()) {                \
        QUORVEL_LOG_ERROR("Unlock failed, result %d", result); \
        return result;                                         \
    }                                                          \
    QUORVEL_LOG_DONE();                                        \
    return kSuccess

uint32_t WiFiSystemMaxNumberOfRadios(void) {
    return quorvel::kRadios;
}

uint32_t WiFiSystemMaxNumberOfAccessPointsPerRadio(void) {
    return kAccessPointsPerRadio;
}

uint32_t WiFiSystemInit(void) {
    QUORVEL_LOCK();
    const bool failed = wlcsm_mngr_wifi_hal_started(0, 10, 1) == 0;
    if (failed) QUORVEL_LOG_ERROR("wlcsm_mngr_run_cmd - WLCSM_MNGR_CMD_WIFI_HAL_STARTED, FAIL.");
    QUORVEL_UNLOCK(failed);
}

uint32_t WiFiSystemStartStopSecurityDaemons(uint32_t start, uint32_t index) {
    constexpr uint32_t kStart = 7;
    constexpr uint32_t kStop = 8;
    QUORVEL_LOCK();
    const bool failed = wlcsm_mngr_start_stop_services(index, 0, 1, start != 0 ? kStart : kStop) == 0;
    if (failed) QUORVEL_LOG_ERROR("wlcsm_mngr_start_stop_security_daemons: FAIL.");
    QUORVEL_UNLOCK(failed);
}

uint32_t WiFiSystemReset(void) {
    QUORVEL_LOG_DONE();
    return kSuccess;
}

uint32_t WiFiSystemResetToFactory(void) {
    QUORVEL_LOG_DONE();
    return kSuccess;
}

uint32_t WiFiSystemRadioInit(uint32_t radio) {
    QUORVEL_REFUSE_RADIO(radio, kFailed);
    QUORVEL_LOCK();
    const bool failed = wlcsm_mngr_restart(radio - 1, 0, 0, 1) == 0;
    if (failed) QUORVEL_LOG_ERROR("wlcsm_mngr_restart: radio[%d], FAIL.", radio - 1);
    QUORVEL_UNLOCK(failed);
}

uint32_t WiFiSystemResetRadioToFactory(uint32_t radio) {
    QUORVEL_REFUSE_RADIO(radio, kFailed);
    QUORVEL_LOCK();
    const bool failed = wlcsm_mngr_set(radio - 1, 0, "wlResetRadio", "1") != 0;
    if (failed) QUORVEL_LOG_ERROR("wlcsm_mngr_set wlResetRadio FAIL, radio[%d]", radio - 1);
    QUORVEL_UNLOCK(failed);
}

uint32_t WiFiSystemResetRadiosToFactory(void) {
    for (uint32_t radio = 1; radio <= WiFiSystemMaxNumberOfRadios(); ++radio) {
        const uint32_t result = WiFiSystemResetRadioToFactory(radio);
        if (result == 0) continue;
        QUORVEL_LOG_ERROR("WiFiSystemResetRadioToFactory FAIL result %d", result);
        return result;
    }
    QUORVEL_LOG_DONE();
    return kSuccess;
}

uint32_t WiFiSystemAccessPointRadioInstanceGet(uint32_t ap) {
    QUORVEL_REFUSE_ACCESS_POINT(ap, kNoRadio);
    const Slot slot = find(ap);
    if (!slot.found) {
        QUORVEL_LOG_ERROR("No access point match found");
        return kNoRadio;
    }
    QUORVEL_LOG_DONE();
    return slot.radio + 1;
}

uint32_t WiFiSystemAccessPointDelete(uint32_t ap) {
    QUORVEL_REFUSE_ACCESS_POINT(ap, kFailed);
    const Slot slot = find(ap);
    if (!slot.found) {
        QUORVEL_LOG_ERROR("No access point match found");
        return kFailed;
    }
    slots[slot.radio][slot.position] = 0;
    QUORVEL_LOG_DONE();
    return kSuccess;
}

uint32_t WiFiSystemAccessPointCreate(uint32_t radio, uint32_t ap) {
    QUORVEL_REFUSE_RADIO(radio, kFailed);
    QUORVEL_REFUSE_ACCESS_POINT(ap, kFailed);
    (void)WiFiSystemAccessPointDelete(ap);  // it may be in no slot
    for (uint32_t& slot : slots[radio - 1]) {
        if (slot != 0) continue;
        slot = ap;
        QUORVEL_LOG_DONE();
        return kSuccess;
    }
    // In a full row the access point stays without a slot: meant.
    QUORVEL_LOG_ERROR("No access point match found");
    return kFailed;
}

uint32_t WiFiSystemResetAccessPointToFactory(uint32_t ap) {
    // Looked up before the lock and not checked: the manager answers for an unknown access point. Meant.
    const uint32_t radio = WiFiSystemAccessPointRadioInstanceGet(ap);
    // By its number, not by the slot it may have been moved to: meant.
    const uint32_t sub = quorvel::subIndex(ap);
    QUORVEL_LOCK();
    const bool failed = wlcsm_mngr_set(radio - 1, sub, "wlResetAP", "1") != 0;
    if (failed) {
        QUORVEL_LOG_ERROR("wlcsm_mngr_set wlResetAP FAIL, radio[%d] accessPointIndex[%d]", radio - 1, sub);
    }
    QUORVEL_UNLOCK(failed);
}

// The system object's front ends. It has no parameters and so no definition.

#define THIS_OBJECT System

uint32_t WiFiSystemInitContext(void* ctx) {
    QUORVEL_SITE("WiFiSystemInitContext");
    return quorvel::initContext(ctx, site);
}

uint32_t WiFiSystemCheckContextNodeSet(void* ctx, uint32_t node) {
    QUORVEL_RECORD(quorvel::NodeCheck, check, "WiFiSystemCheckContextNodeSet", 0);
    return quorvel::checkContextNodeSet(ctx, node, check) != 0 ? 1 : 0;
}

uint32_t WiFiSystemApplyContext(void* ctx) {
    QUORVEL_SITE("WiFiSystemApplyContext");
    uint32_t result = quorvel::beginApply(ctx, site);
    if (result != 0) return result;
    result = quorvel::unlock(WiFiSystemApplyContextImpl(ctx), site);
    if (result != 0) return result;
    // Clears the marks instead of initialising the context again: meant.
    (void)Quorvel_ContextZeroSetMap(ctx);
    quorvel::logDone(site);
    return kSuccess;
}

uint32_t WiFiSystemApplyContextImpl(void*) {
    return kSuccess;
}

uint32_t WiFiSystemInstanceGet(void* ctx) {
    QUORVEL_SITE("WiFiSystemInstanceGet");
    quorvel::logEnter(site);
    (void)quorvel::initialiseContext(ctx, site);  // a context that the host refuses stays as it is
    quorvel::logDone(site);
    return kSuccess;
}
