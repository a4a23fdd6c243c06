#include <cstring>

#define QUORVEL_DEFINITION "wifi/QuorvelWiFiAccessPointWPS.def"
#include "wifi/FrontEndExpansion.h"
#include "wifi/QuorvelWiFiInternal.h"

#define THIS_OBJECT WiFiAccessPointWPS

// Marks no node: the method goes with the next ButtonPush.
uint32_t WiFiAccessPointWPSMethodSet(void* ctx, uint32_t, const char* method, uint32_t len) {
    QUORVEL_SITE("WiFiAccessPointWPSMethodSet");
    quorvel::logEnter(site);
    if (const uint32_t result = quorvel::checkContext(ctx, site)) return result;
    if (method == nullptr) return quorvel::refuse(site, quorvel::kInvalidInput, "Invalid input params");
    auto& field = static_cast<WiFiAccessPointWPSContext*>(ctx)->Method;
    if (len > sizeof field - 1) return quorvel::refuse(site, quorvel::kValueOutOfRange, "Value out of range");
    const size_t length = strnlen(method, len);
    memcpy(field, method, length);
    memset(field + length, 0, sizeof field - length);
    quorvel::logDone(site);
    return quorvel::kSuccess;
}

uint32_t WiFiAccessPointWPSCancel(void* ctx) {
    QUORVEL_SITE("WiFiAccessPointWPSCancel");
    quorvel::logEnter(site);
    if (const uint32_t result = quorvel::checkContext(ctx, site)) return result;
    (void)Quorvel_ContextSetMap(ctx, quorvel::kWpsCancelNode);  // an initialised context takes it
    quorvel::logDone(site);
    return quorvel::kSuccess;
}
