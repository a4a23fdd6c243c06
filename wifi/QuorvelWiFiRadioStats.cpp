#define QUORVEL_DEFINITION "wifi/QuorvelWiFiRadioStats.def"
#define QUORVEL_OWN_CHECK
#include "wifi/FrontEndExpansion.h"

#define THIS_OBJECT WiFiRadioStats

// Answers without a word: meant.
uint32_t WiFiRadioStatsCheckContextNodeSet(void* ctx, uint32_t node) {
    QUORVEL_RECORD(quorvel::NodeCheck, check, "WiFiRadioStatsCheckContextNodeSet", quorvel::kWiFiRadioStatsNodeLimit);
    return quorvel::mayAskForNode(ctx, node, check) ? Quorvel_IsContextSetMap(ctx, node) : 0;
}
