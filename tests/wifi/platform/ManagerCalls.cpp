#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include <wlcsm.h>
#include "tests/wifi/platform/Rendering.h"
#include "tests/wifi/platform/ScriptedPlatform.h"

// The manager's client. The result that means success differs from call to call, as on the device.

using quorvel::scripted::out;
using quorvel::scripted::Platform;
using quorvel::scripted::renderAll;

namespace {

constexpr std::int32_t kYes = 1;
constexpr std::int32_t kNo = 0;
constexpr std::int32_t kDone = 0;
constexpr std::int32_t kFailed = 1;

// Bytes of the records of channel measurements.
constexpr std::size_t kMetricsSize = 1056;
constexpr std::size_t kStatisticsSize = 80;

Platform& platform() {
    return Platform::instance();
}

// The forced result of a call whose own failure is `failure`.
std::optional<std::int32_t> forced(const char* name, const std::string& arguments, std::int32_t failure) {
    const auto rule = platform().enter(name, arguments);
    if (!rule) {
        return std::nullopt;
    }
    return rule->fails ? failure : static_cast<std::int32_t>(rule->result);
}

void fill(const char* call, void* record, std::size_t limit) {
    const auto bytes = platform().record(call);
    if (!bytes || record == nullptr) {
        return;
    }
    std::memcpy(record, bytes->data(), bytes->size() < limit ? bytes->size() : limit);
}

}  // namespace

extern "C" {

int32_t wlcsm_mngr_get(uint32_t radio, uint32_t sub, const char* name, char* value) {
    if (const auto result = forced("wlcsm_mngr_get", renderAll(radio, sub, name), kNo)) {
        return *result;
    }
    return platform().readVariable(radio, sub, name, value) ? kYes : kNo;
}

int32_t wlcsm_mngr_ext_get(uint32_t radio, uint32_t sub, const char* name, char* value) {
    if (const auto result = forced("wlcsm_mngr_ext_get", renderAll(radio, sub, name), kNo)) {
        return *result;
    }
    return platform().readVariable(radio, sub, name, value) ? kYes : kNo;
}

int32_t wlcsm_mngr_set(uint32_t radio, uint32_t sub, const char* name, const char* value) {
    if (const auto result = forced("wlcsm_mngr_set", renderAll(radio, sub, name, value), kFailed)) {
        return *result;
    }
    platform().writeVariable(radio, sub, name, value);
    return kDone;
}

char* wlcsm_nvram_get(const char* name) {
    // Each thread's last text only: a caller that keeps an older one reads freed memory.
    static thread_local std::unique_ptr<char[]> lastText;
    lastText.reset();
    if (platform().enter("wlcsm_nvram_get", renderAll(name))) {
        return nullptr;
    }
    const auto text = platform().nvram(name);
    if (!text) {
        return nullptr;
    }
    lastText.reset(new char[text->size() + 1]);
    std::memcpy(lastText.get(), text->c_str(), text->size() + 1);
    return lastText.get();
}

int32_t wlcsm_nvram_set(const char* name, const char* value) {
    if (const auto result = forced("wlcsm_nvram_set", renderAll(name, value), kFailed)) {
        return *result;
    }
    platform().setNvram(name, value == nullptr ? "" : value);
    return kDone;
}

int32_t wlcsm_mngr_save_nvram(uint32_t a, uint32_t b, uint32_t c) {
    return forced("wlcsm_mngr_save_nvram", renderAll(a, b, c), kNo).value_or(kYes);
}

int32_t wlcsm_mngr_wifi_hal_started(uint32_t a, uint32_t b, uint32_t c) {
    return forced("wlcsm_mngr_wifi_hal_started", renderAll(a, b, c), kNo).value_or(kYes);
}

int32_t wlcsm_mngr_start_stop_services(uint32_t index, uint32_t a, uint32_t b, uint32_t command) {
    return forced("wlcsm_mngr_start_stop_services", renderAll(index, a, b, command), kNo).value_or(kYes);
}

int32_t wlcsm_mngr_restart(uint32_t radio, uint32_t a, uint32_t b, uint32_t c) {
    return forced("wlcsm_mngr_restart", renderAll(radio, a, b, c), kNo).value_or(kYes);
}

int32_t wlcsm_mngr_send_csa(uint32_t radio, uint32_t channel) {
    return forced("wlcsm_mngr_send_csa", renderAll(radio, channel), kFailed).value_or(kDone);
}

int32_t wlcsm_mngr_send_csa2(uint32_t radio, const char* text) {
    return forced("wlcsm_mngr_send_csa2", renderAll(radio, text), kFailed).value_or(kDone);
}

int32_t wlcsm_mngr_sta_info(uint32_t radio, uint32_t sub, const char* mac, void* record) {
    if (const auto result = forced("wlcsm_mngr_sta_info", renderAll(radio, sub, mac, out(record)), kFailed)) {
        return *result;
    }
    fill("wlcsm_mngr_sta_info", record, SIZE_MAX);
    return kDone;
}

int32_t wlcsm_mngr_ssid_info(uint32_t radio, uint32_t sub, void* buffer) {
    if (const auto result = forced("wlcsm_mngr_ssid_info", renderAll(radio, sub, out(buffer)), kFailed)) {
        return *result;
    }
    fill("wlcsm_mngr_ssid_info", buffer, SIZE_MAX);
    return kDone;
}

int32_t wlcsm_mngr_clientRxTxStatsResult(uint32_t radio, uint32_t sub, const char* mac, uint32_t direction, uint32_t w1,
                                         uint32_t w2) {
    return forced("wlcsm_mngr_clientRxTxStatsResult", renderAll(radio, sub, mac, direction, w1, w2), kFailed)
        .value_or(kDone);
}

uint32_t wlcsm_get_systemUpSecs(void) {
    (void)platform().enter("wlcsm_get_systemUpSecs", "");
    return platform().systemUpSeconds();
}

uint32_t wlcsm_get_wlUpSecs(uint32_t radio) {
    (void)platform().enter("wlcsm_get_wlUpSecs", renderAll(radio));
    return platform().radioUpSeconds(radio);
}

int32_t wlcsm_mngr_ci_scan_start(uint32_t radio, uint32_t channel, uint32_t dwell, uint32_t fourth) {
    return forced("wlcsm_mngr_ci_scan_start", renderAll(radio, channel, dwell, fourth), kFailed).value_or(kDone);
}

int32_t wlcsm_mngr_ci_scanresults(uint32_t radio, void* record) {
    platform().noteHanded("wlcsm_mngr_ci_scanresults", record, kMetricsSize);
    if (const auto result = forced("wlcsm_mngr_ci_scanresults", renderAll(radio, out(record)), kFailed)) {
        return *result;
    }
    fill("wlcsm_mngr_ci_scanresults", record, SIZE_MAX);
    return kDone;
}

int32_t wlcsm_mngr_chanim_stats(uint32_t radio, void* record) {
    platform().noteHanded("wlcsm_mngr_chanim_stats", record, kMetricsSize);
    if (const auto result = forced("wlcsm_mngr_chanim_stats", renderAll(radio, out(record)), kFailed)) {
        return *result;
    }
    fill("wlcsm_mngr_chanim_stats", record, SIZE_MAX);
    return kDone;
}

int32_t wlcsm_mngr_channelstats(uint32_t radio, void* record) {
    platform().noteHanded("wlcsm_mngr_channelstats", record, kStatisticsSize);
    if (const auto result = forced("wlcsm_mngr_channelstats", renderAll(radio, out(record)), kFailed)) {
        return *result;
    }
    fill("wlcsm_mngr_channelstats", record, SIZE_MAX);
    return kDone;
}

int32_t wlcsm_mngr_getRadioChannelStats2(uint32_t radio, void* record, uint32_t length) {
    if (const auto result =
            forced("wlcsm_mngr_getRadioChannelStats2", renderAll(radio, out(record), length), kFailed)) {
        return *result;
    }
    fill("wlcsm_mngr_getRadioChannelStats2", record, length);
    return kDone;
}

}  // extern "C"

namespace quorvel::scripted {

void keepManagerCalls() {}

}  // namespace quorvel::scripted
