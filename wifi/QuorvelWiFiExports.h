// Every exported function and object of the library, declared. ExportedFunctions.def says what each function does.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>

#include "wifi/model/Signatures.h"

#define QUORVEL_EXPORT extern "C" __attribute__((visibility("default")))

/// Called from the listener's thread, without the library's lock: access point (from 1), event code (8 or 12) and the
/// station record (124 bytes, valid during the call). Its result is ignored.
using AssociatedDeviceCallback = uint32_t (*)(uint32_t ap, uint32_t event, void* station);

#define FUNCTION(result, name, parameters, arguments) QUORVEL_EXPORT result name parameters;
#include "wifi/model/ExportedFunctions.def"

/// The path of the event socket.
QUORVEL_EXPORT const char notifySocketPath[19];
/// The listener's thread.
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
