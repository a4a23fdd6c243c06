// Radio statistics: counters from the `wl` utility and from the interfaces, and the state of the neighbour diagnostic.
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "wifi/Log.h"
#include "wifi/QuorvelWiFiNeighboringDiagnosticsResultImpl.h"
#include "wifi/QuorvelWiFiRadioStatsImpl.h"
#include "wifi/QuorvelWiFiSSIDStatsImpl.h"
#include "wifi/bridge/Reader.h"
#include "wifi/model/Implementations.h"
#include "wifi/model/PackedTexts.h"
#include "wifi/parsing/NeighbourScan.h"

using quorvel::kFailed;
using quorvel::kInvalidInput;
using quorvel::kRadios;
using quorvel::kSuccess;

namespace quorvel {
RadioDiagnosticsRecord radioDiagnostics[kRadios] = {{1, 0}, {1, 0}, {1, 0}};
}

namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiRadioStatsImpl";

// Keywords by node. Node 0 and nodes without a counter have the empty one.
constexpr size_t kNodes = quorvel::model::nodeLimitOf(quorvel::kWiFiRadioStatsObject) + 1;
constexpr auto kKeywordTexts = [] {
    quorvel::model::Texts<kNodes> keywords;
    for (const auto& parameter : quorvel::model::parametersOf(quorvel::kWiFiRadioStatsObject))
        keywords[parameter.node] = parameter.variable;
    return keywords;
}();
constexpr quorvel::model::PackedTexts<kNodes, quorvel::model::packedSize(kKeywordTexts)> kKeywords(kKeywordTexts);

bool isRadio(uint32_t radio) {
    return radio != 0 && radio <= WiFiSystemMaxNumberOfRadios();
}

bool radioIsUp(uint32_t radio) {
    constexpr uint32_t kStatusLength = 128;
    char status[kStatusLength + 1] = {};
    (void)WiFiRadioStatusGetImpl(radio, status, kStatusLength);  // an unread status is not Up
    return strcmp(status, "Up") == 0;
}

}  // namespace

template <>
struct quorvel::Reads<quorvel::kWiFiRadioStatsObject> {
    template <size_t row>
    static uint32_t read(uint32_t radio, void* out) {
        return Quorvel_P_WiFiRadioStatsGet(radio, model::kParameters[row].node, out);
    }
};

#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiRadioStats.def"

#include "wifi/model/EndRows.h"

uint32_t Quorvel_P_WiFiRadioStatsGet(uint32_t radio, uint32_t node, void* out) {
    if (!isRadio(radio) || node >= kNodes || out == nullptr) {
        QUORVEL_LOG(Error, __func__, "Invalid radioInstance[%u] or nodeIdx[%u] or NULL pointer", radio, node);
        return kInvalidInput;
    }
    if (!radioIsUp(radio)) {
        QUORVEL_LOG(Error, __func__, "Radio[%u] is not Up, can't get stats.", radio);
        return kFailed;
    }
    const char* keyword = kKeywords[node];
    if (keyword[0] == '\0') {
        QUORVEL_LOG(Error, __func__, "Don't support node[%u] yet.", node);
        return kFailed;
    }
    QUORVEL_LOG(Traffic, __func__, "The keyword is [%s] for node[%u]", keyword, node);
    const bool isNoise = node == WiFiRadioStatsNode::Noise;
    char command[128];
    snprintf(command, sizeof command, "wl -i wl%d %s", static_cast<int>(radio - 1), isNoise ? "status" : "counters");
    FILE* output = popen(command, "r");
    if (output == nullptr) {
        QUORVEL_LOG(Error, __func__, "popen [%s] fail", command);
        return kFailed;
    }
    char line[128];
    const char* found = nullptr;
    while (found == nullptr && fgets(line, sizeof line, output) != nullptr)
        found = strstr(line, keyword);
    if (found == nullptr) {
        // Quirk: names the counters for the noise too.
        QUORVEL_LOG(Error, __func__, "Can't find keyword[%s] in \"wl counters\" output for node[%u]", keyword, node);
        pclose(output);
        return kFailed;
    }
    // Behind the keyword and its separator; a line that ends with the keyword has no number.
    const size_t behind = strlen(keyword) + 1;
    const char* number = strlen(found) < behind ? "" : found + behind;
    uint32_t value = 0;
    const int scanned =
        isNoise ? sscanf(number, "%d", reinterpret_cast<int32_t*>(&value)) : sscanf(number, "%u", &value);
    if (scanned == 1) memcpy(out, &value, sizeof value);
    if (isNoise) {
        QUORVEL_LOG(Traffic, __func__, "Found keywokd[%s] value[%d] for node[%u]", keyword, static_cast<int32_t>(value),
                    node);
    } else {
        QUORVEL_LOG(Traffic, __func__, "Found keywokd[%s] value[%u] for node[%u]", keyword, value, node);
    }
    pclose(output);
    return kSuccess;
}

uint32_t Quorvel_P_WiFiRadioStatsDiscardPacketsGet(uint32_t radio, uint32_t* sent, uint32_t* received) {
    *sent = 0;
    *received = 0;
    char prefix[16];
    snprintf(prefix, sizeof prefix, "wl%u", radio - 1);
    FILE* file = fopen("/proc/net/dev", "r");
    if (file == nullptr) {
        // Quirk: the text names the SSIDs' function.
        QUORVEL_LOG(Error, __func__, "Quorvel_P_WiFiSSIDStatsGet fopen() fail !!");
        return kFailed;
    }
    char header[512];
    // A file without its two header lines has no interfaces either.
    (void)!fgets(header, sizeof header, file);
    (void)!fgets(header, sizeof header, file);
    quorvel::NetDevStats stats{};
    while (Quorvel_P_WiFiSSIDStatsNetDevStatsGetNext(file, &stats) == 0) {
        // Quirk: compares the prefix: wl0 counts wl0.1, and wl1 also wl10.
        if (strncmp(stats.ifName, prefix, strlen(prefix)) != 0) continue;
        *sent += stats.txDrops;
        *received += stats.rxDrops;
    }
    fclose(file);
    return kSuccess;
}

uint32_t WiFiRadioStatsDiscardPacketsSentGetImpl(uint32_t radio, uint32_t* out) {
    uint32_t sent = 0;
    uint32_t received = 0;
    const uint32_t result = Quorvel_P_WiFiRadioStatsDiscardPacketsGet(radio, &sent, &received);
    if (result == 0) *out = sent;
    return result;
}

uint32_t WiFiRadioStatsDiscardPacketsReceivedGetImpl(uint32_t radio, uint32_t* out) {
    uint32_t sent = 0;
    uint32_t received = 0;
    const uint32_t result = Quorvel_P_WiFiRadioStatsDiscardPacketsGet(radio, &sent, &received);
    if (result == 0) *out = received;
    return result;
}

uint32_t WiFiRadioStatsDiagnosticsStateGetImpl(uint32_t radio, uint32_t* out) {
    if (!isRadio(radio)) {
        QUORVEL_LOG(Error, __func__, "Invalid radioInstance[%u]", radio);
        return kInvalidInput;
    }
    *out = quorvel::radioDiagnostics[radio - 1].diagnosticsState;
    return kSuccess;
}

uint32_t WiFiRadioStatsNeighboringWiFiDiagnosticResultNumberOfEntriesGetImpl(uint32_t radio, uint32_t* out) {
    if (!isRadio(radio)) {
        QUORVEL_LOG(Error, __func__, "Invalid radioInstance[%u]", radio);
        return kInvalidInput;
    }
    *out = quorvel::radioDiagnostics[radio - 1].resultNumberOfEntries;
    return kSuccess;
}

uint32_t WiFiRadioStatsApplyContextImpl(void* ctx, uint32_t radio, uint32_t doScan) {
    constexpr uint32_t kRequested = 2;
    constexpr uint32_t kCompleted = 3;
    if (!isRadio(radio) || ctx == nullptr) {
        QUORVEL_LOG(Error, __func__, "Invalid radioInstance[%u] or Null pContext[%x]", radio,
                    static_cast<unsigned>(reinterpret_cast<uintptr_t>(ctx)));
        return kInvalidInput;
    }
    if (WiFiRadioStatsCheckContextNodeSet(ctx, WiFiRadioStatsNode::DiagnosticsState) == 0) return kSuccess;
    if (static_cast<const WiFiRadioStatsContext*>(ctx)->DiagnosticsState != kRequested) {
        QUORVEL_LOG(Error, __func__, "Quorvel_IsContextSetMap WIFIRADIOSTATS_DIAGNOSTICSSTATE Fail");
        return kInvalidInput;
    }
    const int index = static_cast<int>(radio - 1);
    char command[128];
    if (doScan != 0) {
        snprintf(command, sizeof command, "wl -i wl%d scan", index);
        (void)!system(command);  // a failed scan shows as no results
        sleep(5);
    }
    quorvel::RadioDiagnosticsRecord& diagnostics = quorvel::radioDiagnostics[radio - 1];
    diagnostics.diagnosticsState = kCompleted;
    diagnostics.resultNumberOfEntries = 0;
    snprintf(command, sizeof command, "wl -i wl%d scanresults > /var/wl%d_scanresults", index, index);
    (void)!system(command);  // a failed dump shows as no results
    char path[64];
    snprintf(path, sizeof path, "/var/wl%d_scanresults", index);
    FILE* file = fopen(path, "r");
    if (file == nullptr) {
        QUORVEL_LOG(Error, __func__, "fopen [%s] fail", path);
        return kFailed;
    }
    const uint32_t count = quorvel::countNeighbours(file);
    diagnostics.resultNumberOfEntries = count;
    QUORVEL_LOG(Traffic, __func__, "wl -i wl%d scanresults: %d entries found.", index, count);
    quorvel::NeighboringWiFiResult* results = nullptr;
    if (WiFiNeighboringDiagnosticsResultInit(radio - 1, count, &results) != 0) {
        // No room for the results: there are none, so that none is asked for.
        diagnostics.resultNumberOfEntries = 0;
    } else {
        rewind(file);
        quorvel::parseNeighbours(file, radio, results, count);
    }
    fclose(file);
    return kSuccess;
}
