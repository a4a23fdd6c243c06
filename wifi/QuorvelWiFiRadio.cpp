#define QUORVEL_DEFINITION "wifi/QuorvelWiFiRadio.def"
#include "wifi/FrontEndExpansion.h"

// A read without a row in the table.
#define THIS_OBJECT WiFiRadio
uint32_t WiFiRadioChannelStatsGet2(uint32_t radio, void* record, uint32_t length) {
    QUORVEL_SITE("WiFiRadioChannelStatsGet2");
    if (const uint32_t result = quorvel::beginGet(record, site)) return result;
    return quorvel::endGet(WiFiRadioChannelStatsGet2Impl(radio, record, length), site);
}
