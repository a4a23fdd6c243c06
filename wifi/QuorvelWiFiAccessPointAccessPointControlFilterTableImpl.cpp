// The station filter's list: one text, read and replaced whole.
#include <cstring>

#include "wifi/Result.h"
#include "wifi/bridge/Mapped.h"
#include "wifi/records/Station.h"

#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiAccessPointAccessPointControlFilterTable.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiAccessPointAccessPointControlFilterTableNumberOfMacAddressGetImpl(uint32_t ap, uint32_t* out) {
    constexpr uint32_t kListLength = 576;
    *out = 0;
    char list[kListLength + 1] = {};
    const uint32_t result = WiFiAccessPointAccessPointControlFilterTableMacAddressGetImpl(ap, list, kListLength);
    if (result != 0) return result;
    // An address and the separator behind it; the last address has none.
    *out = static_cast<uint32_t>((strlen(list) + 1) / (quorvel::kMacTextLength + 1));
    return result;
}

uint32_t WiFiAccessPointAccessPointControlFilterTableApplyContextImpl(void* ctx, uint32_t ap) {
    return quorvel::applyMapped<quorvel::kWiFiAccessPointAccessPointControlFilterTableObject>(ap, ctx);
}
