// The WLAN manager's client library: every call is one exchange with the daemon.
#include <pthread.h>
#include <wlcsm.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "gateway/manager/Connection.h"
#include "gateway/manager/WlcsmControl.h"
#include "host/ChannelRecords.h"
#include "host/StationRecords.h"

#define WLCSM_EXPORT extern "C" __attribute__((visibility("default")))

namespace {

using quorvel::manager::Answer;
using quorvel::manager::Block;
using quorvel::manager::Connection;
using quorvel::manager::Operation;
using quorvel::manager::Request;

constexpr std::int32_t kFailed = -1;

pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
Connection connection;  // constant-initialised: usable before any constructor ran
thread_local char nvramValue[WLCSM_VALUE_SIZE];

class Lock {
  public:
    Lock() {
        (void)pthread_mutex_lock(&mutex);  // a default mutex that is not held by this thread cannot fail
    }
    ~Lock() {
        (void)pthread_mutex_unlock(&mutex);
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
};

Request ask(Operation operation, std::uint32_t a = 0, std::uint32_t b = 0, std::uint32_t c = 0, std::uint32_t d = 0,
            std::uint32_t e = 0) {
    Request request;
    request.operation = operation;
    const std::uint32_t words[] = {a, b, c, d, e};
    std::memcpy(request.words, words, sizeof words);
    return request;
}

void putText(Request& request, std::size_t index, const char* text) {
    request.isNull[index] = text == nullptr;
    if (text != nullptr) request.texts[index] = {text, std::strlen(text)};
}

// Copies the answer's blocks into a buffer of `size` bytes; a block that would not fit makes the whole call fail.
bool deliver(const Answer& answer, void* buffer, std::size_t size) {
    for (std::size_t i = 0; i < answer.blockCount; ++i) {
        const Block& block = answer.blocks[i];
        if (block.offset > size || block.bytes.size() > size - block.offset) return false;
    }
    for (std::size_t i = 0; i < answer.blockCount; ++i) {
        const Block& block = answer.blocks[i];
        if (!block.bytes.empty())
            std::memcpy(static_cast<char*>(buffer) + block.offset, block.bytes.data(), block.bytes.size());
    }
    return true;
}

std::int32_t command(const Request& request, std::int32_t failure) {
    const Lock lock;
    Answer answer;
    return connection.call(request, answer) ? answer.result : failure;
}

std::uint32_t value(const Request& request) {
    const Lock lock;
    Answer answer;
    return connection.call(request, answer) ? answer.value : 0;
}

// A call that fills a record of `size` bytes.
std::int32_t record(const Request& request, void* buffer, std::size_t size) {
    if (buffer == nullptr) return kFailed;
    const Lock lock;
    Answer answer;
    if (!connection.call(request, answer)) return kFailed;
    if (answer.result != 0) return answer.result;
    return deliver(answer, buffer, size) ? 0 : kFailed;
}

std::int32_t variable(Operation operation, std::uint32_t radio, std::uint32_t sub, const char* name, char* buffer) {
    if (name == nullptr || buffer == nullptr) return 0;
    Request request = ask(operation, radio, sub);
    putText(request, 0, name);
    const Lock lock;
    Answer answer;
    if (!connection.call(request, answer) || answer.result == 0 || answer.blockCount != 1) return 0;
    const std::size_t size = answer.blocks[0].bytes.size();
    if (!deliver(answer, buffer, WLCSM_VALUE_SIZE - 1)) return 0;
    buffer[size] = '\0';
    return answer.result;
}

}  // namespace

WLCSM_EXPORT std::int32_t wlcsm_mngr_get(std::uint32_t radio, std::uint32_t sub, const char* name, char* buffer) {
    return variable(Operation::kGet, radio, sub, name, buffer);
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_ext_get(std::uint32_t radio, std::uint32_t sub, const char* name, char* buffer) {
    return variable(Operation::kExtGet, radio, sub, name, buffer);
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_set(std::uint32_t radio, std::uint32_t sub, const char* name, const char* text) {
    if (name == nullptr) return kFailed;
    Request request = ask(Operation::kSet, radio, sub);
    putText(request, 0, name);
    putText(request, 1, text);
    return command(request, kFailed);
}

WLCSM_EXPORT char* wlcsm_nvram_get(const char* name) {
    if (name == nullptr) return nullptr;
    Request request = ask(Operation::kNvramGet);
    putText(request, 0, name);
    const Lock lock;
    Answer answer;
    if (!connection.call(request, answer) || answer.result == 0 || answer.blockCount != 1) return nullptr;
    const std::size_t size = answer.blocks[0].bytes.size();
    if (!deliver(answer, nvramValue, sizeof nvramValue - 1)) return nullptr;
    nvramValue[size] = '\0';
    return nvramValue;
}

WLCSM_EXPORT std::int32_t wlcsm_nvram_set(const char* name, const char* text) {
    if (name == nullptr) return kFailed;
    Request request = ask(Operation::kNvramSet);
    putText(request, 0, name);
    putText(request, 1, text);
    return command(request, kFailed);
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_save_nvram(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    return command(ask(Operation::kSaveNvram, a, b, c), 0);
}

// The announcement comes before the manager is started: it is passed on when there is one, and makes the next call
// wait.
WLCSM_EXPORT std::int32_t wlcsm_mngr_wifi_hal_started(std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    const Lock lock;
    Answer answer;
    if (connection.callIfThere(ask(Operation::kHalStarted, a, b, c), answer)) return answer.result;
    connection.expectManager(true);
    return 1;
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_start_stop_services(std::uint32_t index, std::uint32_t a, std::uint32_t b,
                                                         std::uint32_t number) {
    return command(ask(Operation::kStartStopServices, index, a, b, number), 0);
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_restart(std::uint32_t radio, std::uint32_t a, std::uint32_t b, std::uint32_t c) {
    return command(ask(Operation::kRestart, radio, a, b, c), 0);
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_send_csa(std::uint32_t radio, std::uint32_t channel) {
    return command(ask(Operation::kSendCsa, radio, channel), kFailed);
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_send_csa2(std::uint32_t radio, const char* text) {
    if (text == nullptr) return kFailed;
    Request request = ask(Operation::kSendCsa2, radio);
    putText(request, 0, text);
    return command(request, kFailed);
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_sta_info(std::uint32_t radio, std::uint32_t sub, const char* mac, void* buffer) {
    if (mac == nullptr) return kFailed;
    Request request = ask(Operation::kStaInfo, radio, sub);
    putText(request, 0, mac);
    return record(request, buffer, sizeof(ManagerStationRecord));
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_ssid_info(std::uint32_t radio, std::uint32_t sub, void* buffer) {
    return record(ask(Operation::kSsidInfo, radio, sub), buffer, sizeof(SsidRecord));
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_clientRxTxStatsResult(std::uint32_t radio, std::uint32_t sub, const char* mac,
                                                           std::uint32_t direction, std::uint32_t w1,
                                                           std::uint32_t w2) {
    if (mac == nullptr) return kFailed;
    Request request = ask(Operation::kClientRxTxStatsResult, radio, sub, direction, w1, w2);
    putText(request, 0, mac);
    return command(request, kFailed);
}

WLCSM_EXPORT std::uint32_t wlcsm_get_systemUpSecs(void) {
    return value(ask(Operation::kSystemUpSecs));
}

WLCSM_EXPORT std::uint32_t wlcsm_get_wlUpSecs(std::uint32_t radio) {
    return value(ask(Operation::kWlUpSecs, radio));
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_ci_scan_start(std::uint32_t radio, std::uint32_t channel, std::uint32_t dwell,
                                                   std::uint32_t fourth) {
    return command(ask(Operation::kCiScanStart, radio, channel, dwell, fourth), kFailed);
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_ci_scanresults(std::uint32_t radio, void* buffer) {
    return record(ask(Operation::kCiScanResults, radio), buffer, sizeof(ChannelMetricsRecord));
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_chanim_stats(std::uint32_t radio, void* buffer) {
    return record(ask(Operation::kChanimStats, radio), buffer, sizeof(ChannelMetricsRecord));
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_channelstats(std::uint32_t radio, void* buffer) {
    return record(ask(Operation::kChannelStats, radio), buffer, sizeof(ChannelStatsRecord));
}

WLCSM_EXPORT std::int32_t wlcsm_mngr_getRadioChannelStats2(std::uint32_t radio, void* buffer, std::uint32_t length) {
    return record(ask(Operation::kRadioChannelStats2, radio, length), buffer, length);
}

WLCSM_EXPORT char* wlcsm_control(const char* requestJson) {
    if (requestJson == nullptr) return nullptr;
    Request request = ask(Operation::kControl);
    putText(request, 0, requestJson);
    const Lock lock;
    std::int32_t result = 0;
    return connection.callLong(request, result);
}
