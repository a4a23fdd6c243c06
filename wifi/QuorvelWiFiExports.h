// Every exported function and object of the library, declared: the front ends expanded from the definitions, the rest
// in full. Result codes are described at quorvel::Result.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>

#include "wifi/Preprocessor.h"

#define QUORVEL_EXPORT extern "C" __attribute__((visibility("default")))

// Front ends and snapshots of the 19 objects.
#define OBJECT(...)                                                                                   \
    QUORVEL_EXPORT uint32_t OBJECT_FUNCTION(InitContext)(void* ctx);                                  \
    QUORVEL_EXPORT uint32_t OBJECT_FUNCTION(CheckContextNodeSet)(void* ctx, uint32_t node);           \
    QUORVEL_EXPORT uint32_t OBJECT_FUNCTION(ApplyContext)(void* ctx LAST_INSTANCES THIS_APPLY_EXTRA); \
    QUORVEL_EXPORT uint32_t OBJECT_FUNCTION(InstanceGet)(void* ctx LAST_INSTANCES);
#define DECLARE_READ_(name, type) QUORVEL_EXPORT uint32_t FUNCTION(name, Get)(INSTANCES OUTPUT_##type);
#define DECLARE_READ_MAPPED(name, type) DECLARE_READ_(name, type)
#define DECLARE_READ_BYPASSED(name, type) DECLARE_READ_(name, type)
#define DECLARE_READ_OWN(name, type) DECLARE_READ_(name, type)
#define DECLARE_READ_INERT(name, type) DECLARE_READ_(name, type)
#define DECLARE_READ_COUNTER(name, type) DECLARE_READ_(name, type)
#define DECLARE_READ_RESULT(name, type) DECLARE_READ_(name, type)
#define DECLARE_READ_STATION_TEXT(name, type) DECLARE_READ_(name, type)
#define DECLARE_READ_STATION_NUMBER(name, type) DECLARE_READ_(name, type)
#define DECLARE_READ_STATION(name, type) \
    QUORVEL_EXPORT uint32_t FUNCTION(name, Get)(uint32_t ap, const char* mac, int32_t* out);
#define DECLARE_READ_NONE(name, type)
#define DECLARE_WRITE_RO(name, type)
#define DECLARE_WRITE_RW(name, type) QUORVEL_EXPORT uint32_t FUNCTION(name, Set)(void* ctx, INSTANCES INPUT_##type);
#define DECLARE_WRITE_WO(name, type) DECLARE_WRITE_RW(name, type)
#define DECLARE_WRITE_RW_NOW(name, type)
#define PARAMETER(node, name, access, type, accepted, read, ...) \
    DECLARE_READ_##read(name, type) DECLARE_WRITE_##access(name, type)
#include "wifi/QuorvelWiFiDataModel.def"

#undef DECLARE_READ_

// Setters that act at once.

/// Restarts every radio. Returns 0, or 1 when any restart failed (the others are restarted all the same).
QUORVEL_EXPORT uint32_t WiFiCommitSettingsSet(void);

/// Write one contention parameter of access category `ac` (1 to 8) of access point `ap` (from 1) to its non-volatile
/// text at once, without the lock; `ctx` is not looked at. Return 0, 1 when the text is absent or `ac` is out of range,
/// 8 for a value out of range: AIFSN 1 to 15 slots, ECWMin and ECWMax 0 to 15 (exponent), TxOpMax any.
QUORVEL_EXPORT uint32_t WiFiAccessPointACAIFSNSet(void* ctx, uint32_t ap, uint32_t ac, uint32_t value);
QUORVEL_EXPORT uint32_t WiFiAccessPointACECWMinSet(void* ctx, uint32_t ap, uint32_t ac, uint32_t value);
QUORVEL_EXPORT uint32_t WiFiAccessPointACECWMaxSet(void* ctx, uint32_t ap, uint32_t ac, uint32_t value);
QUORVEL_EXPORT uint32_t WiFiAccessPointACTxOpMaxSet(void* ctx, uint32_t ap, uint32_t ac, uint32_t value);

// Reads that have no row in the table.

/// Fills `record` (six 32-bit words, `length` bytes) with statistics of the radio's current channel. Returns 0 or 1.
QUORVEL_EXPORT uint32_t WiFiRadioChannelStatsGet2(uint32_t radio, void* record, uint32_t length);

/// Store the received (sent) statistics result of station `mac` on access point `ap`; `w1` and `w2` go to the manager
/// as they are. Return 0 or 1; the output is zeroed first.
QUORVEL_EXPORT uint32_t WiFiAccessPointRxStatsResultGet(uint32_t ap, const char* mac, uint32_t w1, uint32_t w2,
                                                        uint64_t* out);
QUORVEL_EXPORT uint32_t WiFiAccessPointTxStatsResultGet(uint32_t ap, const char* mac, uint32_t w1, uint32_t w2,
                                                        uint64_t* out);

/// Fills `record` with the manager's station information and `out` with its association count. Returns 0 or 1.
QUORVEL_EXPORT uint32_t WiFiAccessPointStatsGet(uint32_t ap, const char* mac, void* record, uint64_t* out);

/// Fills `buffer` with the manager's SSID status. Returns 0 or 1.
QUORVEL_EXPORT uint32_t WiFiAccessPointSsidNameStatusGet(uint32_t ap, void* buffer);

/// Stores the MAC filter mode that the `wl` utility reports. Returns 0 or 1.
QUORVEL_EXPORT uint32_t WiFiAccessPointMacModeGet(uint32_t ap, uint32_t* out);

/// Stages the method of the next ButtonPush: "PushButton" or "PIN", at most 15 characters. `node` is not looked at and
/// no node is marked. Returns 0, 2, 5, 6 or 8.
QUORVEL_EXPORT uint32_t WiFiAccessPointWPSMethodSet(void* ctx, uint32_t node, const char* method, uint32_t len);

/// Stages the end of a running exchange (marks node 9). Returns 0, 2 or 5.
QUORVEL_EXPORT uint32_t WiFiAccessPointWPSCancel(void* ctx);

// Lock, saving, start-up and shut-down.

/// Take and release the library's one mutex, "WiFi", created by the first lock. Return the host's code, 0 for success.
QUORVEL_EXPORT uint32_t WiFiLock(void);
QUORVEL_EXPORT uint32_t WiFiUnlock(void);

/// Asks the manager to save its configuration. Returns 0, the lock's or unlock's code, or 1 when the manager could not
/// save: the lock then stays held, which is meant.
QUORVEL_EXPORT uint32_t WifiSaveNvram(void);

/// Brings the board's Wi-Fi up: chips counted, drivers loaded, daemon launched, start times recorded. Returns 0 or the
/// first failing step's code; 1 when the list of PCI devices cannot be read.
QUORVEL_EXPORT uint32_t WiFiInit(void);

/// Ends the daemon and frees the stored scan results. Returns the termination's code, 0 for success.
QUORVEL_EXPORT int32_t WiFiUnInit(void);

QUORVEL_EXPORT uint32_t Quorvel_P_WiFiLaunchWldaemon(void);
QUORVEL_EXPORT uint32_t Quorvel_P_WiFiTerminateWldaemon(void);

/// Records the system's up-time as the start time of `radio` (from 1). Always 0.
QUORVEL_EXPORT uint32_t Quorvel_P_WiFiSetCurrentTimeAsStartTime(uint32_t radio);

/// Stores the seconds since the start time of `radio` (1 to 3). Returns 0, or 1 for another radio.
QUORVEL_EXPORT uint32_t Quorvel_P_WiFiGetTimeElapseFromStartTime(uint32_t radio, uint32_t* seconds);

// The bridge to the manager's variables.

/// Reads the variable of `node` in mapping `table` for `radio` (1 to 3) and `ssid` (1 to 24) and converts it into
/// `out`: one byte, one 32-bit word, or text. With `flags` 2 a text longer than `outLen` is cut to outLen - 1; one of
/// exactly outLen is whole and its NUL stands at out[outLen], so the buffer has one byte more. `reserved` is 0. Returns
/// 0, 1 (no variable, or the manager failed) or 6 (instance out of range).
QUORVEL_EXPORT int32_t Quorvel_P_WiFiWlcsmMngrGet(uint32_t radio, uint32_t ssid, uint32_t node, const void* table,
                                                  void* out, uint32_t flags, uint32_t reserved, uint32_t outLen);

/// Writes every marked node from 1 to count - 1 of `ctx` to its variable. A node that cannot be written is logged and
/// passed over. Returns 0, or 6 (instance out of range).
QUORVEL_EXPORT uint32_t Quorvel_P_WiFiApplyContext(uint32_t radio, uint32_t ssid, void* ctx, const void* table,
                                                   uint32_t count);

// System operations. Radios are 1 to 3, access points 1 to 24.

QUORVEL_EXPORT uint32_t WiFiSystemInit(void);
/// Starts (start != 0) or stops the security daemons of what `index` means to the manager. Returns 0, 1 or the lock's
/// code.
QUORVEL_EXPORT uint32_t WiFiSystemStartStopSecurityDaemons(uint32_t start, uint32_t index);
/// Do nothing and return 0.
QUORVEL_EXPORT uint32_t WiFiSystemReset(void);
QUORVEL_EXPORT uint32_t WiFiSystemResetToFactory(void);
/// Return 3 and 8.
QUORVEL_EXPORT uint32_t WiFiSystemMaxNumberOfRadios(void);
QUORVEL_EXPORT uint32_t WiFiSystemMaxNumberOfAccessPointsPerRadio(void);
/// Restarts the radio. Returns 0, 1 or the lock's code.
QUORVEL_EXPORT uint32_t WiFiSystemRadioInit(uint32_t radio);
QUORVEL_EXPORT uint32_t WiFiSystemResetRadioToFactory(uint32_t radio);
/// Resets one radio after the other. Returns 0 or the first failure, after which no radio is touched.
QUORVEL_EXPORT uint32_t WiFiSystemResetRadiosToFactory(void);
/// Takes the access point out of its slot. Returns 0, or 1 when it is out of range or in no slot.
QUORVEL_EXPORT uint32_t WiFiSystemAccessPointDelete(uint32_t ap);
/// Moves the access point to the first free slot of the radio. Returns 0 or 1; in a full row it is left without a slot.
QUORVEL_EXPORT uint32_t WiFiSystemAccessPointCreate(uint32_t radio, uint32_t ap);
/// Returns the radio whose slot holds the access point, or 0xFFFFFFFF.
QUORVEL_EXPORT uint32_t WiFiSystemAccessPointRadioInstanceGet(uint32_t ap);
QUORVEL_EXPORT uint32_t WiFiSystemResetAccessPointToFactory(uint32_t ap);

// The system object: a context without fields.
QUORVEL_EXPORT uint32_t WiFiSystemInitContext(void* ctx);
QUORVEL_EXPORT uint32_t WiFiSystemCheckContextNodeSet(void* ctx, uint32_t node);
QUORVEL_EXPORT uint32_t WiFiSystemApplyContext(void* ctx);
QUORVEL_EXPORT uint32_t WiFiSystemApplyContextImpl(void* ctx);
QUORVEL_EXPORT uint32_t WiFiSystemInstanceGet(void* ctx);

// Station events.

/// Called from the listener's thread, without the library's lock: access point (from 1), event code (8 or 12) and the
/// station record (124 bytes, valid during the call). What it returns is ignored.
using AssociatedDeviceCallback = uint32_t (*)(uint32_t ap, uint32_t event, void* station);

/// Starts a listener thread for `callback`. Returns 0, 1 when no thread could be created, 6 for a null callback.
QUORVEL_EXPORT uint32_t WiFiNewAPAssociatedDeviceCallbackRegister(AssociatedDeviceCallback callback);
/// Cancels the listener and closes its socket. Always 0.
QUORVEL_EXPORT uint32_t WiFiNewAPAssociatedDeviceCallbackDeRegister(void);

// Exported objects.

QUORVEL_EXPORT const char notifySocketPath[19];
QUORVEL_EXPORT pthread_t qvlThreadId;

/// Data-model security mode and the manager's "wlAuthMode".
struct AuthModePair {
    const char* dataModel;
    const char* manager;
};
QUORVEL_EXPORT const AuthModePair authModeMapper[8];

/// Data-model cipher code and the manager's "wlWpa".
struct WpaEncryptionPair {
    uint32_t code;
    const char* manager;
};
QUORVEL_EXPORT const WpaEncryptionPair wpaEncryptionMapper[3];
