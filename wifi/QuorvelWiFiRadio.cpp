// The front ends of Device.WiFi.Radio.{i}.
#include "wifi/frontend/BeginFrontEnds.h"

#include "wifi/QuorvelWiFiRadio.def"

#include "wifi/model/EndRows.h"

// A read without a row.
uint32_t WiFiRadioChannelStatsGet2(uint32_t radio, void* record, uint32_t length) {
    static constexpr auto site = quorvel::siteOf(quorvel::kWiFiRadioObject, __func__);
    if (const uint32_t result = quorvel::beginGet(record, site)) return result;
    return quorvel::endGet(WiFiRadioChannelStatsGet2Impl(radio, record, length), site);
}
