// The exported objects beside the data model table, as the plug-in has them.
#include "wifi/QuorvelWiFiExports.h"

constinit const char notifySocketPath[19] = "/tmp/notify-socket";
/// The recorded library's, after each registration.
pthread_t qvlThreadId;

constinit const AuthModePair authModeMapper[8] = {
#define AUTH_MODE(dataModel, manager) {dataModel, manager},
#include "wifi/model/Mappers.def"
};
constinit const WpaEncryptionPair wpaEncryptionMapper[3] = {
#define WPA_ENCRYPTION(code, manager) {code, manager},
#include "wifi/model/Mappers.def"
};
