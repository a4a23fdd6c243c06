// SSID statistics: the counters of the interface that carries the SSID.
#include <cstring>

#include "wifi/Log.h"
#include "wifi/QuorvelWiFiSSIDStatsImpl.h"
#include "wifi/bridge/ManagerText.h"
#include "wifi/bridge/Reader.h"
#include "wifi/parsing/DecimalText.h"

using quorvel::kFailed;
using quorvel::kInvalidInput;
using quorvel::kSuccess;
using quorvel::NetDevStats;

namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiSSIDStatsImpl";

constexpr size_t kLineSize = 512;
constexpr uint32_t kCounters = 16;  // of a line
constexpr uint32_t kHighestNode = 22;
constexpr uint16_t kUnsupported = 0;

// Offsets of the nodes' counters in the record; 0, the name's, for a node without one.
constexpr uint16_t NONE = kUnsupported;
#define COLUMN(member) offsetof(NetDevStats, member)
#define PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, type, accepted, read, source, ...) source,
constexpr uint16_t kColumns[kHighestNode + 1] = {
    kUnsupported,
#include "wifi/model/BeginRows.h"

#include "wifi/QuorvelWiFiSSIDStats.def"

#include "wifi/model/EndRows.h"
};

struct InterfaceName {
    char text[32];
    explicit InterfaceName(uint32_t ssid) {
        const uint32_t radio = WiFiSystemAccessPointRadioInstanceGet(ssid) - 1;
        const uint32_t slot = quorvel::subIndex(ssid);
        char* end = quorvel::appendDecimal(quorvel::append(text, "wl"), radio);
        if (slot != 0) quorvel::appendDecimal(quorvel::append(end, "."), slot);
    }
};

void dump(const NetDevStats& stats) {
    static constexpr char kCounterLines[][17] = {
        "RxBytes      %lu", "RxPkts       %lu", "RxErrors     %lu", "RxDrops      %lu", "RxFifo       %lu",
        "RxFrame      %lu", "RxCompressed %lu", "RxMulticast  %lu", "TxBytes      %lu", "TxPkts       %lu",
        "TxErrors     %lu", "TxDrops      %lu",
        // Quirk: the sent columns are labelled like the received ones, by position and not by what they hold.
        "TxFifo       %lu", "TxFrame      %lu", "TxCompressed %lu", "TxMulticast  %lu"};
    const char* function = "Quorvel_P_WiFiSSIDStatsGet";
    QUORVEL_LOG(Traffic, function, "------> Dump interface[%s] stats", stats.ifName);
    QUORVEL_LOG(Traffic, function, "interfacename %s", stats.ifName);
    uint32_t counters[std::size(kCounterLines)];
    static_assert(offsetof(NetDevStats, txCompressed) + 4 == offsetof(NetDevStats, rxBytes) + sizeof counters);
    memcpy(counters, &stats.rxBytes, sizeof counters);
    for (size_t n = 0; n < std::size(kCounterLines); ++n) {
        QUORVEL_LOG(Traffic, function, kCounterLines[n], static_cast<unsigned long>(counters[n]));
    }
}

}  // namespace

template <>
struct quorvel::Reads<quorvel::kWiFiSSIDStatsObject> {
    template <size_t row>
    static uint32_t read(uint32_t ssid, uint32_t* out) {
        return Quorvel_P_WiFiSSIDStatsGet(ssid, model::kParameters[row].node, out);
    }
};

#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiSSIDStats.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiSSIDStatsApplyContextImpl(void*, uint32_t) {
    return kSuccess;
}

namespace {

// The name at the start of a line: the text before the first blank, at most 127 characters.
struct Name {
    const char* text;
    size_t length;
    explicit Name(const char* line) {
        while (quorvel::isBlank(*line))
            ++line;
        text = line;
        const char* const longest = text + sizeof(NetDevStats::ifName) - 1;
        while (line != longest && !endsName(*line))
            ++line;
        length = static_cast<size_t>(line - text);
    }
    // Most characters of a name are above the blanks.
    static bool endsName(char c) {
        return static_cast<unsigned char>(c) <= ' ' && (c == '\0' || quorvel::isBlank(c));
    }
    // Without the colon behind it.
    [[nodiscard]] bool is(const char* wanted, size_t wantedLength) const {
        const size_t bare = length != 0 && text[length - 1] == ':' ? length - 1 : length;
        return bare == wantedLength && strncmp(text, wanted, bare) == 0;
    }
};

bool parseCounters(const char* at, NetDevStats& record) {
    uint32_t counters[kCounters];
    for (uint32_t& counter : counters) {
        at = quorvel::nextCounter(at, counter);
        if (at == nullptr) return false;
    }
    memcpy(&record.rxBytes, counters, sizeof counters);
    return true;
}

struct Wanted {
    const char* name;  // null for any
    size_t length;
};

enum class Line { kEnd, kSkipped, kRead };

// Reads the next line into `line`; of another interface than the wanted one only whether it is well-formed.
Line readNext(FILE* stream, char (&line)[kLineSize], const Wanted& wanted, NetDevStats& record) {
    static constexpr char kFunction[] = "Quorvel_P_WiFiSSIDStatsNetDevStatsGetNext";
    if (fgets(line, sizeof line, stream) == nullptr) {
        QUORVEL_LOG(Traffic, kFunction, "file reach the end \n");
        return Line::kEnd;
    }
    const Name name(line);
    const char* at = name.text + name.length;
    const bool skipped = wanted.name != nullptr && !name.is(wanted.name, wanted.length);
    const bool whole = skipped ? quorvel::beginsWithCounters(at, kCounters) : parseCounters(at, record);
    if (name.length == 0 || !whole) {
        QUORVEL_LOG(Error, kFunction, "failed reading at line %s \n", line);
        return Line::kEnd;
    }
    if (skipped) return Line::kSkipped;
    memcpy(record.ifName, name.text, name.length);
    const bool colon = name.text[name.length - 1] == ':';
    record.ifName[name.length - (colon ? 1 : 0)] = '\0';
    return Line::kRead;
}

}  // namespace

uint32_t Quorvel_P_WiFiSSIDStatsNetDevStatsGetNext(FILE* stream, NetDevStats* record) {
    char line[kLineSize] = {};
    return readNext(stream, line, {nullptr, 0}, *record) == Line::kRead ? kSuccess : kFailed;
}

uint32_t Quorvel_P_WiFiSSIDStatsGet(uint32_t ssid, uint32_t node, uint32_t* out) {
    if (ssid == 0 || ssid > 8 * WiFiSystemMaxNumberOfRadios() || node > kHighestNode || out == nullptr) {
        QUORVEL_LOG(Error, __func__, "Invalid sSIDInstance[%u] or nodeIdx[%u] or NULL pointer", ssid, node);
        return kInvalidInput;
    }
    const InterfaceName name(ssid);
    QUORVEL_LOG(Traffic, __func__, "Looking for stats for interface[%s]", name.text);
    FILE* file = fopen("/proc/net/dev", "r");
    if (file == nullptr) {
        QUORVEL_LOG(Error, __func__, "Quorvel_P_WiFiSSIDStatsGet fopen() fail !!");
        return kFailed;
    }
    char text[kLineSize] = {};
    // A file without its two header lines has no interfaces either.
    (void)!fgets(text, sizeof text, file);
    (void)!fgets(text, sizeof text, file);
    NetDevStats stats{};
    const Wanted wanted{name.text, strlen(name.text)};
    Line line = Line::kSkipped;
    while (line == Line::kSkipped)
        line = readNext(file, text, wanted, stats);
    uint32_t result = kFailed;
    if (line != Line::kRead) {
        QUORVEL_LOG(Error, __func__, "Don't find interface[%s] in net_dev_stats", name.text);
    } else if (kColumns[node] == kUnsupported) {
        QUORVEL_LOG(Error, __func__, "Don't support stats for node[%u] yet.", node);
    } else {
        memcpy(out, reinterpret_cast<const char*>(&stats) + kColumns[node], sizeof *out);
        dump(stats);
        result = kSuccess;
    }
    fclose(file);
    return result;
}
