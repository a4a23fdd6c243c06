// Radios: the reads that are no plain mapping, channel measurements, and the apply.
#include <unistd.h>
#include <wlcsm.h>

#include <bit>
#include <cstring>

#include "host/ChannelRecords.h"
#include "wifi/Log.h"
#include "wifi/QuorvelWiFiRadioImpl.h"
#include "wifi/Result.h"
#include "wifi/bridge/ManagerText.h"
#include "wifi/bridge/Mapped.h"
#include "wifi/model/Implementations.h"
#include "wifi/parsing/DecimalText.h"
#include "wifi/parsing/RadioRates.h"
#include "wifi/parsing/Text.h"

using quorvel::kFailed;
using quorvel::kInvalidInput;
using quorvel::kSuccess;
using quorvel::kWiFiRadioObject;
using quorvel::ManagerText;
using quorvel::readManager;
using quorvel::readNode;

namespace {
constexpr const char* kLogFile = "wifi/QuorvelWiFiRadioImpl";
constexpr int32_t kFiveGigahertz = 1;
}  // namespace

#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiRadio.def"

#include "wifi/model/EndRows.h"

// Reads.

uint32_t WiFiRadioChannelGetImpl(uint32_t radio, uint32_t* out) {
    ManagerText value;
    if (!readManager(radio - 1, 0, "wlCurrentChannel", value)) {
        QUORVEL_LOG(Error, __func__, "wlcsm_mngr_get wlCurrentChannel FAIL");
        return kFailed;
    }
    *out = static_cast<uint32_t>(value.number());
    return kSuccess;
}

uint32_t WiFiRadioConfiguredChannelBandwidthGetImpl(uint32_t radio, uint32_t* out) {
    ManagerText value;
    if (!readManager(radio - 1, 0, "wlNBw", value)) {
        QUORVEL_LOG(Error, __func__, "wlcsm_mngr_get [%s] failure on radioInstance[%d]", "wlNBw", radio);
        return kFailed;
    }
    // The manager's codes for 20, 40, 80 and 160 MHz.
    switch (value.number()) {
        case 1:
            *out = 1;
            return kSuccess;
        case 3:
            *out = 2;
            return kSuccess;
        case 7:
            *out = 3;
            return kSuccess;
        case 15:
            *out = 4;
            return kSuccess;
        default:
            QUORVEL_LOG(Error, __func__, "Invalid WLNBW(%d) = %d", radio - 1, value.number());
            return kFailed;
    }
}

uint32_t WiFiRadioOperatingChannelBandwidthGetImpl(uint32_t radio, uint32_t* out) {
    uint32_t value = 0;
    const uint32_t result = readNode<kWiFiRadioObject, WiFiRadioNode::OperatingChannelBandwidth>(radio, &value);
    *out = value + 1;  // Quirk: stored whatever the result.
    return result;
}

uint32_t WiFiRadioRegulatoryDomainGetImpl(uint32_t radio, char* buf, uint32_t len) {
    constexpr uint32_t kDomainLength = 32;
    char domain[kDomainLength + 1] = {};
    const uint32_t result = readNode<kWiFiRadioObject, WiFiRadioNode::RegulatoryDomain>(radio, domain, kDomainLength);
    char country[4] = {};
    (void)sscanf(domain, "%2s", country);  // a text without country leaves it empty
    country[strlen(country)] = 'I';
    quorvel::copyText(buf, len, country);
    return result;
}

uint32_t WiFiRadioBasicDataTransmitRatesGetImpl(uint32_t radio, char* buf, uint32_t len) {
    constexpr uint32_t kKeywordLength = 64;
    char keyword[kKeywordLength + 1] = {};
    const uint32_t result =
        readNode<kWiFiRadioObject, WiFiRadioNode::BasicDataTransmitRates>(radio, keyword, kKeywordLength);
    if (result != 0) {
        QUORVEL_LOG(Error, __func__, "Quorvel_P_WiFiWlcsmMngrGet BASICDATATRANSMITRATES FAIL");
        return result;
    }
    ManagerText value;
    (void)readManager(radio - 1, 0, "wlBand", value);  // an unread band is band 0
    const int32_t band = value.number();
    QUORVEL_LOG(Traffic, __func__, "wlBand[%d]", band);
    // Quirk: read into the same buffer, so that an unread mode is the band's number.
    (void)readManager(radio - 1, 0, "wlgMode", value);
    const int32_t gMode = value.number();
    QUORVEL_LOG(Traffic, __func__, "wlgMode[%d]", gMode);
    if (band != 1 && band != 2) {
        QUORVEL_LOG(Error, __func__, "Invalid band[%d]", band);
        return kFailed;
    }
    const char* rates = quorvel::basicRatesToRead(band == 1 || gMode != 0, keyword);
    if (rates == nullptr) {
        // Quirk: succeeds, and leaves the output unchanged.
        QUORVEL_LOG(Error, __func__, "Fail: shouldn't go here.");
        return kSuccess;
    }
    quorvel::copyText(buf, len, rates);
    return kSuccess;
}

void str_replace(char* text, char from, char to) {
    for (; *text != '\0'; ++text) {
        if (*text == from) *text = to;
    }
}

namespace {

void removeLetter(char* text, char letter) {
    char* to = text;
    for (const char* from = text; *from != '\0'; ++from) {
        if (*from != letter) *to++ = *from;
    }
    *to = '\0';
}

}  // namespace

uint32_t WiFiRadioOperationalDataTransmitRatesGetImpl(uint32_t radio, char* buf, uint32_t len) {
    if (readNode<kWiFiRadioObject, WiFiRadioNode::OperationalDataTransmitRates>(radio, buf, len) != 0) {
        QUORVEL_LOG(Error, __func__, "Quorvel_P_WiFiWlcsmMngrGet WIFIRADIO_OPERATIONALDATATRANSMITRATES FAIL");
        return kFailed;
    }
    str_replace(buf, ' ', ',');
    removeLetter(buf, 'b');
    return kSuccess;
}

uint32_t WiFiRadioSupportedDataTransmitRatesGetImpl(uint32_t radio, char* buf, uint32_t len) {
    if (readNode<kWiFiRadioObject, WiFiRadioNode::SupportedDataTransmitRates>(radio, buf, len) != 0) {
        QUORVEL_LOG(Error, __func__, "Quorvel_P_WiFiWlcsmMngrGet WIFIRADIO_SUPPORTEDDATATRANSMITRATES FAIL");
        return kFailed;
    }
    // Quirk: the b marks stay, unlike in the operational rates.
    str_replace(buf, ' ', ',');
    return kSuccess;
}

uint32_t WiFiRadioAutoChannelSelectionPreferenceListGetImpl(uint32_t radio, char* buf, uint32_t len) {
    ManagerText value;
    (void)readManager(radio - 1, 0, "wlAcsPrefChannels", value);  // an unread list is an empty one
    uint32_t firstBytes = 0;
    memcpy(&firstBytes, value.text, sizeof firstBytes);
    quorvel::copyText(buf, len, firstBytes != 0 ? value.text : "");
    return kSuccess;
}

namespace {

// The protection variable of the radio's PHY type.
const char* protectionVariable(const char* phyType) {
    const bool highThroughput = strcmp(phyType, "v") == 0 || strcmp(phyType, "h") == 0 || strcmp(phyType, "n") == 0;
    return highThroughput ? "wlNProtection" : "wlProtection";
}

}  // namespace

uint32_t WiFiRadioCtsProtectionEnableGetImpl(uint32_t radio, uint8_t* out) {
    ManagerText phyType;
    (void)readManager(radio - 1, 0, "wlPhyType", phyType);  // an unread type has the plain protection
    ManagerText protection;
    (void)readManager(radio - 1, 0, protectionVariable(phyType.text), protection);  // an unread one is invalid below
    if (strcmp(protection.text, "auto") == 0) {
        *out = 1;
        return kSuccess;
    }
    if (strcmp(protection.text, "off") == 0) {
        *out = 0;
        return kSuccess;
    }
    QUORVEL_LOG(Error, __func__, "Invalid wlProtection[%s] in wlPhyType[%s] mode", protection.text, phyType.text);
    return kFailed;
}

uint32_t WiFiRadioTxChainMaskGetImpl(uint32_t radio, uint32_t* out) {
    *out = 0;
    uint32_t mask = 0;
    const uint32_t result = readNode<kWiFiRadioObject, WiFiRadioNode::TxChainMask>(radio, &mask);
    if (result != 0) {
        QUORVEL_LOG(Error, __func__, "Quorvel_P_WiFiWlcsmMngrGet WIFIRADIO_TXCHAINMASK Fail");
        return result;
    }
    *out = static_cast<uint32_t>(std::popcount(mask));
    return kSuccess;
}

uint32_t WiFiRadioRxChainMaskGetImpl(uint32_t radio, uint32_t* out) {
    *out = 0;
    uint32_t mask = 0;
    const uint32_t result = readNode<kWiFiRadioObject, WiFiRadioNode::RxChainMask>(radio, &mask);
    if (result != 0) {
        QUORVEL_LOG(Error, __func__, "Quorvel_P_WiFiWlcsmMngrGet WIFIRADIO_RXCHAINMASK Fail");
        return result;
    }
    *out = static_cast<uint32_t>(std::popcount(mask));
    return kSuccess;
}

namespace {

constexpr uint32_t kStatusLength = 32;

struct Status {
    char text[kStatusLength + 1] = {};
    [[nodiscard]] bool isUp() const {
        return strcmp(text, "Up") == 0;
    }
};

}  // namespace

uint32_t WiFiRadioUpTimeGetImpl(uint32_t radio, uint32_t* out) {
    *out = 0;
    Status status;
    if (WiFiRadioStatusGetImpl(radio, status.text, kStatusLength) != 0) {
        QUORVEL_LOG(Error, __func__, "Radio[%d] is not enabled, WiFiRadioStatusGetImpl failure.", radio);
        return kFailed;
    }
    if (status.isUp()) {
        // The status read has accepted the radio, so this cannot fail.
        (void)Quorvel_P_WiFiGetTimeElapseFromStartTime(radio, out);
    }
    return kSuccess;
}

uint32_t WiFiRadioGreenfieldEnableGetImpl(uint32_t radio, uint8_t* out) {
    ManagerText value;
    (void)readManager(radio - 1, 0, "wlNPreambleType", value);  // an unread type is not greenfield
    *out = strcmp(value.text, "1") == 0 ? 1 : 0;
    return kSuccess;
}

uint32_t WiFiRadioGreenfieldSupportedGetImpl(uint32_t, uint8_t* out) {
    *out = 1;
    return kSuccess;
}

uint32_t WiFiRadioAtfCapableGetImpl(uint32_t, uint8_t* out) {
    *out = 1;
    return kSuccess;
}

uint32_t WiFiRadioBandUtilizationGetImpl(uint32_t radio, uint32_t* out) {
    ManagerText value;
    (void)readManager(radio - 1, 0, "WlBandUtilization", value);  // an unread share is 0
    const int32_t idle = value.number();
    if (idle > 100) {
        *out = 0;
        QUORVEL_LOG(Error, __func__, "Invalid WlBandUtilization");
        return kFailed;
    }
    // Quirk: a negative share is not refused and leaves more than 100.
    *out = 100 - static_cast<uint32_t>(idle);
    QUORVEL_LOG(Traffic, __func__, "BandUtilization[%d]", *out);
    return kSuccess;
}

// Band-steering policy.

namespace {

struct PolicyName {
    char text[40];
    explicit PolicyName(uint32_t radio) {
        quorvel::append(quorvel::appendDecimal(quorvel::append(text, "wl"), static_cast<int32_t>(radio - 1)),
                        "_bsd_steering_policy");
        text[31] = '\0';  // a longer name is cut
    }
};

}  // namespace

uint32_t get_bsd_steering_policy(uint32_t radio, BsdSteeringPolicy* policy) {
    *policy = {};
    const PolicyName name(radio);
    const char* value = wlcsm_nvram_get(name.text);
    if (value == nullptr) {
        QUORVEL_LOG(Error, __func__, "wlcsm_nvram_get(%s) FAIL.", name.text);
        return kFailed;
    }
    uint32_t extFlag = 0;
    // Fields that are missing stay 0.
    (void)sscanf(value, "%d %d %d %d %d 0x%x", &policy->BwUtil, &policy->samplePeriod, &policy->consecutiveSampleCount,
                 &policy->RssiThreshold, &policy->PhyRateThreshold, &extFlag);
    policy->extFlag = static_cast<int32_t>(extFlag);
    QUORVEL_LOG(Traffic, __func__,
                "wlcsm_nvram_get(%s) SUCCESS, value[%s], BwUtil[%d], samplePeriod[%d], consecutiveSampleCount[%d], "
                "RssiThreshold[%d], pPhyRateThreshold[%d], extFlag[0x%x]",
                name.text, value, policy->BwUtil, policy->samplePeriod, policy->consecutiveSampleCount,
                policy->RssiThreshold, policy->PhyRateThreshold, extFlag);
    return kSuccess;
}

namespace {

constexpr uint32_t kBandLength = 16;

int32_t operatingBand(uint32_t radio) {
    char band[kBandLength + 1] = {};
    (void)WiFiRadioOperatingFrequencyBandGetImpl(radio, band, kBandLength);  // an unread band is band 0
    return static_cast<int32_t>(quorvel::decimalNumber(band));
}

}  // namespace

uint32_t WiFiRadioBandSteeringBandUtilizationThresholdGetImpl(uint32_t radio, int32_t* out) {
    BsdSteeringPolicy policy;
    if (get_bsd_steering_policy(radio, &policy) == 0) {
        *out = policy.BwUtil;
    } else {
        *out = operatingBand(radio) == kFiveGigahertz ? 80 : 0;
    }
    return kSuccess;
}

uint32_t WiFiRadioBandSteeringRSSIThresholdGetImpl(uint32_t radio, int32_t* out) {
    BsdSteeringPolicy policy;
    (void)get_bsd_steering_policy(radio, &policy);  // an absent policy is all 0
    *out = policy.RssiThreshold;
    return kSuccess;
}

uint32_t WiFiRadioBandSteeringPhyRateThresholdGetImpl(uint32_t radio, int32_t* out) {
    BsdSteeringPolicy policy;
    (void)get_bsd_steering_policy(radio, &policy);  // an absent policy is all 0
    *out = policy.PhyRateThreshold;
    return kSuccess;
}

uint32_t set_bsd_steering_policy(uint32_t radio, int32_t value, uint32_t node) {
    BsdSteeringPolicy policy;
    if (get_bsd_steering_policy(radio, &policy) != 0) {
        // Quirk: the band is read, but the default is 80 on every band, unlike the read's.
        (void)operatingBand(radio);
        policy = {80, 5, 3, 0, 0, 0x40};
    }
    switch (node) {
        case WiFiRadioNode::BandSteeringBandUtilizationThreshold:
            policy.BwUtil = value;
            break;
        case WiFiRadioNode::BandSteeringRSSIThreshold:
            policy.RssiThreshold = value;
            break;
        case WiFiRadioNode::BandSteeringPhyRateThreshold:
            policy.PhyRateThreshold = value;
            break;
        default:
            QUORVEL_LOG(Error, __func__, "Invalid node[%d]", node);
            return kFailed;
    }
    char text[128];
    snprintf(text, sizeof text, "%d %d %d %d %d 0x%x", policy.BwUtil, policy.samplePeriod,
             policy.consecutiveSampleCount, policy.RssiThreshold, policy.PhyRateThreshold,
             static_cast<uint32_t>(policy.extFlag));
    text[31] = '\0';  // Quirk: a longer text is cut.
    const PolicyName name(radio);
    if (wlcsm_nvram_set(name.text, text) != 0) {
        QUORVEL_LOG(Error, __func__, "wlcsm_nvram_set(%s, %s) FAIL.", name.text, text);
        return kFailed;
    }
    return kSuccess;
}

// Channel measurements. The caller's buffer is a record in both directions: its first word is the channel to measure.

namespace {

// The record may stand anywhere in the caller's memory.
template <typename Record>
Record recordAt(const char* buf) {
    Record record;
    memcpy(&record, buf, sizeof record);
    return record;
}

// Scans the channel in the record's first word, and waits for the results.
void scanChannel(uint32_t radio, const char* record) {
    uint32_t dwell = 0;
    (void)WiFiRadioDcsDwelltimeGetImpl(radio, &dwell);  // an unread time is out of range
    const bool accepted = dwell >= 30 && dwell <= 50;
    uint32_t channel = 0;
    memcpy(&channel, record, sizeof channel);
    // A scan that could not start shows in its results.
    (void)wlcsm_mngr_ci_scan_start(radio - 1, channel, accepted ? dwell : 40, accepted ? dwell - 30 : 40);
    sleep(1);
}

// Strongest first: adjacent pairs, each pass one pair shorter, until one swaps nothing.
void sortByRssi(ChannelNeighbour* neighbours, uint32_t count) {
    bool swapped = true;
    for (uint32_t last = count; swapped && last > 1; --last) {
        swapped = false;
        for (uint32_t n = 0; n + 1 < last; ++n) {
            if (neighbours[n].rssi >= neighbours[n + 1].rssi) continue;
            const ChannelNeighbour weaker = neighbours[n];
            neighbours[n] = neighbours[n + 1];
            neighbours[n + 1] = weaker;
            swapped = true;
        }
    }
}

}  // namespace

uint32_t WiFiRadioDcsChannelMetricsGetImpl(uint32_t radio, char* buf, uint32_t) {
    if (buf == nullptr) {
        QUORVEL_LOG(Traffic, __func__, "DcsChannelMetrics is NULL");
        return kFailed;
    }
    scanChannel(radio, buf);
    if (wlcsm_mngr_ci_scanresults(radio - 1, buf) != 0) {
        QUORVEL_LOG(Error, __func__, "DcsChannelMetrics fail to get scan results");
        return kFailed;
    }
    if (wlcsm_mngr_chanim_stats(radio - 1, buf) != 0) {
        QUORVEL_LOG(Error, __func__, "DcsChannelMetrics fail to get chanim_stats");
        return kFailed;
    }
    auto record = recordAt<ChannelMetricsRecord>(buf);
    QUORVEL_LOG(Traffic, __func__, "*** DcsChannelMetrics result for channel %d ***\n", record.channel);
    QUORVEL_LOG(Traffic, __func__, "noise: %d utilization: %d  txpower: %d (dbm)\n", record.noise, record.utilization,
                record.txPower);
    QUORVEL_LOG(Traffic, __func__, "\n*** channel_rssi_count %d ***\n", record.count);
    // A count beyond the record's entries comes from outside and is not believed.
    const uint32_t count =
        record.count < QUORVEL_MAX_CHANNEL_NEIGHBOURS ? record.count : QUORVEL_MAX_CHANNEL_NEIGHBOURS;
    sortByRssi(record.neighbours, count);
    memcpy(buf, &record, sizeof record);
    for (uint32_t n = 0; n < count; ++n) {
        const ChannelNeighbour& neighbour = record.neighbours[n];
        const uint8_t* bssid = neighbour.bssid;
        QUORVEL_LOG(Traffic, __func__, "index %d: BSSID: %02x:%02x:%02x:%02x:%02x:%02x ap_channelWidth: %d RSSI: %d\n",
                    n, bssid[0], bssid[1], bssid[2], bssid[3], bssid[4], bssid[5], neighbour.width, neighbour.rssi);
    }
    return kSuccess;
}

uint32_t WiFiRadioChannelStatsGetImpl(uint32_t radio, char* buf, uint32_t) {
    if (buf == nullptr) {
        QUORVEL_LOG(Traffic, __func__, "ChannelStats is NULL");
        return kFailed;
    }
    scanChannel(radio, buf);
    if (wlcsm_mngr_channelstats(radio - 1, buf) != 0) {
        QUORVEL_LOG(Error, __func__, "Channelstats fail to get results");
        return kFailed;
    }
    using Count = unsigned long long;  // what %llu prints
    const auto record = recordAt<ChannelStatsRecord>(buf);
    QUORVEL_LOG(Traffic, __func__, "*** Channelstats result for channel %d ***\n", record.channel);
    QUORVEL_LOG(Traffic, __func__, "noise: %d utilization: %d \n", record.noise, record.utilization);
    QUORVEL_LOG(Traffic, __func__, "ch_utilization_total: %llu ch_utilization_busy: %llu \n", Count{record.total},
                Count{record.busy});
    QUORVEL_LOG(Traffic, __func__, "ch_utilization_busy_tx: %llu ch_utilization_busy_rx: %llu \n", Count{record.busyTx},
                Count{record.busyRx});
    QUORVEL_LOG(Traffic, __func__, "ch_utilization_busy_self: %llu ch_utilization_busy_ext: %llu \n",
                Count{record.busySelf}, Count{record.busyExt});
    return kSuccess;
}

uint32_t WiFiRadioChannelStatsGet2Impl(uint32_t radio, void* record, uint32_t length) {
    if (record == nullptr) {
        QUORVEL_LOG(Traffic, __func__, "ChannelStats is NULL");
        return kFailed;
    }
    // Bytes that the manager does not fill, or the caller has no room for, are logged as 0.
    if (wlcsm_mngr_getRadioChannelStats2(radio - 1, record, length) != 0) {
        QUORVEL_LOG(Error, __func__, "Channelstats2 fail to get results");
        return kFailed;
    }
    ChannelStats2Record result{};
    memcpy(&result, record, length < sizeof result ? length : sizeof result);
    QUORVEL_LOG(Traffic, __func__, "*** Channelstats result\n");
    QUORVEL_LOG(Traffic, __func__, "ch_Frequency: %u\n", result.frequency);
    QUORVEL_LOG(Traffic, __func__, "ch_NoiseFloor: %d\n", result.noiseFloor);
    QUORVEL_LOG(Traffic, __func__, "ch_Non80211Noise: %d\n", result.non80211Noise);
    QUORVEL_LOG(Traffic, __func__, "ch_Max80211Rssi: %d\n", result.max80211Rssi);
    QUORVEL_LOG(Traffic, __func__, "ch_ObssUtil: %u\n", result.obssUtil);
    QUORVEL_LOG(Traffic, __func__, "ch_SelfBssUtil: %u\n", result.selfBssUtil);
    return kSuccess;
}

// Apply.

namespace {

// A staged context on its way to one radio.
struct Staged {
    WiFiRadioContext& context;
    uint32_t radio;  // from 1

    [[nodiscard, gnu::always_inline]] bool has(uint32_t node) const {
        return WiFiRadioCheckContextNodeSet(&context, node) != 0;
    }
    void clear(uint32_t node) const {
        (void)Quorvel_ContextClearMap(&context, node);
    }
    // Ignores whether the manager took the value, as every step but the greenfield one does.
    void write(const char* variable, const char* text) const {
        (void)wlcsm_mngr_set(radio - 1, 0, variable, text);
    }
};

// A staged text with a terminator behind its field's last byte.
template <size_t capacity>
struct TerminatedText {
    char text[capacity + 1] = {};
    explicit TerminatedText(const char (&field)[capacity]) {
        memcpy(text, field, capacity);
    }
    [[nodiscard]] uint32_t number() const {
        return static_cast<uint32_t>(quorvel::decimalNumber(text));
    }
};

// The steps with large buffers stand apart, so that the apply does not hold all of them on the stack at once.

// Replaces the staged rate list by its keyword. Returns false when the list is none of the radio's.
[[gnu::noinline]] bool applyBasicRates(const Staged& staged, int32_t band) {
    const char* function = "WiFiRadioApplyContextImpl";
    ManagerText value;
    (void)readManager(staged.radio - 1, 0, "wlgMode", value);  // an unread mode is mode 0
    const int32_t gMode = value.number();
    QUORVEL_LOG(Traffic, function, "wlgMode[%d]", gMode);
    auto& field = staged.context.BasicDataTransmitRates;
    const TerminatedText rates(field);
    memset(field, 0, sizeof field);
    const char* keyword = quorvel::basicRatesKeyword(band == 1 || gMode != 0, rates.text);
    if (keyword == nullptr) {
        QUORVEL_LOG(Error, function, "Invalid set of Basic Rates - %s\n", rates.text);
        return false;
    }
    memcpy(field, keyword, strlen(keyword));
    return true;
}

[[gnu::noinline]] void applyCtsProtection(const Staged& staged) {
    ManagerText phyType;
    (void)readManager(staged.radio - 1, 0, "wlPhyType", phyType);  // an unread type has the plain protection
    staged.write(protectionVariable(phyType.text), staged.context.CtsProtectionEnable == 1 ? "auto" : "off");
    staged.clear(WiFiRadioNode::CtsProtectionEnable);
}

void stampStartOfEnabledRadio(const Staged& staged) {
    if (staged.context.Enable != 1) return;
    Status status;
    if (WiFiRadioStatusGetImpl(staged.radio, status.text, kStatusLength) == 0 && !status.isUp()) {
        (void)Quorvel_P_WiFiSetCurrentTimeAsStartTime(staged.radio);  // always 0
    }
}

// The mask of `chains` low bits; a count has eight bits.
uint32_t chainMask(uint32_t chains) {
    const uint32_t count = chains & 0xFF;
    return count >= 32 ? 0xFFFFFFFF : (uint32_t{1} << count) - 1;
}

void applyGreenfield(const Staged& staged) {
    // Quirk: writes "gf", while the read looks for "1".
    if (wlcsm_mngr_set(staged.radio - 1, 0, "wlNPreambleType", staged.context.GreenfieldEnable != 0 ? "gf" : "") != 0) {
        QUORVEL_LOG(Error, "WiFiRadioApplyContextImpl", "wlcsm_mngr_set wlNPreambleType fail.");
    }
    staged.clear(WiFiRadioNode::GreenfieldEnable);
}

void applySteering(const Staged& staged, uint32_t node, int32_t value) {
    if (!staged.has(node)) return;
    (void)set_bsd_steering_policy(staged.radio, value, node);  // logs its own failures
    staged.clear(node);
}

void turnAutomaticChannelOff(const Staged& staged) {
    char name[32];
    snprintf(name, sizeof name, "wl%d_auto_cha", static_cast<int>(staged.radio - 1));
    (void)wlcsm_nvram_set(name, "0");  // the switch has been made: a failure changes nothing
}

template <size_t capacity>
[[gnu::noinline]] uint32_t stagedNumber(const char (&field)[capacity]) {
    return TerminatedText(field).number();
}

// Measures the channel that a staged text names; ignores the measurement's result.
template <size_t size, size_t capacity>
[[gnu::noinline]] void measureStaged(const Staged& staged, const char (&field)[capacity],
                                     uint32_t (*measure)(uint32_t, char*, uint32_t)) {
    alignas(uint64_t) char request[quorvel::kValueSize + size] = {};
    const uint32_t words[2] = {stagedNumber(field), 1};
    memcpy(request, words, sizeof words);
    (void)measure(staged.radio, request, size);
}

[[gnu::noinline]] void switchChannel(const Staged& staged) {
    const TerminatedText text(staged.context.pushRadioChannel2);
    (void)wlcsm_mngr_send_csa2(staged.radio - 1, text.text);  // a refused switch is not reported
}

[[gnu::noinline]] int32_t applyBand(uint32_t radio) {
    ManagerText value;
    (void)readManager(radio - 1, 0, "wlBand", value);  // an unread band is band 0
    return value.number();
}

// The steps whose nodes the manager takes by other calls than a variable's.
void applyRest(const Staged& staged) {
    WiFiRadioContext& context = staged.context;
    if (staged.has(WiFiRadioNode::DcsChannelMetrics)) {
        measureStaged<1056>(staged, context.DcsChannelMetrics, WiFiRadioDcsChannelMetricsGetImpl);
    }
    if (staged.has(WiFiRadioNode::pushRadioChannel)) {
        (void)wlcsm_mngr_send_csa(staged.radio - 1, context.pushRadioChannel);  // a refused switch is not reported
        turnAutomaticChannelOff(staged);
        staged.clear(WiFiRadioNode::pushRadioChannel);
    }
    if (staged.has(WiFiRadioNode::pushRadioChannel2)) {
        switchChannel(staged);
        turnAutomaticChannelOff(staged);
        staged.clear(WiFiRadioNode::pushRadioChannel2);
    }
    if (staged.has(WiFiRadioNode::RadarThreshold) && operatingBand(staged.radio) == 2) {
        QUORVEL_LOG(Error, "WiFiRadioApplyContextImpl",
                    "WiFiRadioRadarThreshold are only allowed to be set on 5G Radio");
        staged.clear(WiFiRadioNode::RadarThreshold);
    }
    if (staged.has(WiFiRadioNode::OperationalDataTransmitRates)) {
        for (char& character : context.OperationalDataTransmitRates) {
            if (character == ',') character = ' ';
        }
    }
    if (staged.has(WiFiRadioNode::RadioChannelStats)) {
        measureStaged<80>(staged, context.RadioChannelStats, WiFiRadioChannelStatsGetImpl);
    }
}

}  // namespace

uint32_t WiFiRadioApplyContextImpl(void* ctx, uint32_t radio) {
    auto& context = *static_cast<WiFiRadioContext*>(ctx);
    const Staged staged{context, radio};
    const int32_t band = applyBand(radio);
    QUORVEL_LOG(Traffic, __func__, "wlBand[%d]", band);

    if (staged.has(WiFiRadioNode::BasicDataTransmitRates) && !applyBasicRates(staged, band)) return kInvalidInput;
    if (staged.has(WiFiRadioNode::OperatingChannelBandwidth)) context.OperatingChannelBandwidth -= 1;
    if (staged.has(WiFiRadioNode::CtsProtectionEnable)) applyCtsProtection(staged);
    if (staged.has(WiFiRadioNode::Enable)) stampStartOfEnabledRadio(staged);
    if (staged.has(WiFiRadioNode::TxChainMask)) context.TxChainMask = chainMask(context.TxChainMask);
    if (staged.has(WiFiRadioNode::RxChainMask)) context.RxChainMask = chainMask(context.RxChainMask);
    if (staged.has(WiFiRadioNode::GreenfieldEnable)) applyGreenfield(staged);
    applySteering(staged, WiFiRadioNode::BandSteeringBandUtilizationThreshold,
                  context.BandSteeringBandUtilizationThreshold);
    applySteering(staged, WiFiRadioNode::BandSteeringRSSIThreshold, context.BandSteeringRSSIThreshold);
    applySteering(staged, WiFiRadioNode::BandSteeringPhyRateThreshold, context.BandSteeringPhyRateThreshold);
    if (staged.has(WiFiRadioNode::AutoChannelEnable)) {
        char text[16];
        snprintf(text, sizeof text, "%d", context.AutoChannelEnable);
        staged.write("AutoChannelEnable", text);
        staged.clear(WiFiRadioNode::AutoChannelEnable);
    }
    if (staged.has(WiFiRadioNode::Channel) && context.Channel != 0) staged.write("AutoChannelEnable", "0");
    if (staged.has(WiFiRadioNode::Restart)) {
        // Quirk: restarts whatever value is staged, and writes nothing else of the context.
        (void)wlcsm_mngr_restart(radio - 1, 0, 1, 1);
        return kSuccess;
    }
    applyRest(staged);
    return quorvel::applyMapped<quorvel::kWiFiRadioObject>(radio, ctx);
}
