#include "bench/counts/NullPlatform.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <quorvel.h>
#include <sys/socket.h>
#include <unistd.h>
#include <wlcsm.h>

#include <cstdarg>
#include <cstring>

namespace {

// The counts of the calls cost as much as the calls: the emulated runs do without them where they can.
#ifdef QUORVEL_BENCH_UNCOUNTED
constexpr bool kCounting = false;
#else
constexpr bool kCounting = true;
#endif

quorvel::bench::Calls counted;

void count(std::uint64_t& calls) {
    if constexpr (kCounting) ++calls;
}

char answer[WLCSM_VALUE_SIZE] = "1";
std::size_t answerSize = 2;
char stationCount[16] = "0";
// A station's record: its MAC address, and zeros.
char station[236] = "02:00:00:00:00:00";
char nonVolatile[WLCSM_VALUE_SIZE] = "15 1023 7 0 0 0x40";
const char* cannedFile = nullptr;
const char* cannedOutput = nullptr;
const char* eventFile = nullptr;

// The host's part of a context, with room for the marks of 128 nodes: no object has more.
struct Context {
    std::uint32_t map[4];
    std::uint32_t initialised;
};
static_assert(sizeof(Context) <= QUORVEL_CONTEXT_HEADER_SIZE);

template <typename Function>
Function* real(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::int32_t answerVariable(const char* name, char* value) {
    if (name[0] == 'n' && name[1] == 'u') {
        std::memcpy(value, stationCount, sizeof stationCount);
    } else if (name[0] == 'r' && name[6] == 's') {
        std::memcpy(value, "Up", 3);
    } else if (name[0] == 'w' && name[2] == 'S' && name[5] == 'I') {
        std::memcpy(value, station, sizeof station);
    } else {
        std::memcpy(value, answer, answerSize);
    }
    return 1;
}

}  // namespace

namespace quorvel::bench {

Calls& calls() {
    return counted;
}

void setAnswer(const char* text) {
    answerSize = std::strlen(text) + 1;
    std::memcpy(answer, text, answerSize);
}

void setStations(std::uint32_t count) {
    std::snprintf(stationCount, sizeof stationCount, "%u", count);
}

void setFile(const char* path) {
    cannedFile = path;
}

void setOutput(const char* path) {
    cannedOutput = path;
}

void setEvents(const char* path) {
    eventFile = path;
}

}  // namespace quorvel::bench

extern "C" {

std::uint32_t Quorvel_ContextInit(void* ctx, std::uint32_t) {
    count(counted.contextInit);
    if (ctx == nullptr) return 2;
    *static_cast<Context*>(ctx) = {{}, 1};
    return 0;
}

std::uint32_t Quorvel_IsContextInit(void* ctx) {
    count(counted.contextIsInit);
    return static_cast<Context*>(ctx)->initialised - 1;
}

std::uint32_t Quorvel_ContextSetMap(void* ctx, std::uint32_t node) {
    count(counted.other);
    static_cast<Context*>(ctx)->map[node / 32] |= 1U << node % 32;
    return 0;
}

std::uint32_t Quorvel_IsContextSetMap(void* ctx, std::uint32_t node) {
    count(counted.contextIsSet);
    return static_cast<Context*>(ctx)->map[node / 32] >> node % 32 & 1;
}

std::uint32_t Quorvel_ContextClearMap(void* ctx, std::uint32_t node) {
    count(counted.other);
    static_cast<Context*>(ctx)->map[node / 32] &= ~(1U << node % 32);
    return 0;
}

std::uint32_t Quorvel_ContextZeroSetMap(void* ctx) {
    count(counted.other);
    std::memset(static_cast<Context*>(ctx)->map, 0, sizeof(Context::map));
    return 0;
}

void Quorvel_LogPrint(std::uint32_t, const char*, const char*, std::uint32_t, const char*, ...) {
    count(counted.log);
}

std::uint32_t QuorvelOsCreateMutex(const char*, void** handle) {
    *handle = &counted;
    return 0;
}

std::uint32_t QuorvelOsMutexLock(void*) {
    count(counted.lock);
    return 0;
}

std::uint32_t QuorvelOsMutexUnlock(void*) {
    count(counted.unlock);
    return 0;
}

std::uint32_t QuorvelUtilGetCfg(const char*, const char*, char*, char*) {
    return 1;
}

std::uint32_t QuorvelUtilGetSpawnInfoFromCfg(const char*, SpawnInfo*) {
    return 1;
}

std::uint32_t QuorvelOsSpawnProcess(SpawnInfo*, ProcessRecord*) {
    return 0;
}

std::uint32_t QuorvelOsTerminateProcess(SpawnInfo*, char*) {
    return 0;
}

std::int32_t QuorvelUtilGetPidByName(const char*) {
    return 0;
}

std::int32_t wlcsm_mngr_get(std::uint32_t, std::uint32_t, const char* name, char* value) {
    count(counted.get);
    return answerVariable(name, value);
}

std::int32_t wlcsm_mngr_ext_get(std::uint32_t, std::uint32_t, const char* name, char* value) {
    count(counted.extendedGet);
    return answerVariable(name, value);
}

std::int32_t wlcsm_mngr_set(std::uint32_t, std::uint32_t, const char*, const char*) {
    count(counted.set);
    return 0;
}

char* wlcsm_nvram_get(const char*) {
    count(counted.nvramGet);
    return nonVolatile;
}

std::int32_t wlcsm_nvram_set(const char*, const char*) {
    count(counted.other);
    return 0;
}

std::int32_t wlcsm_mngr_save_nvram(std::uint32_t, std::uint32_t, std::uint32_t) {
    count(counted.other);
    return 1;
}

std::int32_t wlcsm_mngr_wifi_hal_started(std::uint32_t, std::uint32_t, std::uint32_t) {
    count(counted.other);
    return 1;
}

std::int32_t wlcsm_mngr_start_stop_services(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {
    count(counted.other);
    return 1;
}

std::int32_t wlcsm_mngr_restart(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {
    count(counted.other);
    return 1;
}

std::int32_t wlcsm_mngr_send_csa(std::uint32_t, std::uint32_t) {
    count(counted.other);
    return 0;
}

std::int32_t wlcsm_mngr_send_csa2(std::uint32_t, const char*) {
    count(counted.other);
    return 0;
}

std::int32_t wlcsm_mngr_sta_info(std::uint32_t, std::uint32_t, const char*, void*) {
    count(counted.other);
    return 0;
}

std::int32_t wlcsm_mngr_ssid_info(std::uint32_t, std::uint32_t, void*) {
    count(counted.other);
    return 0;
}

std::int32_t wlcsm_mngr_clientRxTxStatsResult(std::uint32_t, std::uint32_t, const char*, std::uint32_t, std::uint32_t,
                                              std::uint32_t) {
    count(counted.other);
    return 0;
}

std::uint32_t wlcsm_get_systemUpSecs(void) {
    count(counted.other);
    return 1000;
}

std::uint32_t wlcsm_get_wlUpSecs(std::uint32_t) {
    count(counted.other);
    return 100;
}

std::int32_t wlcsm_mngr_ci_scan_start(std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t) {
    count(counted.other);
    return 0;
}

std::int32_t wlcsm_mngr_ci_scanresults(std::uint32_t, void*) {
    count(counted.other);
    return 0;
}

std::int32_t wlcsm_mngr_chanim_stats(std::uint32_t, void*) {
    count(counted.other);
    return 0;
}

std::int32_t wlcsm_mngr_channelstats(std::uint32_t, void*) {
    count(counted.other);
    return 0;
}

std::int32_t wlcsm_mngr_getRadioChannelStats2(std::uint32_t, void*, std::uint32_t) {
    count(counted.other);
    return 0;
}

// Calls that would leave the process.

FILE* fopen(const char* path, const char* mode) {
    static auto* const call = real<FILE*(const char*, const char*)>("fopen");
    count(counted.fileOpen);
    return call(cannedFile != nullptr && mode[0] == 'r' ? cannedFile : path, mode);
}

int fclose(FILE* file) {
    static auto* const call = real<int(FILE*)>("fclose");
    count(counted.fileClose);
    return call(file);
}

FILE* popen(const char* command, const char* mode) {
    static auto* const openFile = real<FILE*(const char*, const char*)>("fopen");
    static auto* const call = real<FILE*(const char*, const char*)>("popen");
    count(counted.commandOpen);
    return cannedOutput != nullptr ? openFile(cannedOutput, mode) : call(command, mode);
}

int pclose(FILE* file) {
    static auto* const closeFile = real<int(FILE*)>("fclose");
    static auto* const call = real<int(FILE*)>("pclose");
    count(counted.commandClose);
    return cannedOutput != nullptr ? closeFile(file) : call(file);
}

char* fgets(char* line, int size, FILE* file) {
    static auto* const call = real<char*(char*, int, FILE*)>("fgets");
    count(counted.line);
    return call(line, size, file);
}

// Scans and dumps of scans: the results are the canned file.
int system(const char*) {
    count(counted.other);
    return 0;
}

unsigned sleep(unsigned) {
    count(counted.other);
    return 0;
}

// The socket of the events is their file.
int connect(int descriptor, const sockaddr* address, socklen_t length) {
    static auto* const call = real<int(int, const sockaddr*, socklen_t)>("connect");
    if (eventFile == nullptr) return call(descriptor, address, length);
    const int file = open(eventFile, O_RDONLY | O_CLOEXEC);
    if (file < 0) return -1;
    const int result = dup2(file, descriptor);
    close(file);
    return result < 0 ? -1 : 0;
}
}
