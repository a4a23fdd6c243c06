// What the implementation files share: logging, the bridge's mapping tables, the manager's and the library's own
// records, and the helpers that more than one file calls. Nothing here is exported.
#pragma once

#include <quorvel.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "wifi/DecimalText.h"
#include "wifi/FrontEnd.h"
#include "wifi/QuorvelWiFiContexts.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiImplementations.h"

// Log with the line they stand on. Each file that logs says its own path, without extension, as kLogFile. The function
// is the one they stand in, or the one that a helper works for.
#define QUORVEL_LOG_AS(function, level, ...) Quorvel_LogPrint(level, kLogFile, function, __LINE__, __VA_ARGS__)
#define QUORVEL_LOG(level, ...) QUORVEL_LOG_AS(__func__, level, __VA_ARGS__)
#define QUORVEL_LOG_ERROR(...) QUORVEL_LOG(::quorvel::kLogError, __VA_ARGS__)
#define QUORVEL_LOG_WARNING(...) QUORVEL_LOG(::quorvel::kLogWarning, __VA_ARGS__)
#define QUORVEL_LOG_TRAFFIC(...) QUORVEL_LOG(::quorvel::kLogTraffic, __VA_ARGS__)
#define QUORVEL_LOG_TRACE(...) QUORVEL_LOG(::quorvel::kLogTrace, __VA_ARGS__)
#define QUORVEL_LOG_DONE() QUORVEL_LOG_TRACE("%s DONE", __func__)

#pragma GCC visibility push(hidden)

namespace quorvel {

using Word = std::uintptr_t;

/// What every buffer has that the manager writes into.
inline constexpr size_t kValueSize = 1024;

/// Binds a node to its variable. Row 0 is the header: the object's index, 0 and two empty texts.
struct MappingRow {
    Word node;
    Word field;  ///< byte offset of the node's field from the start of the context
    const char* conversion;
    const char* variable;
};
static_assert(sizeof(MappingRow) == 4 * sizeof(Word));

/// The conversion names, each once: the library's own tables point at these.
namespace conversion {
extern const char UINT32[7];
extern const char INT32[6];
extern const char BOOLEAN[8];
extern const char RBOOLEAN[9];
extern const char CHAR[5];
}  // namespace conversion

#define OBJECT(index, path, parameters, ...) \
    extern const MappingRow QUORVEL_CAT3(k, THIS_OBJECT, Mapping)[(parameters) + 1];
#include "wifi/MappedObjects.h"

/// An object's mapping table; all null for an object without one.
struct Mapping {
    const MappingRow* rows;
    const uint16_t* fieldSizes;  ///< bytes of each row's field
    uint32_t count;              ///< rows, the header included
};

/// By object index; objects from kMayHaveMapping on have none.
inline constexpr size_t kMayHaveMapping = 12;
extern const Mapping kMappings[kMayHaveMapping];

/// Returns how many bytes of text the field of `node` holds. A table that is not the library's own is bounded by what
/// follows the field in its rows.
size_t textCapacity(const MappingRow* table, uint32_t node, uint32_t count);

/// The position of an SSID or access point (from 1) within its radio: 0 to 7.
constexpr uint32_t subIndex(uint32_t instance) {
    return (instance - 1) & 7;
}

/// What the manager knows an access point or SSID by, indices from 0.
struct ManagerAddress {
    uint32_t radio;
    uint32_t sub;
    explicit ManagerAddress(uint32_t instance)
        : radio(WiFiSystemAccessPointRadioInstanceGet(instance) - 1), sub(subIndex(instance)) {}
};

/// Read the variable of a node of an object with a mapping table, for instance `i` (1 for the top-level object). Return
/// the bridge's code. A text's buffer has one byte more than `len`.
uint32_t readMapped(ObjectIndex object, uint32_t i, uint32_t node, void* out);
uint32_t readMapped(ObjectIndex object, uint32_t i, uint32_t node, char* buf, uint32_t len);

/// Writes the marked nodes of an object with a mapping table, likewise.
uint32_t applyMapped(ObjectIndex object, uint32_t i, void* ctx);

/// Tells whether a text begins with another.
inline bool startsWith(const char* text, const char* prefix) {
    return strncmp(text, prefix, strlen(prefix)) == 0;
}

/// A manager variable read with the plain call into a cleared buffer; what was not read is the empty text.
struct ManagerText {
    char text[kValueSize];
    ManagerText() {
        memset(text, 0, sizeof text);
    }
    /// The text as a decimal number; 0 for the empty text.
    [[nodiscard]] int32_t number() const;
};

/// Reads `variable`, indices from 0. Returns whether the manager succeeded.
bool readManager(uint32_t radio, uint32_t sub, const char* variable, ManagerText& value);

/// Copies a text into a buffer of `size` bytes, cut to fit, always terminated.
void copyText(char* to, size_t size, const char* from);

/// Copies the text of a field of `capacity` bytes to a buffer of `len`, terminated where there is room.
void copyFieldText(char* buf, uint32_t len, const char* field, size_t capacity);

/// One radio's neighbour diagnostic: its state and how many results are stored.
struct RadioDiagnosticsRecord {
    uint32_t diagnosticsState;
    uint32_t resultNumberOfEntries;
};
inline constexpr uint32_t kRadios = 3;
extern RadioDiagnosticsRecord radioDiagnostics[kRadios];

/// A neighbouring network as a scan found it. Texts that fill their field have no terminator.
struct NeighboringWiFiResult {
    char reserved0[132];
    char radio[32];
    char ssid[32];
    char bssid[20];
    uint32_t mode;
    uint32_t channel;
    int32_t signalStrength;  ///< dBm
    uint32_t securityModeEnabled;
    uint32_t encryptionMode;
    uint32_t operatingFrequencyBand;
    char supportedStandards[64];
    char operatingStandards[256];
    uint32_t operatingChannelBandwidth;
    uint32_t beaconPeriod;
    int32_t noise;  ///< dBm
    char basicDataTransferRates[256];
    char supportedDataTransferRates[256];
    uint32_t dtimPeriod;
    uint32_t qbssUtilization;  ///< percent
};
static_assert(sizeof(NeighboringWiFiResult) == 1092);
static_assert(offsetof(NeighboringWiFiResult, ssid) == 164 && offsetof(NeighboringWiFiResult, bssid) == 196);
static_assert(offsetof(NeighboringWiFiResult, mode) == 216 && offsetof(NeighboringWiFiResult, noise) == 568);
static_assert(offsetof(NeighboringWiFiResult, qbssUtilization) == 1088);

/// One line of /proc/net/dev.
struct NetDevStats {
    char ifName[128];
    uint32_t rxBytes;
    uint32_t rxPackets;
    uint32_t rxErrors;
    uint32_t rxDrops;
    uint32_t rxFifo;
    uint32_t rxFrame;
    uint32_t rxCompressed;
    uint32_t rxMulticast;
    uint32_t txBytes;
    uint32_t txPackets;
    uint32_t txErrors;
    uint32_t txDrops;
    uint32_t txFifo;
    uint32_t txColls;
    uint32_t txCarrier;
    uint32_t txCompressed;
};
static_assert(sizeof(NetDevStats) == 192);

/// The manager's record of a station, as "wlStaInfo_%d" reads.
struct StationInformation {
    char macAddress[18];  ///< colon-separated hexadecimal, NUL-terminated
    char reserved18[80];
    uint8_t authenticationState;
    uint8_t active;
    int32_t rssi;  ///< dBm
    char reserved104[4];
    uint32_t receiveRate;   ///< of the last data frame towards the station
    uint32_t transmitRate;  ///< of the last data frame from the station
    uint32_t retransmissions;
    uint32_t snr;
    char operStandard[64];
    uint32_t operBandwidth;
    char reserved192[4];
    uint32_t counters[10];
};
static_assert(offsetof(StationInformation, authenticationState) == 98 && offsetof(StationInformation, active) == 99);
static_assert(offsetof(StationInformation, rssi) == 100 && offsetof(StationInformation, receiveRate) == 108);
static_assert(offsetof(StationInformation, transmitRate) == 112 &&
              offsetof(StationInformation, retransmissions) == 116);
static_assert(offsetof(StationInformation, snr) == 120 && offsetof(StationInformation, operStandard) == 124);
static_assert(offsetof(StationInformation, operBandwidth) == 188 && offsetof(StationInformation, counters) == 196);
static_assert(sizeof(StationInformation) == 236);

/// A station record in a buffer that the manager may fill.
union StationBuffer {
    char text[kValueSize];
    StationInformation station;
};

/// The manager's variable of the station at `position` (from 0).
struct StationVariable {
    char name[24] = "wlStaInfo_";
    explicit StationVariable(int32_t position) {
        appendDecimal(name + sizeof "wlStaInfo_" - 1, position);
    }
};

/// Marks the end of a WPS exchange; above the object's parameters.
inline constexpr uint32_t kWpsCancelNode = 9;

/// Characters of a MAC address as text.
inline constexpr size_t kMacTextLength = 17;

}  // namespace quorvel

/// Band-steering policy of a radio, as its non-volatile text holds it.
struct BsdSteeringPolicy {
    int32_t BwUtil;  ///< percent
    int32_t samplePeriod;
    int32_t consecutiveSampleCount;
    int32_t RssiThreshold;
    int32_t PhyRateThreshold;
    int32_t extFlag;
};

extern "C" {

/// Reads the policy of `radio` (from 1). Returns 0, or 1 when the radio has none; the policy is then all 0.
uint32_t get_bsd_steering_policy(uint32_t radio, BsdSteeringPolicy* policy);
/// Replaces the field of `node` (53, 54 or 55) by `value` and stores the policy. Returns 0 or 1.
uint32_t set_bsd_steering_policy(uint32_t radio, int32_t value, uint32_t node);
/// Replaces every `from` in `text` by `to`.
void str_replace(char* text, char from, char to);
/// Reads (action 0) or writes (action 1) field 0 to 4 of the contention parameters of access category `ac` (1 to 8) of
/// access point `ap` (from 1). Returns 0 or 1.
uint32_t wifi_ap_ac_config(uint32_t ap, uint32_t ac, uint32_t field, uint32_t action, uint32_t* value);
/// Translates a security mode: from the data model's name when `loading` is not 0, else from the manager's. Always 0.
uint32_t wlcsm_dm_adjust_security(char* dataModel, uint32_t dataModelLen, char* manager, uint32_t managerLen,
                                  uint8_t loading);

/// Reads the first line of a file, at most `size` - 1 characters, newline included. Leaves the buffer when it cannot.
void Quorvel_P_WiFiFileCopyToBuffer(const char* path, char* buffer, uint32_t size);

/// Reads the counter of `node` from the output of the `wl` utility: 32 bits. Returns 0, 1 or 6.
uint32_t Quorvel_P_WiFiRadioStatsGet(uint32_t radio, uint32_t node, void* out);
/// Sums the drops of the radio's interfaces. Returns 0 or 1.
uint32_t Quorvel_P_WiFiRadioStatsDiscardPacketsGet(uint32_t radio, uint32_t* sent, uint32_t* received);
/// Reads and parses the next line of /proc/net/dev. Returns 0, or 1 at the end or on a malformed line.
uint32_t Quorvel_P_WiFiSSIDStatsNetDevStatsGetNext(FILE* stream, quorvel::NetDevStats* record);
/// Reads the counter of `node` of the interface that carries the SSID. Returns 0, 1 or 6.
uint32_t Quorvel_P_WiFiSSIDStatsGet(uint32_t ssid, uint32_t node, uint32_t* out);

/// Replaces the results of a radio (from 0) by `count` cleared ones. Returns 0 or 1.
uint32_t WiFiNeighboringDiagnosticsResultInit(uint32_t radioIndex, uint32_t count,
                                              quorvel::NeighboringWiFiResult** array);
/// Frees the results of the first two radios.
void WiFiNeighboringDiagnosticsResultUnInit(void);
/// Finds result `k` (from 1) in the sequence of all radios' results. Returns 0 or 6.
uint32_t QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(uint32_t k, quorvel::NeighboringWiFiResult** record);

/// Reads the station count of `ap` and station `dev` (from 1). Returns 0 or 1.
uint32_t Quorvel_P_GetWiFiAccessPointAssociatedDeviceList(uint32_t ap, uint32_t dev, uint32_t* count, void* record);

uint32_t WiFiNewAPAssociatedDeviceCallbackRegisterImpl(AssociatedDeviceCallback callback);
uint32_t WiFiNewAPAssociatedDeviceCallbackDeRegisterImpl(void);
/// The listener: its argument is the callback.
void* qvl_thread_main_loop(void* callback);
}

#pragma GCC visibility pop
