// The station filter's list: one text, read and replaced whole.
#include <cstring>

#include "wifi/QuorvelWiFiInternal.h"

using quorvel::kWiFiAccessPointAccessPointControlFilterTableMapping;

#define QUORVEL_DEFINITION "wifi/QuorvelWiFiAccessPointAccessPointControlFilterTable.def"
#include "wifi/ImplementationExpansion.h"

uint32_t WiFiAccessPointAccessPointControlFilterTableNumberOfMacAddressGetImpl(uint32_t ap, uint32_t* out) {
    constexpr uint32_t kListLength = 576;
    *out = 0;
    char list[kListLength + 1] = {};
    const uint32_t result = WiFiAccessPointAccessPointControlFilterTableMacAddressGetImpl(ap, list, kListLength);
    if (result != 0) return result;
    // An address and the separator behind it, which the last one has not.
    *out = static_cast<uint32_t>((strlen(list) + 1) / (quorvel::kMacTextLength + 1));
    return result;
}

uint32_t WiFiAccessPointAccessPointControlFilterTableApplyContextImpl(void* ctx, uint32_t ap) {
    return Quorvel_P_WiFiApplyContext(WiFiSystemAccessPointRadioInstanceGet(ap), ap, ctx,
                                      kWiFiAccessPointAccessPointControlFilterTableMapping,
                                      std::size(kWiFiAccessPointAccessPointControlFilterTableMapping));
}
