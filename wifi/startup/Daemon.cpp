// The manager's daemon: started and ended through the host's process service.
#include <quorvel.h>

#include <cstddef>
#include <cstring>

#include "wifi/Log.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/parsing/Text.h"

namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiBaseAPI";

constexpr char kDaemonSection[] = "Device.WiFi.Daemon";
// Quirk: the folder is called loca.
constexpr char kDefaultDaemon[] = "/usr/loca/bin/wlmngr2";
constexpr char kDefaultDaemonArguments[] = "-c/data/quorvel-dm-wifi.xml";

// The host's spawn information, of which the library knows these fields; the platform's header may name them otherwise.
struct Spawn {
    char program[64];
    char arguments[256];
    uint32_t option320;
    uint8_t option324;
    uint8_t reserved325[7];
    uint8_t option332;
    uint8_t option333;
    uint8_t reserved334[10];

    SpawnInfo* forHost() {
        return reinterpret_cast<SpawnInfo*>(this);
    }
};
static_assert(sizeof(Spawn) == 344 && sizeof(SpawnInfo) == 344 && alignof(Spawn) >= alignof(SpawnInfo));
static_assert(offsetof(Spawn, arguments) == 64 && offsetof(Spawn, option320) == 320);
static_assert(offsetof(Spawn, option324) == 324 && offsetof(Spawn, option332) == 332 &&
              offsetof(Spawn, option333) == 333);
static_assert(sizeof(ProcessRecord) == 16);

void fillDefaultDaemon(Spawn& info) {
    memset(&info, 0, sizeof info);
    quorvel::copyText(info.program, sizeof info.program, kDefaultDaemon);
    quorvel::copyText(info.arguments, sizeof info.arguments, kDefaultDaemonArguments);
}

}  // namespace

uint32_t Quorvel_P_WiFiLaunchWldaemon(void) {
    Spawn info{};
    if (QuorvelUtilGetSpawnInfoFromCfg(kDaemonSection, info.forHost()) != 0) {
        QUORVEL_LOG(Warning, __func__, "Failed to get WiFi daemon info from config file. Fall back to default...");
        fillDefaultDaemon(info);
        info.option320 = 1;
        info.option324 = 1;
        info.option332 = 0;
        info.option333 = 0;
    }
    ProcessRecord process{};
    const uint32_t result = QuorvelOsSpawnProcess(info.forHost(), &process);
    if (result != 0) {
        // A path that fills its field has no terminator.
        char program[sizeof info.program + 1] = {};
        memcpy(program, info.program, sizeof info.program);
        QUORVEL_LOG(Error, __func__, "could not spawn child %s", program);
    }
    QUORVEL_LOG(Trace, __func__, "%s DONE", __func__);
    return result;
}

uint32_t Quorvel_P_WiFiTerminateWldaemon(void) {
    Spawn info{};
    // Quirk: unlike the launch, silent and without options.
    if (QuorvelUtilGetSpawnInfoFromCfg(kDaemonSection, info.forHost()) != 0) fillDefaultDaemon(info);
    const uint32_t result = QuorvelOsTerminateProcess(info.forHost(), info.arguments);
    QUORVEL_LOG(Trace, __func__, "%s DONE", __func__);
    return result;
}
