// The WLAN manager's client calls, recorded.
#include "recorder/library/Imports.h"
#include "recorder/library/Queue.h"
#include "recorder/library/Replacements.h"

namespace quorvel::recorder::replacement {

namespace {

// Records of the manager: what the library and its host read of them.
constexpr uint32_t kStationSize = 236;
constexpr uint32_t kSsidSize = 40;
constexpr uint32_t kChannelMetricsSize = 1056;
constexpr uint32_t kChannelStatsSize = 80;

template <typename Result, typename... Values>
Result record(ImportNumber import, Result code, Values... arguments) {
    queue.append<RecordKind::kPlatform>(numberInRecord(import), arguments...,
                                        ResultNumber{static_cast<uint32_t>(code)});
    return code;
}

// The same with memory that the call fills, behind the result.
template <typename... Values>
int32_t recordFilled(ImportNumber import, int32_t code, const void* memory, uint32_t size, Values... arguments) {
    queue.append<RecordKind::kPlatform>(numberInRecord(import), arguments..., ResultNumber{static_cast<uint32_t>(code)},
                                        BytesAfter{memory, size});
    return code;
}

bool isStationVariable(const char* name) {
    // Most names need no look of the C library's.
    return name[0] == 'w' && name[1] == 'l' && name[2] == 'S' &&
           strncmp(name, "wlStaInfo_", sizeof "wlStaInfo_" - 1) == 0;
}

static_assert(ValueAfter::kLimit == WLCSM_VALUE_SIZE);

// A variable's value is text, but for a station's.
[[gnu::always_inline]] inline int32_t recordValue(ImportNumber import, int32_t code, uint32_t radio, uint32_t sub,
                                                  const char* name, const char* value) {
    const ResultNumber answer{static_cast<uint32_t>(code)};
    const uint16_t number = numberInRecord(import);
    if (isStationVariable(name)) {
        queue.append<RecordKind::kPlatform>(number, Number{radio}, Number{sub}, LooseText{name}, answer,
                                            BytesAfter{value, kStationSize});
    } else {
        queue.append<RecordKind::kPlatform>(number, Number{radio}, Number{sub}, LooseText{name}, answer,
                                            ValueAfter{value});
    }
    return code;
}

}  // namespace

int32_t wlcsm_mngr_get(uint32_t radio, uint32_t sub, const char* name, char* value) {
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_get)(radio, sub, name, value);
    return recordValue(kImport_wlcsm_mngr_get, code, radio, sub, name, value);
}

int32_t wlcsm_mngr_ext_get(uint32_t radio, uint32_t sub, const char* name, char* value) {
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_ext_get)(radio, sub, name, value);
    return recordValue(kImport_wlcsm_mngr_ext_get, code, radio, sub, name, value);
}

int32_t wlcsm_mngr_set(uint32_t radio, uint32_t sub, const char* name, const char* value) {
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_set)(radio, sub, name, value);
    return record(kImport_wlcsm_mngr_set, code, Number{radio}, Number{sub}, LooseText{name}, LooseText{value});
}

char* wlcsm_nvram_get(const char* name) {
    char* const value = QUORVEL_ORIGINAL(wlcsm_nvram_get)(name);
    queue.append<RecordKind::kPlatform>(numberInRecord(kImport_wlcsm_nvram_get), LooseText{name}, ResultText{value});
    return value;
}

int32_t wlcsm_nvram_set(const char* name, const char* value) {
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_nvram_set)(name, value);
    return record(kImport_wlcsm_nvram_set, code, LooseText{name}, LooseText{value});
}

int32_t wlcsm_mngr_save_nvram(uint32_t a, uint32_t b, uint32_t c) {
    queue.close();  // it may take long
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_save_nvram)(a, b, c);
    return record(kImport_wlcsm_mngr_save_nvram, code, Number{a}, Number{b}, Number{c});
}

int32_t wlcsm_mngr_wifi_hal_started(uint32_t a, uint32_t b, uint32_t c) {
    queue.close();  // it may take long
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_wifi_hal_started)(a, b, c);
    return record(kImport_wlcsm_mngr_wifi_hal_started, code, Number{a}, Number{b}, Number{c});
}

int32_t wlcsm_mngr_start_stop_services(uint32_t index, uint32_t a, uint32_t b, uint32_t command) {
    queue.close();  // it may take long
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_start_stop_services)(index, a, b, command);
    return record(kImport_wlcsm_mngr_start_stop_services, code, Number{index}, Number{a}, Number{b}, Number{command});
}

int32_t wlcsm_mngr_restart(uint32_t radio, uint32_t a, uint32_t b, uint32_t c) {
    queue.close();  // it may take long
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_restart)(radio, a, b, c);
    return record(kImport_wlcsm_mngr_restart, code, Number{radio}, Number{a}, Number{b}, Number{c});
}

int32_t wlcsm_mngr_send_csa(uint32_t radio, uint32_t channel) {
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_send_csa)(radio, channel);
    return record(kImport_wlcsm_mngr_send_csa, code, Number{radio}, Number{channel});
}

int32_t wlcsm_mngr_send_csa2(uint32_t radio, const char* text) {
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_send_csa2)(radio, text);
    return record(kImport_wlcsm_mngr_send_csa2, code, Number{radio}, Text{text});
}

int32_t wlcsm_mngr_sta_info(uint32_t radio, uint32_t sub, const char* mac, void* station) {
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_sta_info)(radio, sub, mac, station);
    return recordFilled(kImport_wlcsm_mngr_sta_info, code, code == 0 ? station : nullptr, kStationSize, Number{radio},
                        Number{sub}, LooseText{mac});
}

int32_t wlcsm_mngr_ssid_info(uint32_t radio, uint32_t sub, void* buffer) {
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_ssid_info)(radio, sub, buffer);
    return recordFilled(kImport_wlcsm_mngr_ssid_info, code, code == 0 ? buffer : nullptr, kSsidSize, Number{radio},
                        Number{sub});
}

int32_t wlcsm_mngr_clientRxTxStatsResult(uint32_t radio, uint32_t sub, const char* mac, uint32_t direction, uint32_t w1,
                                         uint32_t w2) {
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_clientRxTxStatsResult)(radio, sub, mac, direction, w1, w2);
    return record(kImport_wlcsm_mngr_clientRxTxStatsResult, code, Number{radio}, Number{sub}, LooseText{mac},
                  Number{direction}, Number{w1}, Number{w2});
}

uint32_t wlcsm_get_systemUpSecs(void) {
    return record(kImport_wlcsm_get_systemUpSecs, QUORVEL_ORIGINAL(wlcsm_get_systemUpSecs)());
}

uint32_t wlcsm_get_wlUpSecs(uint32_t radio) {
    return record(kImport_wlcsm_get_wlUpSecs, QUORVEL_ORIGINAL(wlcsm_get_wlUpSecs)(radio), Number{radio});
}

int32_t wlcsm_mngr_ci_scan_start(uint32_t radio, uint32_t channel, uint32_t dwell, uint32_t fourth) {
    queue.close();  // it may take long
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_ci_scan_start)(radio, channel, dwell, fourth);
    return record(kImport_wlcsm_mngr_ci_scan_start, code, Number{radio}, Number{channel}, Number{dwell},
                  Number{fourth});
}

int32_t wlcsm_mngr_ci_scanresults(uint32_t radio, void* results) {
    queue.close();  // it may take long
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_ci_scanresults)(radio, results);
    return recordFilled(kImport_wlcsm_mngr_ci_scanresults, code, results, kChannelMetricsSize, Number{radio});
}

int32_t wlcsm_mngr_chanim_stats(uint32_t radio, void* statistics) {
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_chanim_stats)(radio, statistics);
    return recordFilled(kImport_wlcsm_mngr_chanim_stats, code, statistics, kChannelMetricsSize, Number{radio});
}

int32_t wlcsm_mngr_channelstats(uint32_t radio, void* statistics) {
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_channelstats)(radio, statistics);
    return recordFilled(kImport_wlcsm_mngr_channelstats, code, statistics, kChannelStatsSize, Number{radio});
}

int32_t wlcsm_mngr_getRadioChannelStats2(uint32_t radio, void* statistics, uint32_t length) {
    const int32_t code = QUORVEL_ORIGINAL(wlcsm_mngr_getRadioChannelStats2)(radio, statistics, length);
    return recordFilled(kImport_wlcsm_mngr_getRadioChannelStats2, code, statistics, length, Number{radio},
                        Number{length});
}

}  // namespace quorvel::recorder::replacement
