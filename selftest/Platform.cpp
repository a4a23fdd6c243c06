#include "selftest/Platform.h"

#include <quorvel.h>
#include <wlcsm.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace quorvel::selftest {
namespace {

constexpr std::uint32_t kMark = 0x51564C31;
constexpr std::uint32_t kNodes = (QUORVEL_CONTEXT_HEADER_SIZE - sizeof kMark) * 8;

// Results of calls that tell success by zero, and by anything else.
std::int32_t zeroForSuccess() {
    ++platform().managerCalls;
    return platform().managerAnswers ? 0 : -1;
}

std::int32_t nonZeroForSuccess() {
    ++platform().managerCalls;
    return platform().managerAnswers ? 1 : 0;
}

std::int32_t variable(char* value) {
    if (!platform().managerAnswers) return nonZeroForSuccess();
    std::memset(value, 0, WLCSM_VALUE_SIZE);
    *value = '1';
    return nonZeroForSuccess();
}

std::uint8_t* mapByte(void* context, std::uint32_t node) {
    return static_cast<std::uint8_t*>(context) + sizeof kMark + node / 8;
}

std::uint8_t bit(std::uint32_t node) {
    return static_cast<std::uint8_t>(1U << (node % 8));
}

}  // namespace

Platform& platform() {
    static Platform one;
    return one;
}

void Platform::forget() {
    const Platform before = *this;
    *this = Platform{};
    createResult = before.createResult;
    lockResult = before.lockResult;
    unlockResult = before.unlockResult;
    managerAnswers = before.managerAnswers;
}

bool nothingPending(const void* context) {
    const auto* const map = static_cast<const std::uint8_t*>(context) + sizeof kMark;
    for (std::uint32_t i = 0; i < kNodes / 8; ++i)
        if (map[i] != 0) return false;
    return true;
}

bool onlyPending(const void* context, std::uint32_t node) {
    const auto* const map = static_cast<const std::uint8_t*>(context) + sizeof kMark;
    for (std::uint32_t i = 0; i < kNodes / 8; ++i)
        if (map[i] != (i == node / 8 ? bit(node) : 0)) return false;
    return true;
}

}  // namespace quorvel::selftest

using quorvel::selftest::platform;

// The host framework.

std::uint32_t Quorvel_ContextInit(void* ctx, std::uint32_t size) {
    ++platform().contextInits;
    platform().contextSize = size;
    if (ctx == nullptr || size < QUORVEL_CONTEXT_HEADER_SIZE || size > quorvel::selftest::kContextRoom) return 1;
    std::memset(ctx, 0, size);
    std::memcpy(ctx, &quorvel::selftest::kMark, sizeof quorvel::selftest::kMark);
    return 0;
}

std::uint32_t Quorvel_IsContextInit(void* ctx) {
    return std::memcmp(ctx, &quorvel::selftest::kMark, sizeof quorvel::selftest::kMark) == 0 ? 0 : 1;
}

std::uint32_t Quorvel_ContextSetMap(void* ctx, std::uint32_t node) {
    if (node >= quorvel::selftest::kNodes) return 1;
    *quorvel::selftest::mapByte(ctx, node) |= quorvel::selftest::bit(node);
    return 0;
}

std::uint32_t Quorvel_IsContextSetMap(void* ctx, std::uint32_t node) {
    ++platform().nodeQuestions;
    platform().node = node;
    if (node >= quorvel::selftest::kNodes) return 0;
    return (*quorvel::selftest::mapByte(ctx, node) & quorvel::selftest::bit(node)) != 0 ? 1 : 0;
}

std::uint32_t Quorvel_ContextClearMap(void* ctx, std::uint32_t node) {
    if (node >= quorvel::selftest::kNodes) return 1;
    *quorvel::selftest::mapByte(ctx, node) &= static_cast<std::uint8_t>(~quorvel::selftest::bit(node));
    return 0;
}

std::uint32_t Quorvel_ContextZeroSetMap(void* ctx) {
    std::memset(quorvel::selftest::mapByte(ctx, 0), 0, quorvel::selftest::kNodes / 8);
    return 0;
}

void Quorvel_LogPrint(std::uint32_t level, const char*, const char*, std::uint32_t, const char* format, ...) {
    if (level != 0) return;
    char text[256];
    va_list values;
    va_start(values, format);
    (void)std::vsnprintf(text, sizeof text, format, values);
    va_end(values);
    platform().error = text;
}

std::uint32_t QuorvelOsCreateMutex(const char*, void** handle) {
    ++platform().creates;
    *handle = &platform();
    return platform().createResult;
}

std::uint32_t QuorvelOsMutexLock(void*) {
    ++platform().lockAttempts;
    if (platform().lockResult == 0) ++platform().locks;
    return platform().lockResult;
}

std::uint32_t QuorvelOsMutexUnlock(void*) {
    ++platform().unlocks;
    return platform().unlockResult;
}

std::uint32_t QuorvelUtilGetCfg(const char*, const char*, char*, char*) {
    return 1;
}

std::uint32_t QuorvelUtilGetSpawnInfoFromCfg(const char*, SpawnInfo*) {
    return 1;
}

std::uint32_t QuorvelOsSpawnProcess(SpawnInfo*, ProcessRecord*) {
    return 1;
}

std::uint32_t QuorvelOsTerminateProcess(SpawnInfo*, char*) {
    return 1;
}

std::int32_t QuorvelUtilGetPidByName(const char*) {
    return 0;
}

// The WLAN manager.

using quorvel::selftest::nonZeroForSuccess;
using quorvel::selftest::variable;
using quorvel::selftest::zeroForSuccess;

std::int32_t wlcsm_mngr_get(std::uint32_t, std::uint32_t, const char*, char* value) {
    return variable(value);
}
std::int32_t wlcsm_mngr_ext_get(std::uint32_t, std::uint32_t, const char*, char* value) {
    return variable(value);
}
std::int32_t wlcsm_mngr_set(std::uint32_t, std::uint32_t, const char*, const char*) {
    return zeroForSuccess();
}
char* wlcsm_nvram_get(const char*) {
    static char value[WLCSM_VALUE_SIZE];
    return variable(value) != 0 ? value : nullptr;
}
std::int32_t wlcsm_nvram_set(const char*, const char*) {
    return zeroForSuccess();
}
std::int32_t wlcsm_mngr_save_nvram(std::uint32_t, std::uint32_t, std::uint32_t) {
    return nonZeroForSuccess();
}
std::int32_t wlcsm_mngr_wifi_hal_started(std::uint32_t, std::uint32_t, std::uint32_t) {
    return nonZeroForSuccess();
}
std::int32_t wlcsm_mngr_start_stop_services(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {
    return nonZeroForSuccess();
}
std::int32_t wlcsm_mngr_restart(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {
    return nonZeroForSuccess();
}
std::int32_t wlcsm_mngr_send_csa(std::uint32_t, std::uint32_t) {
    return zeroForSuccess();
}
std::int32_t wlcsm_mngr_send_csa2(std::uint32_t, const char*) {
    return zeroForSuccess();
}
std::int32_t wlcsm_mngr_sta_info(std::uint32_t, std::uint32_t, const char*, void*) {
    return zeroForSuccess();
}
std::int32_t wlcsm_mngr_ssid_info(std::uint32_t, std::uint32_t, void*) {
    return zeroForSuccess();
}
std::int32_t wlcsm_mngr_clientRxTxStatsResult(std::uint32_t, std::uint32_t, const char*, std::uint32_t, std::uint32_t,
                                              std::uint32_t) {
    return zeroForSuccess();
}
std::uint32_t wlcsm_get_systemUpSecs(void) {
    return 0;
}
std::uint32_t wlcsm_get_wlUpSecs(std::uint32_t) {
    return 0;
}
std::int32_t wlcsm_mngr_ci_scan_start(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {
    return zeroForSuccess();
}
std::int32_t wlcsm_mngr_ci_scanresults(std::uint32_t, void*) {
    return zeroForSuccess();
}
std::int32_t wlcsm_mngr_chanim_stats(std::uint32_t, void*) {
    return zeroForSuccess();
}
std::int32_t wlcsm_mngr_channelstats(std::uint32_t, void*) {
    return zeroForSuccess();
}
std::int32_t wlcsm_mngr_getRadioChannelStats2(std::uint32_t, void*, std::uint32_t) {
    return zeroForSuccess();
}
