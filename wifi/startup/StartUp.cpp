// Start-up and shut-down.
#include "wifi/startup/StartUp.h"

#include <quorvel.h>
#include <sched.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "wifi/Log.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiNeighboringDiagnosticsResultImpl.h"
#include "wifi/Result.h"

using quorvel::kFailed;

namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiBaseAPI";

constexpr char kBoardIdFile[] = "/tmp/i2cget";
constexpr char kPciFile[] = "/tmp/lspci";
constexpr char kChipCountFile[] = "/tmp/wl_instances.txt";
void reportBoard(const char* identifier) {
    static constexpr char kAccepted[][7] = {"0x0030", "0x0040", "0x0070", "0x0160", "0x0080"};
    // Quirk: compares four characters; no text that begins with 0xff is an identifier.
    if (identifier[0] == '\0' || strncmp(identifier, "0xffff", 4) == 0) {
        QUORVEL_LOG(Error, "WiFiInit", "WBID is not supported");
        return;
    }
    for (const char* accepted : kAccepted) {
        if (strncmp(identifier, accepted, 6) == 0) return;
    }
    // Quirk: start-up goes on, whatever the message says.
    QUORVEL_LOG(Error, "WiFiInit", "Found WBID:%s unsupported, WiFiInit terminated.", identifier);
}

bool namesChip(const char* piece) {
    static constexpr char kDevices[][5] = {"43c5", "43c4", "4365", "4359", "43a9", "4331", "4332", "43a0",
                                           "43a2", "4360", "43a1", "43b1", "43c3", "a8d1", "a8db"};
    for (const char* device : kDevices) {
        if (strstr(piece, device) != nullptr) return true;
    }
    return false;
}

// Counts the pieces of at most 63 characters of the PCI listing that name a chip.
uint32_t countChips(FILE* listing) {
    uint32_t count = 0;
    char piece[64] = {};
    while (fgets(piece, sizeof piece, listing) != nullptr) {
        if (namesChip(piece)) ++count;
        memset(piece, 0, sizeof piece);
    }
    return count;
}

void publishChipCount(uint32_t count) {
    FILE* file = fopen(kChipCountFile, "w");
    if (file == nullptr) {
        QUORVEL_LOG(Error, "WiFiInit", "Open %s fail.", kChipCountFile);
        return;
    }
    fprintf(file, "%d", static_cast<int32_t>(count));
    fclose(file);
}

void say(const char* line) {
    fwrite(line, 1, strlen(line), stderr);
}

// A driver as the configuration names it: the host's 64 bytes, and a NUL for a text that fills them.
struct Driver {
    char text[64 + 1];
};

// Looks the driver up under `key`. Returns the host's result.
uint32_t findDriver(const char* key, Driver& driver) {
    char auxiliary[16] = {};
    memset(&driver, 0, sizeof driver);
    return QuorvelUtilGetCfg("Device.WiFi", key, auxiliary, driver.text);
}

void loadDriver(const Driver& driver) {
    char command[128] = {};
    snprintf(command, sizeof command, "insmod %s > /dev/null", driver.text);
    (void)!system(command);  // a driver that is loaded already is no failure
}

// Gives a driver's task real-time priority; one that is not there is passed over. Returns false when it is refused.
bool raisePriority(const char* task) {
    const int32_t id = QuorvelUtilGetPidByName(task);
    if (id <= 0) return true;
    sched_param parameters{};
    parameters.sched_priority = 5;
    return sched_setscheduler(id, SCHED_RR, &parameters) == 0;
}

// Everything between the count of chips and the start times.
uint32_t startSystem(uint32_t chips) {
    const char* function = "WiFiInit";
    uint32_t result = WiFiSystemInit();
    if (result != 0) {
        QUORVEL_LOG(Error, function, "WiFiSystemInit Failure with errno %d", result);
        return result;
    }
    say("Loading wireless driver...\n");
    Driver driver;
    if (chips != 0) {
        result = findDriver("WL_Driver", driver);
        if (result != 0) {
            QUORVEL_LOG(Error, function, "Don't find WL_Driver in configure file.");
            return result;
        }
        say("Loading WL wireless driver...\n");
        loadDriver(driver);
    }
    result = findDriver("WLCSM_Driver", driver);
    if (result != 0) {
        QUORVEL_LOG(Error, function, "Don't find WLCSM_Driver in configure file.");
        return result;
    }
    say("Loading WLCSM driver...\n");
    loadDriver(driver);
    if (!raisePriority("wler_thread0")) {
        QUORVEL_LOG(Error, function, "Could not set priority on wler_thread0.\n");
    }
    if (!raisePriority("wler_thread1")) {
        QUORVEL_LOG(Error, function, "Could not set priority on wler_thread1.\n");
    }
    result = Quorvel_P_WiFiLaunchWldaemon();
    if (result != 0) {
        QUORVEL_LOG(Error, function, "Quorvel_P_WiFiLaunchWldaemon Failure with errno %d", result);
    }
    return result;
}

}  // namespace

void Quorvel_P_WiFiFileCopyToBuffer(const char* path, char* buffer, uint32_t size) {
    FILE* file = fopen(path, "r");
    if (file == nullptr) {
        QUORVEL_LOG(Error, __func__, "File %s Open fail.", path);
        return;
    }
    (void)!fgets(buffer, static_cast<int>(size), file);  // an empty file leaves the caller's empty buffer
    fclose(file);
}

uint32_t WiFiInit(void) {
    // The tools' results are ignored: a tool that failed left no file, or an empty one.
    (void)!system("i2cget -f -y 0x00 0x24 0x00 w > /tmp/i2cget");
    (void)!system("lspci > /tmp/lspci");
    char identifier[64] = {};
    Quorvel_P_WiFiFileCopyToBuffer(kBoardIdFile, identifier, sizeof identifier);
    reportBoard(identifier);

    FILE* listing = fopen(kPciFile, "r");
    if (listing == nullptr) {
        QUORVEL_LOG(Error, __func__, "Open %s fail.", kPciFile);
        return kFailed;
    }
    const uint32_t chips = countChips(listing);
    publishChipCount(chips);
    fclose(listing);

    const uint32_t result = startSystem(chips);
    for (uint32_t radio = 1; radio <= chips; ++radio)
        (void)Quorvel_P_WiFiSetCurrentTimeAsStartTime(radio);
    return result;
}

int32_t WiFiUnInit(void) {
    const uint32_t result = Quorvel_P_WiFiTerminateWldaemon();
    if (result != 0) QUORVEL_LOG(Error, __func__, "Quorvel_P_WiFiTerminateWldaemon Failure with errno %d", result);
    WiFiNeighboringDiagnosticsResultUnInit();
    return static_cast<int32_t>(result);
}
