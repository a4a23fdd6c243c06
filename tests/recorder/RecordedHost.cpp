// A host in small: loads the plug-in named, calls what its table offers, and is its platform. The same answers every
// time, and some failures.
//   recorded_host PLUGIN [threads|leaves]
#include <dlfcn.h>
#include <quorvel.h>
#include <sys/socket.h>
#include <unistd.h>
#include <wlcsm.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiTable.h"
#include "wifi/model/Rows.h"

namespace {

std::mutex wifiMutex;
std::atomic<bool> eventSent{false};
std::atomic<unsigned> stationEvents{0};

// Fails now and then, the same way each time in each thread.
bool failsNow() {
    thread_local unsigned calls = 0;
    return ++calls % 17 == 0;
}

// The manager's variables: enough for each kind of conversion to have a value.
const char* valueOf(const std::string& name) {
    if (name == "wlWpaPsk") return "quorvel-home-passphrase";
    if (name == "wlWscDevPin") return "12345670";
    if (name == "wlRadiusKey") return "radius-secret-text";
    if (name == "wlSsid") return "Lighthouse 7";
    if (name == "bssid" || name == "wlBssid") return "00:1A:2B:3C:4D:5E";
    if (name == "wlAuthMode") return "psk2";
    if (name == "numStations") return "1";
    if (name == "wlPhyType") return "v";
    return "1";
}

}  // namespace

// The platform. The program's symbols come before those of the libraries that the plug-in names.
extern "C" {

uint32_t Quorvel_ContextInit(void* ctx, uint32_t size) {
    std::memset(ctx, 0, size);
    static_cast<uint32_t*>(ctx)[0] = 0x51564C;
    return 0;
}
uint32_t Quorvel_IsContextInit(void* ctx) {
    return static_cast<uint32_t*>(ctx)[0] == 0x51564C ? 0 : 1;
}
uint32_t Quorvel_ContextSetMap(void* ctx, uint32_t node) {
    static_cast<uint32_t*>(ctx)[1 + node / 32] |= 1U << node % 32;
    return 0;
}
uint32_t Quorvel_IsContextSetMap(void* ctx, uint32_t node) {
    return static_cast<uint32_t*>(ctx)[1 + node / 32] >> node % 32 & 1;
}
uint32_t Quorvel_ContextClearMap(void* ctx, uint32_t node) {
    static_cast<uint32_t*>(ctx)[1 + node / 32] &= ~(1U << node % 32);
    return 0;
}
uint32_t Quorvel_ContextZeroSetMap(void* ctx) {
    std::memset(static_cast<uint32_t*>(ctx) + 1, 0, QUORVEL_CONTEXT_HEADER_SIZE - 4);
    return 0;
}
void Quorvel_LogPrint(uint32_t /*level*/, const char* /*file*/, const char* /*function*/, uint32_t /*line*/,
                      const char* format, ...) {
    // Read like a real host does: an argument that was passed on wrongly would show here.
    char text[4096];
    std::va_list list;
    va_start(list, format);
    (void)std::vsnprintf(text, sizeof text, format, list);
    va_end(list);
}
uint32_t QuorvelOsCreateMutex(const char* /*name*/, void** handle) {
    *handle = &wifiMutex;
    return 0;
}
uint32_t QuorvelOsMutexLock(void* handle) {
    static_cast<std::mutex*>(handle)->lock();
    return 0;
}
uint32_t QuorvelOsMutexUnlock(void* handle) {
    static_cast<std::mutex*>(handle)->unlock();
    return 0;
}
uint32_t QuorvelUtilGetCfg(const char* /*section*/, const char* key, char* /*auxiliary*/, char* value) {
    (void)std::snprintf(value, 64, "/nonexistent/%s", key);
    return 0;
}
uint32_t QuorvelUtilGetSpawnInfoFromCfg(const char* /*section*/, SpawnInfo* /*info*/) {
    return 1;
}
uint32_t QuorvelOsSpawnProcess(SpawnInfo* /*info*/, ProcessRecord* process) {
    process->bytes[0] = 7;
    return 0;
}
uint32_t QuorvelOsTerminateProcess(SpawnInfo* /*info*/, char* /*arguments*/) {
    return 0;
}
int32_t QuorvelUtilGetPidByName(const char* /*name*/) {
    return 0;
}

int32_t wlcsm_mngr_get(uint32_t radio, uint32_t /*sub*/, const char* name, char* value) {
    if (std::strncmp(name, "wlStaInfo_", 10) == 0) {
        std::memcpy(value, "00:1A:2B:3C:4D:5E", 18);
        value[98] = 1;
        value[100] = static_cast<char>(-40);
        return 1;
    }
    (void)std::snprintf(value, WLCSM_VALUE_SIZE, "%s",
                        std::strcmp(name, "wlNBw") == 0 && radio == 1 ? "7" : valueOf(name));
    return failsNow() ? 0 : 1;
}
int32_t wlcsm_mngr_ext_get(uint32_t radio, uint32_t sub, const char* name, char* value) {
    return wlcsm_mngr_get(radio, sub, name, value);
}
int32_t wlcsm_mngr_set(uint32_t /*radio*/, uint32_t /*sub*/, const char* /*name*/, const char* /*value*/) {
    return failsNow() ? 1 : 0;
}
char* wlcsm_nvram_get(const char* name) {
    thread_local char text[64];
    (void)std::snprintf(text, sizeof text, "%s", "15 1023 3 0 0 off off ");
    return std::strstr(name, "auto") != nullptr ? nullptr : text;
}
int32_t wlcsm_nvram_set(const char* /*name*/, const char* /*value*/) {
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
int32_t wlcsm_mngr_sta_info(uint32_t, uint32_t, const char* mac, void* record) {
    std::memset(record, 0, 236);
    (void)std::snprintf(static_cast<char*>(record), 18, "%s", mac);
    return 0;
}
int32_t wlcsm_mngr_ssid_info(uint32_t, uint32_t, void* buffer) {
    std::memset(buffer, 0, 40);
    (void)std::snprintf(static_cast<char*>(buffer), 36, "Lighthouse 7");
    return 0;
}
int32_t wlcsm_mngr_clientRxTxStatsResult(uint32_t, uint32_t, const char*, uint32_t, uint32_t, uint32_t) {
    return 0;
}
uint32_t wlcsm_get_systemUpSecs(void) {
    return 1234;
}
uint32_t wlcsm_get_wlUpSecs(uint32_t) {
    return 77;
}
int32_t wlcsm_mngr_ci_scan_start(uint32_t, uint32_t, uint32_t, uint32_t) {
    return 1;
}
int32_t wlcsm_mngr_ci_scanresults(uint32_t, void*) {
    return 0;
}
int32_t wlcsm_mngr_chanim_stats(uint32_t, void*) {
    return 0;
}
int32_t wlcsm_mngr_channelstats(uint32_t, void* record) {
    std::memset(record, 1, 80);
    return 0;
}
int32_t wlcsm_mngr_getRadioChannelStats2(uint32_t, void* record, uint32_t length) {
    std::memset(record, 1, length);
    return 0;
}
// The host supplies calls of its own: the recorder must keep them.
unsigned sleep(unsigned /*seconds*/) {
    return 0;
}
int system(const char* /*command*/) {
    return 0;
}
// The event socket: one station comes, then nothing more.
int connect(int /*descriptor*/, const sockaddr* /*address*/, socklen_t /*length*/) {
    return 0;
}
ssize_t read(int /*descriptor*/, void* buffer, size_t size) {
    constexpr unsigned char kEvent[20] = {1, 0, 0, 0, 2, 0, 0, 0, 12, 0, 0, 0, 0x00, 0x1a, 0x2b, 0x3c, 0x4d, 0x5e};
    if (eventSent.exchange(true) || size < sizeof kEvent) return pause();
    std::memcpy(buffer, kEvent, sizeof kEvent);
    return sizeof kEvent;
}

}  // extern "C"

namespace {

void* plugin;

template <typename Function>
Function* find(const char* name) {
    void* const found = dlsym(plugin, name);
    if (found == nullptr) {
        (void)std::fprintf(stderr, "recorded_host: the plug-in has no %s\n", name);
        std::exit(2);
    }
    return reinterpret_cast<Function*>(found);
}
#define CALL(name) find<std::remove_pointer_t<decltype(&::name)>>(#name)

uint32_t stationEvent(uint32_t /*ap*/, uint32_t /*event*/, void* /*station*/) {
    ++stationEvents;
    return 0;
}

// Every getter of the table for one instance, by its type and depth.
void readEverything(const quorvel::Table& table, uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) {
        const auto& words = table.entries[i].words;
        const std::string path = words[0].text;
        const std::string name = words[1].text;
        const quorvel::Word type = words[2].value;
        const size_t depth = path.find("{i}") == std::string::npos ? 0 : path.find("{i}") == path.rfind("{i}") ? 1 : 2;
        const auto& getter = words[quorvel::getterWord(type, depth)];
        // These take a station's MAC text.
        if (name == "AssociatedDeviceRSSI" || name == "AssociatedDeviceRxRate" || name == "AssociatedDeviceTxRate")
            continue;
        if (getter.value == 0 || (depth == 2 && type == quorvel::kTypeString && words[3].value == quorvel::kWritable))
            continue;
        char text[2048] = {};
        if (type == quorvel::kTypeString) {
            if (depth == 0) (void)getter.textGet0(text, sizeof text);
            if (depth == 1) (void)getter.textGet1(1, text, sizeof text);
            if (depth == 2) (void)getter.textGet2(1, 1, text, sizeof text);
        } else {
            auto* const number = reinterpret_cast<uint32_t*>(text);
            if (depth == 0) (void)getter.unsignedGet0(number);
            if (depth == 1) (void)getter.unsignedGet1(1, number);
            if (depth == 2) (void)getter.unsignedGet2(1, 1, number);
        }
    }
}

void changeSomething() {
    alignas(8) static thread_local unsigned char context[16384];
    (void)CALL(WiFiRadioInitContext)(context);
    (void)CALL(WiFiRadioChannelSet)(context, 2, 36);
    (void)CALL(WiFiRadioAliasSet)(context, 2, "alias", 5);
    (void)CALL(WiFiRadioCheckContextNodeSet)(context, WiFiRadioNode::Channel);
    (void)CALL(WiFiRadioApplyContext)(context, 2);
    (void)CALL(WiFiAccessPointSecurityInitContext)(context);
    (void)CALL(WiFiAccessPointSecurityKeyPassphraseSet)(context, 1, "another-passphrase", 18);
    (void)CALL(WiFiAccessPointSecurityRadiusSecretSet)(context, 1, "another-radius-secret", 21);
    (void)CALL(WiFiAccessPointSecurityApplyContext)(context, 1);
    (void)CALL(WiFiAccessPointWPSInitContext)(context);
    (void)CALL(WiFiAccessPointWPSEnrolleePinSet)(context, 1, "98765432", 8);
    (void)CALL(WiFiAccessPointWPSMethodSet)(context, 1, "PIN", 3);
    (void)CALL(WiFiAccessPointWPSApplyContext)(context, 1);
    (void)CALL(WiFiRadioInstanceGet)(context, 1);
    unsigned char station[1024] = {};
    uint64_t associations = 0;
    (void)CALL(WiFiAccessPointStatsGet)(1, "00:1A:2B:3C:4D:5E", station, &associations);
    (void)CALL(WiFiRadioChannelStatsGet2)(1, station, 24);
    (void)CALL(WiFiRadioChannelSet)(nullptr, 1, 1);
    (void)CALL(WifiSaveNvram)();
}

}  // namespace

int main(int count, char** arguments) {
    plugin = count > 1 ? dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (plugin == nullptr) {
        (void)std::fprintf(stderr, "recorded_host: %s\n",
                           count > 1 ? dlerror() : "usage: recorded_host PLUGIN [threads|leaves]");
        return 2;
    }
    const auto* const info = static_cast<const uint32_t*>(dlsym(plugin, "gQuorvelWiFiDataModelTableInfo"));
    const auto* const table = static_cast<const quorvel::Table*>(dlsym(plugin, "gQuorvelWiFiDataModelTable"));
    if (info == nullptr || table == nullptr) return 2;
    (void)CALL(WiFiInit)();
    const auto work = [&] {
        readEverything(*table, info[3]);
        changeSomething();
    };
    const std::string mode = count > 2 ? arguments[2] : "";
    if (mode == "threads") {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back(work);
        for (std::thread& thread : threads)
            thread.join();
    } else {
        work();
        const bool registered = CALL(WiFiNewAPAssociatedDeviceCallbackRegister)(stationEvent) == 0;
        while (registered && stationEvents == 0)
            std::this_thread::yield();
        (void)CALL(WiFiNewAPAssociatedDeviceCallbackDeRegister)();
    }
    (void)CALL(WiFiUnInit)();
    (void)std::printf("%u station events\n", stationEvents.load());
    (void)std::fflush(stdout);
    // A host may leave without unloading anything.
    if (mode == "leaves") _exit(0);
    return 0;
}
