// WMM access categories: fields of the manager's non-volatile contention parameters, one text an access category.
#include <wlcsm.h>

#include <bit>
#include <cstdlib>
#include <cstring>

#include "wifi/Log.h"
#include "wifi/QuorvelWiFiAccessPointACImpl.h"
#include "wifi/bridge/Reader.h"
#include "wifi/parsing/DecimalText.h"
#include "wifi/parsing/Text.h"

using quorvel::kFailed;
using quorvel::kSuccess;

namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiAccessPointACImpl";

constexpr char kStems[8][11] = {"wme_ap_be",  "wme_ap_bk",  "wme_ap_vi",  "wme_ap_vo",
                                "wme_sta_be", "wme_sta_bk", "wme_sta_vi", "wme_sta_vo"};

constexpr uint32_t kHighestField = 4;
constexpr size_t kFields = 7;
constexpr size_t kValueLength = 63;

// The text split at its blanks. Two blanks make an empty field, and so does the end of the text.
struct Fields {
    char text[kValueLength + 1] = {};
    const char* field[kFields];

    explicit Fields(const char* value) {
        quorvel::copyText(text, sizeof text, value);
        char* rest = text;
        for (const char*& start : field) {
            start = rest;
            while (*rest != '\0' && *rest != ' ')
                ++rest;
            if (*rest == ' ') *rest++ = '\0';
        }
    }
};

// Contention windows are stored as sizes and shown as exponents: 2^e - 1.
uint32_t exponentOf(uint32_t window) {
    if (window == 0xFFFFFFFF) return 0;
    return (static_cast<uint32_t>(std::bit_width(window + 1)) - 1) & 0xF;
}

uint32_t windowOf(uint32_t value) {
    const uint32_t exponent = value & 0xFF;
    return exponent >= 32 ? 0xFFFFFFFF : (uint32_t{1} << exponent) - 1;
}

bool isWindow(uint32_t field) {
    return field <= 1;
}

}  // namespace

template <>
struct quorvel::Reads<quorvel::kWiFiAccessPointACObject> {
    template <size_t row>
    static uint32_t read(uint32_t ap, uint32_t ac, uint32_t* out) {
        return wifi_ap_ac_config(ap, ac, contention::fieldOf(row), contention::kRead, out);
    }
};

#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiAccessPointAC.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiAccessPointACApplyContextImpl(void*, uint32_t, uint32_t) {
    return kSuccess;
}

uint32_t wifi_ap_ac_config(uint32_t ap, uint32_t ac, uint32_t field, uint32_t action, uint32_t* value) {
    const uint32_t category = ac - 1;
    if (category > 7 || value == nullptr) {
        QUORVEL_LOG(Error, __func__, "%s, wrong ac_idx=%d or value is NULL\n", __func__, category);
        return kFailed;
    }
    if (field > kHighestField) {
        QUORVEL_LOG(Error, __func__, "%s, error pm_idx=%d\n", __func__, field);
        return kFailed;
    }
    char key[32];
    // Quirk: the name has the access point's own number; no radio is looked up.
    char* stem = quorvel::append(quorvel::appendDecimal(quorvel::append(key, "wl"), static_cast<int32_t>(ap - 1)), "_");
    quorvel::append(stem, kStems[category]);
    key[15] = '\0';  // a longer name is cut
    const char* stored = wlcsm_nvram_get(key);
    if (stored == nullptr) {
        QUORVEL_LOG(Error, __func__, "%s, failed to read nvram %s\n", __func__, key);
        return kFailed;
    }
    Fields fields(stored);
    if (action == quorvel::contention::kRead) {
        const auto number = static_cast<uint32_t>(quorvel::decimalNumber(fields.field[field]));
        *value = isWindow(field) ? exponentOf(number) : number;
        return kSuccess;
    }
    if (action != quorvel::contention::kWrite) {
        QUORVEL_LOG(Error, __func__, "%s, wrong action %d\n", __func__, action);
        return kFailed;
    }
    char changed[16];
    snprintf(changed, sizeof changed, "%d", static_cast<int32_t>(isWindow(field) ? windowOf(*value) : *value));
    fields.field[field] = changed;
    // Quirk: a blank follows every field, the last one too.
    char joined[64] = {};
    size_t length = 0;
    for (const char* text : fields.field) {
        const int written = snprintf(joined + length, sizeof joined - length, "%s ", text);
        length += static_cast<size_t>(written);
        if (length >= sizeof joined) break;
    }
    (void)wlcsm_nvram_set(key, joined);  // a store that does not take it is not reported
    return kSuccess;
}
