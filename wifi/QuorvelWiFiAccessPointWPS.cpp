// The front ends of Device.WiFi.AccessPoint.{i}.WPS.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiAccessPointWPS.def"

#include "wifi/model/EndRows.h"

// Marks no node: the method goes with the next ButtonPush.
uint32_t WiFiAccessPointWPSMethodSet(void* ctx, uint32_t, const char* method, uint32_t len) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiAccessPointWPSObject, __func__);
    quorvel::logEnter(site);
    if (const uint32_t result = quorvel::checkContext(ctx, site)) return result;
    if (method == nullptr) return quorvel::refuse(site, quorvel::kInvalidInput);
    auto& field = static_cast<WiFiAccessPointWPSContext*>(ctx)->Method;
    if (len > sizeof field - 1) return quorvel::refuse(site, quorvel::kValueOutOfRange);
    quorvel::fillField(field, sizeof field, method, len);
    quorvel::logDone(site);
    return quorvel::kSuccess;
}

uint32_t WiFiAccessPointWPSCancel(void* ctx) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiAccessPointWPSObject, __func__);
    quorvel::logEnter(site);
    if (const uint32_t result = quorvel::checkContext(ctx, site)) return result;
    (void)Quorvel_ContextSetMap(ctx, WiFiAccessPointWPSNode::Cancel);  // an initialised context takes it
    quorvel::logDone(site);
    return quorvel::kSuccess;
}
