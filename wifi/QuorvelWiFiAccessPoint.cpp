#define QUORVEL_DEFINITION "wifi/QuorvelWiFiAccessPoint.def"
#include "wifi/FrontEndExpansion.h"

// Reads without a row in the table.
#define THIS_OBJECT WiFiAccessPoint

uint32_t WiFiAccessPointRxStatsResultGet(uint32_t ap, const char* mac, uint32_t w1, uint32_t w2, uint64_t* out) {
    QUORVEL_SITE("WiFiAccessPointRxStatsResultGet");
    if (const uint32_t result = quorvel::beginGet(mac == nullptr ? nullptr : out, site)) return result;
    return quorvel::endGet(WiFiAccessPointRxStatsResultGetImpl(ap, mac, w1, w2, out), site);
}

uint32_t WiFiAccessPointTxStatsResultGet(uint32_t ap, const char* mac, uint32_t w1, uint32_t w2, uint64_t* out) {
    QUORVEL_SITE("WiFiAccessPointTxStatsResultGet");
    if (const uint32_t result = quorvel::beginGet(mac == nullptr ? nullptr : out, site)) return result;
    return quorvel::endGet(WiFiAccessPointTxStatsResultGetImpl(ap, mac, w1, w2, out), site);
}

uint32_t WiFiAccessPointStatsGet(uint32_t ap, const char* mac, void* record, uint64_t* out) {
    QUORVEL_SITE("WiFiAccessPointStatsGet");
    if (const uint32_t result = quorvel::beginGet(mac == nullptr || record == nullptr ? nullptr : out, site)) {
        return result;
    }
    return quorvel::endGet(WiFiAccessPointStatsGetImpl(ap, mac, record, out), site);
}

uint32_t WiFiAccessPointSsidNameStatusGet(uint32_t ap, void* buffer) {
    QUORVEL_SITE("WiFiAccessPointSsidNameStatusGet");
    if (const uint32_t result = quorvel::beginGet(buffer, site)) return result;
    return quorvel::endGet(WiFiAccessPointSsidNameStatusGetImpl(ap, buffer), site);
}

uint32_t WiFiAccessPointMacModeGet(uint32_t ap, uint32_t* out) {
    QUORVEL_SITE("WiFiAccessPointMacModeGet");
    return quorvel::get(ap, out, &WiFiAccessPointMacModeGetImpl, site);
}
