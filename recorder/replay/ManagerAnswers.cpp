// The WLAN manager's client in a replay: each call is answered from the recording.
#include "recorder/library/Replacements.h"
#include "recorder/replay/Answer.h"

namespace quorvel::recorder::replacement {

namespace {

// The largest record of the manager; the recording has each one's own size.
constexpr size_t kLargestRecord = 1056;

int32_t resultOf(const Answer& answer, int32_t otherwise) {
    return static_cast<int32_t>(answer.result(static_cast<uint32_t>(otherwise)));
}

int32_t variable(const char* function, uint32_t radio, uint32_t sub, const char* name, char* value) {
    const Answer answer(function, {numberValue(radio), numberValue(sub), textValue(name)});
    answer.fill(0, value, WLCSM_VALUE_SIZE);
    return resultOf(answer, 0);
}

int32_t command(const char* function, std::initializer_list<Value> arguments, int32_t otherwise) {
    return resultOf(Answer(function, arguments), otherwise);
}

int32_t filled(const char* function, std::initializer_list<Value> arguments, void* record, size_t size) {
    const Answer answer(function, arguments);
    answer.fill(0, record, size);
    return resultOf(answer, 1);
}

}  // namespace

int32_t wlcsm_mngr_get(uint32_t radio, uint32_t sub, const char* name, char* value) {
    return variable("wlcsm_mngr_get", radio, sub, name, value);
}

int32_t wlcsm_mngr_ext_get(uint32_t radio, uint32_t sub, const char* name, char* value) {
    return variable("wlcsm_mngr_ext_get", radio, sub, name, value);
}

int32_t wlcsm_mngr_set(uint32_t radio, uint32_t sub, const char* name, const char* value) {
    return command("wlcsm_mngr_set", {numberValue(radio), numberValue(sub), textValue(name), textValue(value)}, 1);
}

char* wlcsm_nvram_get(const char* name) {
    // The library reads it and does not keep it.
    return const_cast<char*>(Answer("wlcsm_nvram_get", {textValue(name)}).text());
}

int32_t wlcsm_nvram_set(const char* name, const char* value) {
    return command("wlcsm_nvram_set", {textValue(name), textValue(value)}, 1);
}

int32_t wlcsm_mngr_save_nvram(uint32_t a, uint32_t b, uint32_t c) {
    return command("wlcsm_mngr_save_nvram", {numberValue(a), numberValue(b), numberValue(c)}, 0);
}

int32_t wlcsm_mngr_wifi_hal_started(uint32_t a, uint32_t b, uint32_t c) {
    return command("wlcsm_mngr_wifi_hal_started", {numberValue(a), numberValue(b), numberValue(c)}, 0);
}

int32_t wlcsm_mngr_start_stop_services(uint32_t index, uint32_t a, uint32_t b, uint32_t action) {
    return command("wlcsm_mngr_start_stop_services",
                   {numberValue(index), numberValue(a), numberValue(b), numberValue(action)}, 0);
}

int32_t wlcsm_mngr_restart(uint32_t radio, uint32_t a, uint32_t b, uint32_t c) {
    return command("wlcsm_mngr_restart", {numberValue(radio), numberValue(a), numberValue(b), numberValue(c)}, 0);
}

int32_t wlcsm_mngr_send_csa(uint32_t radio, uint32_t channel) {
    return command("wlcsm_mngr_send_csa", {numberValue(radio), numberValue(channel)}, 1);
}

int32_t wlcsm_mngr_send_csa2(uint32_t radio, const char* text) {
    return command("wlcsm_mngr_send_csa2", {numberValue(radio), textValue(text)}, 1);
}

int32_t wlcsm_mngr_sta_info(uint32_t radio, uint32_t sub, const char* mac, void* station) {
    return filled("wlcsm_mngr_sta_info", {numberValue(radio), numberValue(sub), textValue(mac)}, station,
                  kLargestRecord);
}

int32_t wlcsm_mngr_ssid_info(uint32_t radio, uint32_t sub, void* buffer) {
    return filled("wlcsm_mngr_ssid_info", {numberValue(radio), numberValue(sub)}, buffer, kLargestRecord);
}

int32_t wlcsm_mngr_clientRxTxStatsResult(uint32_t radio, uint32_t sub, const char* mac, uint32_t direction, uint32_t w1,
                                         uint32_t w2) {
    return command("wlcsm_mngr_clientRxTxStatsResult",
                   {numberValue(radio), numberValue(sub), textValue(mac), numberValue(direction), numberValue(w1),
                    numberValue(w2)},
                   1);
}

uint32_t wlcsm_get_systemUpSecs(void) {
    return Answer("wlcsm_get_systemUpSecs", {}).result(0);
}

uint32_t wlcsm_get_wlUpSecs(uint32_t radio) {
    return Answer("wlcsm_get_wlUpSecs", {numberValue(radio)}).result(0);
}

int32_t wlcsm_mngr_ci_scan_start(uint32_t radio, uint32_t channel, uint32_t dwell, uint32_t fourth) {
    return command("wlcsm_mngr_ci_scan_start",
                   {numberValue(radio), numberValue(channel), numberValue(dwell), numberValue(fourth)}, 1);
}

int32_t wlcsm_mngr_ci_scanresults(uint32_t radio, void* results) {
    return filled("wlcsm_mngr_ci_scanresults", {numberValue(radio)}, results, kLargestRecord);
}

int32_t wlcsm_mngr_chanim_stats(uint32_t radio, void* statistics) {
    return filled("wlcsm_mngr_chanim_stats", {numberValue(radio)}, statistics, kLargestRecord);
}

int32_t wlcsm_mngr_channelstats(uint32_t radio, void* statistics) {
    return filled("wlcsm_mngr_channelstats", {numberValue(radio)}, statistics, kLargestRecord);
}

int32_t wlcsm_mngr_getRadioChannelStats2(uint32_t radio, void* statistics, uint32_t length) {
    return filled("wlcsm_mngr_getRadioChannelStats2", {numberValue(radio), numberValue(length)}, statistics, length);
}

}  // namespace quorvel::recorder::replacement
