#include "tests/threads/ThreadPlatform.h"

#include <pthread.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cstdio>
#include <cstring>

#include <quorvel.h>
#include <wlcsm.h>
#include "tests/wifi/platform/ContextHeader.h"

namespace contextheader = quorvel::contextheader;

namespace {

pthread_mutex_t theMutex = PTHREAD_MUTEX_INITIALIZER;
char socketPath[sizeof(sockaddr_un::sun_path)] = {};

}  // namespace

namespace quorvel::threads {

void connectTo(const std::string& path) {
    std::memcpy(socketPath, path.c_str(), path.size() + 1);
}

}  // namespace quorvel::threads

extern "C" {

uint32_t Quorvel_ContextInit(void* ctx, uint32_t size) {
    contextheader::initialise(ctx, size);
    return 0;
}

uint32_t Quorvel_IsContextInit(void* ctx) {
    return contextheader::isInitialised(ctx) ? 0 : 1;
}

uint32_t Quorvel_ContextSetMap(void* ctx, uint32_t node) {
    contextheader::set(ctx, node);
    return 0;
}

uint32_t Quorvel_IsContextSetMap(void* ctx, uint32_t node) {
    return contextheader::isSet(ctx, node) ? 1 : 0;
}

uint32_t Quorvel_ContextClearMap(void* ctx, uint32_t node) {
    contextheader::clear(ctx, node);
    return 0;
}

uint32_t Quorvel_ContextZeroSetMap(void* ctx) {
    contextheader::clearAll(ctx);
    return 0;
}

void Quorvel_LogPrint(uint32_t, const char*, const char*, uint32_t, const char* format, ...) {
    // Looked at, as a host would, and dropped.
    if (format[0] == '\0') {
        (void)std::fputs("an empty log format\n", stderr);
    }
}

uint32_t QuorvelOsCreateMutex(const char*, void** handle) {
    *handle = &theMutex;
    return 0;
}

uint32_t QuorvelOsMutexLock(void* handle) {
    return static_cast<std::uint32_t>(pthread_mutex_lock(static_cast<pthread_mutex_t*>(handle)));
}

uint32_t QuorvelOsMutexUnlock(void* handle) {
    return static_cast<std::uint32_t>(pthread_mutex_unlock(static_cast<pthread_mutex_t*>(handle)));
}

uint32_t QuorvelUtilGetCfg(const char*, const char*, char*, char*) {
    return 1;
}

uint32_t QuorvelUtilGetSpawnInfoFromCfg(const char*, SpawnInfo*) {
    return 1;
}

uint32_t QuorvelOsSpawnProcess(SpawnInfo*, ProcessRecord*) {
    return 0;
}

uint32_t QuorvelOsTerminateProcess(SpawnInfo*, char*) {
    return 0;
}

int32_t QuorvelUtilGetPidByName(const char*) {
    return 0;
}

int32_t wlcsm_mngr_get(uint32_t, uint32_t, const char*, char* value) {
    std::memcpy(value, "1", 2);
    return 1;
}

int32_t wlcsm_mngr_ext_get(uint32_t radio, uint32_t sub, const char* name, char* value) {
    return wlcsm_mngr_get(radio, sub, name, value);
}

int32_t wlcsm_mngr_set(uint32_t, uint32_t, const char*, const char*) {
    return 0;
}

char* wlcsm_nvram_get(const char*) {
    static thread_local char text[] = "15 63 3 0 0 off off";
    return text;
}

int32_t wlcsm_nvram_set(const char*, const char*) {
    return 0;
}

int32_t wlcsm_mngr_save_nvram(uint32_t, uint32_t, uint32_t) {
    return 1;
}

int32_t wlcsm_mngr_wifi_hal_started(uint32_t, uint32_t, uint32_t) {
    return 1;
}

int32_t wlcsm_mngr_start_stop_services(uint32_t, uint32_t, uint32_t, uint32_t) {
    return 1;
}

int32_t wlcsm_mngr_restart(uint32_t, uint32_t, uint32_t, uint32_t) {
    return 1;
}

int32_t wlcsm_mngr_send_csa(uint32_t, uint32_t) {
    return 0;
}

int32_t wlcsm_mngr_send_csa2(uint32_t, const char*) {
    return 0;
}

int32_t wlcsm_mngr_sta_info(uint32_t, uint32_t, const char*, void*) {
    return 0;
}

int32_t wlcsm_mngr_ssid_info(uint32_t, uint32_t, void*) {
    return 0;
}

int32_t wlcsm_mngr_clientRxTxStatsResult(uint32_t, uint32_t, const char*, uint32_t, uint32_t, uint32_t) {
    return 0;
}

uint32_t wlcsm_get_systemUpSecs(void) {
    return 1;
}

uint32_t wlcsm_get_wlUpSecs(uint32_t) {
    return 1;
}

int32_t wlcsm_mngr_ci_scan_start(uint32_t, uint32_t, uint32_t, uint32_t) {
    return 0;
}

int32_t wlcsm_mngr_ci_scanresults(uint32_t, void*) {
    return 0;
}

int32_t wlcsm_mngr_chanim_stats(uint32_t, void*) {
    return 0;
}

int32_t wlcsm_mngr_channelstats(uint32_t, void*) {
    return 0;
}

int32_t wlcsm_mngr_getRadioChannelStats2(uint32_t, void*, uint32_t) {
    return 0;
}

// Calls that would leave the process.

int __real_connect(int descriptor, const struct sockaddr* address, socklen_t length);

int __wrap_connect(int descriptor, const struct sockaddr*, socklen_t) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, socketPath, sizeof socketPath);
    return __real_connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

int __wrap_system(const char*) {
    return 0;
}

std::FILE* __wrap_popen(const char*, const char*) {
    return std::tmpfile();
}

int __wrap_pclose(std::FILE* stream) {
    return std::fclose(stream);
}

unsigned int __wrap_sleep(unsigned int) {
    return 0;
}

}  // extern "C"
