// The front ends of Device.WiFi.AccessPoint.{i}.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiAccessPoint.def"

#include "wifi/model/EndRows.h"

// Reads without a row.

uint32_t WiFiAccessPointRxStatsResultGet(uint32_t ap, const char* mac, uint32_t w1, uint32_t w2, uint64_t* out) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiAccessPointObject, __func__);
    if (const uint32_t result = quorvel::beginGet(mac == nullptr ? nullptr : out, site)) return result;
    return quorvel::endGet(WiFiAccessPointRxStatsResultGetImpl(ap, mac, w1, w2, out), site);
}

uint32_t WiFiAccessPointTxStatsResultGet(uint32_t ap, const char* mac, uint32_t w1, uint32_t w2, uint64_t* out) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiAccessPointObject, __func__);
    if (const uint32_t result = quorvel::beginGet(mac == nullptr ? nullptr : out, site)) return result;
    return quorvel::endGet(WiFiAccessPointTxStatsResultGetImpl(ap, mac, w1, w2, out), site);
}

uint32_t WiFiAccessPointStatsGet(uint32_t ap, const char* mac, void* record, uint64_t* out) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiAccessPointObject, __func__);
    if (const uint32_t result = quorvel::beginGet(mac == nullptr || record == nullptr ? nullptr : out, site)) {
        return result;
    }
    return quorvel::endGet(WiFiAccessPointStatsGetImpl(ap, mac, record, out), site);
}

uint32_t WiFiAccessPointSsidNameStatusGet(uint32_t ap, void* buffer) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiAccessPointObject, __func__);
    if (const uint32_t result = quorvel::beginGet(buffer, site)) return result;
    return quorvel::endGet(WiFiAccessPointSsidNameStatusGetImpl(ap, buffer), site);
}

uint32_t WiFiAccessPointMacModeGet(uint32_t ap, uint32_t* out) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiAccessPointObject, __func__);
    return quorvel::get(ap, out, &WiFiAccessPointMacModeGetImpl, site);
}
