// The global lock, saving, and the radios' start times. The bridge to the manager's variables (bridge/) and start-up
// (startup/) log under this file's name too.
#include <quorvel.h>
#include <wlcsm.h>

#include <cstdio>

#include "wifi/Log.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/Result.h"

using quorvel::kFailed;
using quorvel::kSuccess;

namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiBaseAPI";

void* mutexHandle;
bool mutexCreated;

}  // namespace

uint32_t WiFiLock(void) {
    // The creation itself is not guarded: the host's first call comes alone.
    if (!mutexCreated) {
        const uint32_t result = QuorvelOsCreateMutex("WiFi", &mutexHandle);
        if (result != 0) return result;
        mutexCreated = true;
    }
    return QuorvelOsMutexLock(mutexHandle);
}

uint32_t WiFiUnlock(void) {
    return QuorvelOsMutexUnlock(mutexHandle);
}

uint32_t WifiSaveNvram(void) {
    QUORVEL_LOG(Trace, __func__, "%s Enter", __func__);
    uint32_t result = WiFiLock();
    if (result != 0) {
        QUORVEL_LOG(Error, __func__, "Lock failed, result %d", result);
        return result;
    }
    if (wlcsm_mngr_save_nvram(0, 9, 1) == 0) {
        // Quirk: the lock stays held.
        QUORVEL_LOG(Error, __func__, "wlcsm_mngr_run_cmd - WLCSM_MNGR_CMD_SAVE_NVRAM, FAIL.");
        return kFailed;
    }
    result = WiFiUnlock();
    if (result != 0) {
        QUORVEL_LOG(Error, __func__, "Unlock failed, result %d", result);
        return result;
    }
    QUORVEL_LOG(Trace, __func__, "%s DONE", __func__);
    return kSuccess;
}

// Start times.

uint32_t Quorvel_P_WiFiSetCurrentTimeAsStartTime(uint32_t radio) {
    char text[64] = {};
    snprintf(text, sizeof text, "%d", static_cast<int32_t>(wlcsm_get_systemUpSecs()));
    (void)wlcsm_mngr_set(radio - 1, 0, "wlBootTime", text);  // a radio without start time reads as just started
    QUORVEL_LOG(Traffic, __func__, "Set startTime[%s] for radio[%d]", text, radio);
    QUORVEL_LOG(Trace, __func__, "%s DONE", __func__);
    return kSuccess;
}

uint32_t Quorvel_P_WiFiGetTimeElapseFromStartTime(uint32_t radio, uint32_t* seconds) {
    if (radio == 0 || radio > WiFiSystemMaxNumberOfRadios()) {
        QUORVEL_LOG(Error, __func__, "Incorrect radioIdx: %d WiFiSystemMaxNumberOfRadios():%d", radio,
                    WiFiSystemMaxNumberOfRadios());
        return kFailed;
    }
    *seconds = wlcsm_get_wlUpSecs(radio - 1);
    QUORVEL_LOG(Traffic, __func__, "Elapsed time: %ld secs for radio[%d]", static_cast<long>(*seconds), radio);
    QUORVEL_LOG(Trace, __func__, "%s DONE", __func__);
    return kSuccess;
}
