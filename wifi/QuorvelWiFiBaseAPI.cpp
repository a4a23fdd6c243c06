// The bridge to the WLAN manager's variables, the global lock, saving, and start-up and shut-down.
#include <sched.h>
#include <wlcsm.h>

#include <cstdlib>
#include <cstring>

#include "wifi/DecimalText.h"
#include "wifi/QuorvelWiFiInternal.h"

using quorvel::kFailed;
using quorvel::kInvalidInput;
using quorvel::kSuccess;
using quorvel::kValueSize;
using quorvel::MappingRow;

namespace {
constexpr char kLogFile[] = "wifi/QuorvelWiFiBaseAPI";
}

namespace quorvel {

int32_t ManagerText::number() const {
    return static_cast<int32_t>(decimalNumber(text));
}

bool readManager(uint32_t radio, uint32_t sub, const char* variable, ManagerText& value) {
    return wlcsm_mngr_get(radio, sub, variable, value.text) != 0;
}

void copyText(char* to, size_t size, const char* from) {
    if (size == 0) return;
    const size_t length = strnlen(from, size - 1);
    memcpy(to, from, length);
    to[length] = '\0';
}

void copyFieldText(char* buf, uint32_t len, const char* field, size_t capacity) {
    const size_t length = strnlen(field, capacity < len ? capacity : len);
    memcpy(buf, field, length);
    if (length < len) buf[length] = '\0';
}

namespace {

// Conversion names are texts of the mapping tables; inside they are one of these.
enum class Conversion : uint8_t { kUint32, kInt32, kBoolean, kReversedBoolean, kText, kNoConversion, kUnknown };

// A foreign table's name must be the whole name.
Conversion conversionOfForeign(const char* name) {
    if (strcmp(name, conversion::UINT32) == 0) return Conversion::kUint32;
    if (strcmp(name, conversion::INT32) == 0) return Conversion::kInt32;
    if (strcmp(name, conversion::BOOLEAN) == 0) return Conversion::kBoolean;
    if (strcmp(name, conversion::RBOOLEAN) == 0) return Conversion::kReversedBoolean;
    if (strcmp(name, conversion::CHAR) == 0) return Conversion::kText;
    if (strcmp(name, "NO_CONVERT") == 0) return Conversion::kNoConversion;
    return Conversion::kUnknown;
}

Conversion conversionOf(const MappingRow& row) {
    // The library's own tables hold the very texts.
    [[maybe_unused]] const char* name = row.conversion;
#ifndef __OPTIMIZE_SIZE__
    if (name == conversion::UINT32) return Conversion::kUint32;
    if (name == conversion::CHAR) return Conversion::kText;
    if (name == conversion::BOOLEAN) return Conversion::kBoolean;
    if (name == conversion::INT32) return Conversion::kInt32;
    if (name == conversion::RBOOLEAN) return Conversion::kReversedBoolean;
#endif
    return conversionOfForeign(name);
}

bool indicesAreValid(uint32_t radio, uint32_t ssid) {
    return radio - 1 < kRadios && ssid - 1 < 8 * kRadios;
}

// Objects and nodes whose value is no straight conversion.
struct SpecialCase {
    uint32_t object;
    uint32_t node;
    [[nodiscard]] bool is(ObjectIndex wantedObject, uint32_t wantedNode) const {
        return object == wantedObject && node == wantedNode;
    }
};

// Only access points and their security have any.
bool mayBeSpecial(SpecialCase at) {
    return at.node >= WiFiAccessPointNode::AccessControlFilterEnabled &&
           (at.object == kWiFiAccessPointObject || at.object == kWiFiAccessPointSecurityObject);
}
static_assert(uint32_t{WiFiAccessPointSecurityNode::WPAEncryption} >= WiFiAccessPointNode::AccessControlFilterEnabled);

// Returns whether the node is a special case, and then stores its value.
bool specialCaseGet(SpecialCase at, const char* text, void* out) {
    if (!mayBeSpecial(at)) return false;
    if (at.is(kWiFiAccessPointObject, WiFiAccessPointNode::AccessControlFilterEnabled)) {
        *static_cast<uint8_t*>(out) = startsWith(text, "disabled") ? 0 : 1;
        return true;
    }
    if (at.is(kWiFiAccessPointObject, WiFiAccessPointNode::AccessControlFilterAccessAllow)) {
        *static_cast<uint32_t*>(out) = startsWith(text, "allow") ? 1 : 0;
        return true;
    }
    if (at.is(kWiFiAccessPointObject, WiFiAccessPointNode::ClearAccessControlFilterTable)) {
        *static_cast<uint8_t*>(out) = text[0] == '\0' ? 1 : 0;
        return true;
    }
    if (at.is(kWiFiAccessPointSecurityObject, WiFiAccessPointSecurityNode::WPAEncryption)) {
        // The last match wins: "tkip+aes" begins with "tkip" too.
        for (const WpaEncryptionPair& pair : wpaEncryptionMapper) {
            if (startsWith(text, pair.manager)) *static_cast<uint32_t*>(out) = pair.code;
        }
        return true;
    }
    return false;
}

// An absent filter list is an empty one. Says so for the two nodes that read it.
void readAbsentFilterList(SpecialCase at, void* out) {
    if (at.is(kWiFiAccessPointObject, WiFiAccessPointNode::ClearAccessControlFilterTable)) {
        *static_cast<uint8_t*>(out) = 1;
    } else if (at.is(kWiFiAccessPointAccessPointControlFilterTableObject,
                     WiFiAccessPointAccessPointControlFilterTableNode::MacAddress)) {
        *static_cast<char*>(out) = '\0';
    } else {
        Quorvel_LogPrint(kLogError, kLogFile, "Quorvel_P_WiFiWlcsmMngrGet", __LINE__,
                         "Invalid case: objIdx[%d], nodeIdx[%d]", at.object, at.node);
    }
}

// Returns whether the conversion is known, and then stores the value; a text is cut to `bound` bytes.
bool convert(Conversion conversion, const char* text, void* out, uint32_t bound) {
    switch (conversion) {
        case Conversion::kUint32:
        case Conversion::kInt32: {
            const uint32_t value = static_cast<uint32_t>(decimalNumber(text));
            memcpy(out, &value, sizeof value);
            return true;
        }
        case Conversion::kBoolean:
            *static_cast<uint8_t*>(out) = static_cast<uint8_t>(decimalNumber(text));
            return true;
        case Conversion::kReversedBoolean:
            *static_cast<uint8_t*>(out) = static_cast<uint8_t>(decimalNumber(text)) == 0 ? 1 : 0;
            return true;
        case Conversion::kText: {
            size_t length = strlen(text);
            // A text of exactly `bound` bytes is whole, and its NUL one byte behind: meant.
            if (length > bound) length = bound == 0 ? 0 : bound - 1;
            char* to = static_cast<char*>(out);
            memcpy(to, text, length);
            to[length] = '\0';
            return true;
        }
        case Conversion::kNoConversion:
        case Conversion::kUnknown:
            break;
    }
    return false;
}

// A text output that its caller vouches for.
constexpr uint32_t kUnbounded = 0xFFFFFFFF;

// The generic get; a text is cut to `bound` bytes.
uint32_t readVariable(const MappingRow* rows, uint32_t radio, uint32_t ssid, uint32_t node, void* out, uint32_t bound) {
    static constexpr char kFunction[] = "Quorvel_P_WiFiWlcsmMngrGet";
    if (!indicesAreValid(radio, ssid)) {
        Quorvel_LogPrint(kLogError, kLogFile, kFunction, __LINE__, "Invalid radioIdx[%u] or ssidIdx[%u]", radio, ssid);
        return kInvalidInput;
    }
    const MappingRow& row = rows[node];
    const SpecialCase at{static_cast<uint32_t>(rows[0].node), node};
    const Conversion conversion = conversionOf(row);
    alignas(32) char local[kValueSize];
    memset(local, 0, sizeof local);
    char* text = conversion == Conversion::kNoConversion ? static_cast<char*>(out) : local;
    if (row.variable[0] == '\0') {
        Quorvel_LogPrint(kLogError, kLogFile, kFunction, __LINE__, "Couldn't find node[%d] in the mapping table.",
                         node);
        return kFailed;
    }
    const uint32_t radioIndex = radio - 1;
    const uint32_t ssidIndex = subIndex(ssid);
    // The messages name the plain call, not the extended one that is made: meant.
    if (wlcsm_mngr_ext_get(radioIndex, ssidIndex, row.variable, text) == 0) {
        if (strcmp(row.variable, "wlFltMacList") != 0) {
            Quorvel_LogPrint(kLogError, kLogFile, kFunction, __LINE__,
                             "wlcsm_mngr_get: radio[%d], ssid[%d], varName[%s] FAIL.", radioIndex, ssidIndex,
                             row.variable);
            return kFailed;
        }
        readAbsentFilterList(at, out);
    } else if (specialCaseGet(at, text, out)) {
        Quorvel_LogPrint(kLogTraffic, kLogFile, "Quorvel_P_WiFiSpecialCaseGet", __LINE__,
                         "SpecialCaseHit: objIdx[%d], nodeIdx[%d]", at.object, at.node);
    } else if (!convert(conversion, text, out, bound)) {
        Quorvel_LogPrint(kLogTraffic, kLogFile, kFunction, __LINE__,
                         "Invalid nodeType[%s] for radio[%d], ssid[%d], varName[%s].", row.conversion, radioIndex,
                         ssidIndex, row.variable);
    }
    Quorvel_LogPrint(kLogTraffic, kLogFile, kFunction, __LINE__,
                     "wlcsm_mngr_get: radio[%d], ssid[%d], varName[%s] value[%s] SUCCESS.", radioIndex, ssidIndex,
                     row.variable, text);
    return kSuccess;
}

// The radio of an instance: the top-level object and radios are known by their own number, the rest by their slot.
uint32_t radioOf(ObjectIndex object, uint32_t i) {
    return object <= kWiFiRadioObject ? i : WiFiSystemAccessPointRadioInstanceGet(i);
}

// The SSID of an instance, 1 for the top-level object and radios.
uint32_t ssidOf(ObjectIndex object, uint32_t i) {
    return object <= kWiFiRadioObject ? 1 : i;
}

uint32_t readMapped(ObjectIndex object, uint32_t i, uint32_t node, void* out, uint32_t bound) {
    return readVariable(kMappings[object].rows, radioOf(object, i), ssidOf(object, i), node, out, bound);
}

}  // namespace

uint32_t readMapped(ObjectIndex object, uint32_t i, uint32_t node, void* out) {
    return readMapped(object, i, node, out, kUnbounded);
}

uint32_t readMapped(ObjectIndex object, uint32_t i, uint32_t node, char* buf, uint32_t len) {
    return readMapped(object, i, node, static_cast<void*>(buf), len);
}

uint32_t applyMapped(ObjectIndex object, uint32_t i, void* ctx) {
    const Mapping& mapping = kMappings[object];
    return Quorvel_P_WiFiApplyContext(radioOf(object, i), ssidOf(object, i), ctx, mapping.rows, mapping.count);
}

}  // namespace quorvel

int32_t Quorvel_P_WiFiWlcsmMngrGet(uint32_t radio, uint32_t ssid, uint32_t node, const void* table, void* out,
                                   uint32_t flags, uint32_t reserved, uint32_t outLen) {
    (void)reserved;
    constexpr uint32_t kBoundedText = 2;
    const uint32_t bound = (flags & kBoundedText) != 0 ? outLen : quorvel::kUnbounded;
    return static_cast<int32_t>(
        quorvel::readVariable(static_cast<const MappingRow*>(table), radio, ssid, node, out, bound));
}

namespace quorvel {
namespace {

uint32_t wordAt(const char* field) {
    uint32_t value = 0;
    memcpy(&value, field, sizeof value);
    return value;
}

enum class Special : uint8_t { kNone, kSkip, kWrite };

// Returns whether the node is a special case, and then its text and whether it is written.
Special specialCaseSet(SpecialCase at, const char* field, char* text) {
    if (!mayBeSpecial(at)) return Special::kNone;
    if (at.is(kWiFiAccessPointObject, WiFiAccessPointNode::AccessControlFilterEnabled)) {
        // Enabling writes nothing: the mode comes with AccessControlFilterAccessAllow.
        if (*field != 0) return Special::kSkip;
        copyText(text, kValueSize, "disabled");
        return Special::kWrite;
    }
    if (at.is(kWiFiAccessPointObject, WiFiAccessPointNode::AccessControlFilterAccessAllow)) {
        copyText(text, kValueSize, wordAt(field) == 1 ? "allow" : "deny");
        return Special::kWrite;
    }
    if (at.is(kWiFiAccessPointObject, WiFiAccessPointNode::ClearAccessControlFilterTable)) {
        return *field == 1 ? Special::kWrite : Special::kSkip;
    }
    if (at.is(kWiFiAccessPointSecurityObject, WiFiAccessPointSecurityNode::WPAEncryption)) {
        const uint32_t code = wordAt(field);
        if (code < sizeof wpaEncryptionMapper / sizeof *wpaEncryptionMapper) {
            copyText(text, kValueSize, wpaEncryptionMapper[code].manager);
        } else {
            // The empty text is written all the same: meant.
            Quorvel_LogPrint(kLogError, kLogFile, "Quorvel_P_WiFiSpecialCaseSet", __LINE__, "Invalid wpaEncryption[%d]",
                             code);
        }
        return Special::kWrite;
    }
    return Special::kNone;
}

// Returns whether the conversion is known, and then the field's text. A text field is bounded by `capacity`.
bool convertField(Conversion conversion, const char* field, size_t capacity, char* text) {
    switch (conversion) {
        case Conversion::kUint32:
            appendDecimal(text, wordAt(field));
            return true;
        case Conversion::kInt32:
            appendDecimal(text, static_cast<int32_t>(wordAt(field)));
            return true;
        case Conversion::kBoolean:
            appendDecimal(text, static_cast<uint32_t>(static_cast<uint8_t>(*field)));
            return true;
        case Conversion::kReversedBoolean:
            appendDecimal(text, uint32_t{*field == 0});
            return true;
        case Conversion::kText:
            memcpy(text, field, strnlen(field, capacity));
            return true;
        case Conversion::kNoConversion:
        case Conversion::kUnknown:
            break;
    }
    return false;
}

// Writes one marked node.
void applyNode(uint32_t radioIndex, uint32_t ssidIndex, const char* ctx, const MappingRow* rows, uint32_t node,
               uint32_t count) {
    const char* function = "Quorvel_P_WiFiApplyContext";
    const MappingRow& row = rows[node];
    const SpecialCase at{static_cast<uint32_t>(rows[0].node), node};
    const char* field = ctx + row.field;
    // One byte more than a text's 1024, so that a foreign table's longest text is terminated.
    char text[kValueSize + 1];
    memset(text, 0, sizeof text);
    const Special special = specialCaseSet(at, field, text);
    if (special != Special::kNone) {
        const bool doAction = special == Special::kWrite;
        Quorvel_LogPrint(kLogTraffic, kLogFile, "Quorvel_P_WiFiSpecialCaseSet", __LINE__,
                         "SpecialCaseHit: objIdx[%d], nodeIdx[%d], value[%s], doAction[%d]", at.object, at.node, text,
                         doAction);
        if (!doAction) return;
    } else if (!convertField(conversionOf(row), field, textCapacity(rows, node, count), text)) {
        Quorvel_LogPrint(kLogError, kLogFile, function, __LINE__,
                         "Invalid nodeType[%s] for radio[%d], ssid[%d], varName[%s].", row.conversion, radioIndex,
                         ssidIndex, row.variable);
        return;
    }
    if (wlcsm_mngr_set(radioIndex, ssidIndex, row.variable, text) == 0) {
        Quorvel_LogPrint(kLogTraffic, kLogFile, function, __LINE__,
                         "wlcsm_mngr_set: radio[%d], ssid[%d], varName[%s] value[%s] SUCCESS.", radioIndex, ssidIndex,
                         row.variable, text);
    } else {
        Quorvel_LogPrint(kLogError, kLogFile, function, __LINE__,
                         "wlcsm_mngr_set: radio[%d], ssid[%d], varName[%s] value[%s] FAIL.", radioIndex, ssidIndex,
                         row.variable, text);
    }
}

}  // namespace
}  // namespace quorvel

uint32_t Quorvel_P_WiFiApplyContext(uint32_t radio, uint32_t ssid, void* ctx, const void* table, uint32_t count) {
    if (!quorvel::indicesAreValid(radio, ssid)) {
        QUORVEL_LOG_ERROR("Invalid radioIdx[%u] or ssidIdx[%u]", radio, ssid);
        return kInvalidInput;
    }
    const MappingRow* rows = static_cast<const MappingRow*>(table);
    // In increasing order: of two nodes that share a variable, the higher one's text stays.
    for (uint32_t node = 1; node < count; ++node) {
        if (Quorvel_IsContextSetMap(ctx, node) == 0) continue;
        if (rows[node].variable[0] == '\0') {
            QUORVEL_LOG_ERROR(" No direct wlmgnr mapping for node[%d].", node);
            continue;
        }
        quorvel::applyNode(radio - 1, quorvel::subIndex(ssid), static_cast<const char*>(ctx), rows, node, count);
    }
    QUORVEL_LOG_DONE();
    return kSuccess;
}

// The global lock.

namespace {
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
    QUORVEL_LOG_TRACE("%s Enter", __func__);
    uint32_t result = WiFiLock();
    if (result != 0) {
        QUORVEL_LOG_ERROR("Lock failed, result %d", result);
        return result;
    }
    if (wlcsm_mngr_save_nvram(0, 9, 1) == 0) {
        // The lock stays held: meant.
        QUORVEL_LOG_ERROR("wlcsm_mngr_run_cmd - WLCSM_MNGR_CMD_SAVE_NVRAM, FAIL.");
        return kFailed;
    }
    result = WiFiUnlock();
    if (result != 0) {
        QUORVEL_LOG_ERROR("Unlock failed, result %d", result);
        return result;
    }
    QUORVEL_LOG_DONE();
    return kSuccess;
}

// Start-up and shut-down.

namespace {

constexpr char kBoardIdFile[] = "/tmp/i2cget";
constexpr char kPciFile[] = "/tmp/lspci";
constexpr char kChipCountFile[] = "/tmp/wl_instances.txt";
constexpr char kDaemonSection[] = "Device.WiFi.Daemon";
// The folder is called loca: meant.
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

void reportBoard(const char* identifier) {
    static constexpr char kAccepted[][7] = {"0x0030", "0x0040", "0x0070", "0x0160", "0x0080"};
    // Four characters are compared: whatever begins with 0xff is no identifier. Meant.
    if (identifier[0] == '\0' || strncmp(identifier, "0xffff", 4) == 0) {
        QUORVEL_LOG_AS("WiFiInit", quorvel::kLogError, "WBID is not supported");
        return;
    }
    for (const char* accepted : kAccepted) {
        if (strncmp(identifier, accepted, 6) == 0) return;
    }
    // Start-up goes on, whatever the message says: meant.
    QUORVEL_LOG_AS("WiFiInit", quorvel::kLogError, "Found WBID:%s unsupported, WiFiInit terminated.", identifier);
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
        QUORVEL_LOG_AS("WiFiInit", quorvel::kLogError, "Open %s fail.", kChipCountFile);
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
        QUORVEL_LOG_AS(function, quorvel::kLogError, "WiFiSystemInit Failure with errno %d", result);
        return result;
    }
    say("Loading wireless driver...\n");
    Driver driver;
    if (chips != 0) {
        result = findDriver("WL_Driver", driver);
        if (result != 0) {
            QUORVEL_LOG_AS(function, quorvel::kLogError, "Don't find WL_Driver in configure file.");
            return result;
        }
        say("Loading WL wireless driver...\n");
        loadDriver(driver);
    }
    result = findDriver("WLCSM_Driver", driver);
    if (result != 0) {
        QUORVEL_LOG_AS(function, quorvel::kLogError, "Don't find WLCSM_Driver in configure file.");
        return result;
    }
    say("Loading WLCSM driver...\n");
    loadDriver(driver);
    if (!raisePriority("wler_thread0")) {
        QUORVEL_LOG_AS(function, quorvel::kLogError, "Could not set priority on wler_thread0.\n");
    }
    if (!raisePriority("wler_thread1")) {
        QUORVEL_LOG_AS(function, quorvel::kLogError, "Could not set priority on wler_thread1.\n");
    }
    result = Quorvel_P_WiFiLaunchWldaemon();
    if (result != 0) {
        QUORVEL_LOG_AS(function, quorvel::kLogError, "Quorvel_P_WiFiLaunchWldaemon Failure with errno %d", result);
    }
    return result;
}

void fillDefaultDaemon(Spawn& info) {
    memset(&info, 0, sizeof info);
    quorvel::copyText(info.program, sizeof info.program, kDefaultDaemon);
    quorvel::copyText(info.arguments, sizeof info.arguments, kDefaultDaemonArguments);
}

}  // namespace

void Quorvel_P_WiFiFileCopyToBuffer(const char* path, char* buffer, uint32_t size) {
    FILE* file = fopen(path, "r");
    if (file == nullptr) {
        QUORVEL_LOG_ERROR("File %s Open fail.", path);
        return;
    }
    (void)!fgets(buffer, static_cast<int>(size), file);  // an empty file leaves the caller's empty buffer
    fclose(file);
}

uint32_t WiFiInit(void) {
    // What the tools answer is read from their files, which tells their failures as well.
    (void)!system("i2cget -f -y 0x00 0x24 0x00 w > /tmp/i2cget");
    (void)!system("lspci > /tmp/lspci");
    char identifier[64] = {};
    Quorvel_P_WiFiFileCopyToBuffer(kBoardIdFile, identifier, sizeof identifier);
    reportBoard(identifier);

    FILE* listing = fopen(kPciFile, "r");
    if (listing == nullptr) {
        QUORVEL_LOG_ERROR("Open %s fail.", kPciFile);
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
    if (result != 0) QUORVEL_LOG_ERROR("Quorvel_P_WiFiTerminateWldaemon Failure with errno %d", result);
    WiFiNeighboringDiagnosticsResultUnInit();
    return static_cast<int32_t>(result);
}

uint32_t Quorvel_P_WiFiLaunchWldaemon(void) {
    Spawn info{};
    if (QuorvelUtilGetSpawnInfoFromCfg(kDaemonSection, info.forHost()) != 0) {
        QUORVEL_LOG_WARNING("Failed to get WiFi daemon info from config file. Fall back to default...");
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
        QUORVEL_LOG_ERROR("could not spawn child %s", program);
    }
    QUORVEL_LOG_DONE();
    return result;
}

uint32_t Quorvel_P_WiFiTerminateWldaemon(void) {
    Spawn info{};
    // Unlike the launch, silent and without options: meant.
    if (QuorvelUtilGetSpawnInfoFromCfg(kDaemonSection, info.forHost()) != 0) fillDefaultDaemon(info);
    const uint32_t result = QuorvelOsTerminateProcess(info.forHost(), info.arguments);
    QUORVEL_LOG_DONE();
    return result;
}

uint32_t Quorvel_P_WiFiSetCurrentTimeAsStartTime(uint32_t radio) {
    char text[64] = {};
    snprintf(text, sizeof text, "%d", static_cast<int32_t>(wlcsm_get_systemUpSecs()));
    (void)wlcsm_mngr_set(radio - 1, 0, "wlBootTime", text);  // a radio without start time reads as just started
    QUORVEL_LOG_TRAFFIC("Set startTime[%s] for radio[%d]", text, radio);
    QUORVEL_LOG_DONE();
    return kSuccess;
}

uint32_t Quorvel_P_WiFiGetTimeElapseFromStartTime(uint32_t radio, uint32_t* seconds) {
    if (radio == 0 || radio > WiFiSystemMaxNumberOfRadios()) {
        QUORVEL_LOG_ERROR("Incorrect radioIdx: %d WiFiSystemMaxNumberOfRadios():%d", radio,
                          WiFiSystemMaxNumberOfRadios());
        return kFailed;
    }
    *seconds = wlcsm_get_wlUpSecs(radio - 1);
    QUORVEL_LOG_TRAFFIC("Elapsed time: %ld secs for radio[%d]", static_cast<long>(*seconds), radio);
    QUORVEL_LOG_DONE();
    return kSuccess;
}
