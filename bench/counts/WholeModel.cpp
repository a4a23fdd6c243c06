// The whole model read, and its floor.
#include <quorvel.h>
#include <unistd.h>
#include <wlcsm.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "NullPlatform.h"
#include "Operation.h"
#include "QuorvelWiFiTable.h"

namespace quorvel::bench {
namespace {

constexpr std::uint32_t kStations = 8;
constexpr std::uint32_t kCategories = 4;
constexpr char kMac[] = "02:00:00:00:00:00";

Calls modelCalls;
std::uint64_t reads;

// Large enough for every text, and for the records of the channel measurements.
char text[2048 + 1];

enum : std::size_t { kPath = 0, kName = 1, kType = 2, kGetter = 6, kGetterDepth2 = 55 };

std::uint32_t instancesOf(const char* path) {
    if (std::strncmp(path, "WiFi.Radio.", 11) == 0) return 3;
    if (std::strncmp(path, "WiFi.Neighboring", 16) == 0 || std::strncmp(path, "WiFi.Channel", 12) == 0) return 1;
    return 24;
}

void readDepth0(const TableEntry& entry) {
    const auto type = entry.words[kType].value;
    const TableWord getter = entry.words[kGetter + 2 * type];
    if (getter.value == 0) return;
    std::uint32_t word = 0;
    ++reads;
    if (type == kTypeString) {
        (void)getter.textGet0(text, sizeof text - 1);
    } else if (type == kTypeBoolean) {
        std::uint8_t byte = 0;
        (void)getter.booleanGet0(&byte);
    } else {
        (void)getter.unsignedGet0(&word);
    }
}

void readDepth1(const TableEntry& entry, std::uint32_t i) {
    const auto type = entry.words[kType].value;
    const TableWord getter = entry.words[kGetter + 2 * type + 1];
    if (getter.value == 0) return;
    const char* name = entry.words[kName].text;
    if (std::strcmp(name, "AssociatedDeviceRSSI") == 0 || std::strcmp(name, "AssociatedDeviceRxRate") == 0 ||
        std::strcmp(name, "AssociatedDeviceTxRate") == 0) {
        for (std::uint32_t station = 0; station < kStations; ++station) {
            std::int32_t number = 0;
            ++reads;
            (void)getter.stationGet(i, kMac, &number);
        }
        return;
    }
    ++reads;
    if (type == kTypeString) {
        text[0] = '\0';
        (void)getter.textGet1(i, text, sizeof text - 1);
    } else if (type == kTypeBoolean) {
        std::uint8_t byte = 0;
        (void)getter.booleanGet1(i, &byte);
    } else if (type == kTypeInt) {
        std::int32_t number = 0;
        (void)getter.intGet1(i, &number);
    } else {
        std::uint32_t word = 0;
        (void)getter.unsignedGet1(i, &word);
    }
}

void readDepth2(const TableEntry& entry, std::uint32_t i, std::uint32_t j) {
    const auto type = entry.words[kType].value;
    const bool settersWord = type == kTypeString && entry.words[3].value == kWritable;
    const TableWord getter = entry.words[kGetterDepth2 + type];
    if (settersWord || getter.value == 0) return;
    ++reads;
    if (type == kTypeString) {
        (void)getter.textGet2(i, j, text, 64);
    } else if (type == kTypeBoolean) {
        std::uint8_t byte = 0;
        (void)getter.booleanGet2(i, j, &byte);
    } else if (type == kTypeInt) {
        std::int32_t number = 0;
        (void)getter.intGet2(i, j, &number);
    } else {
        std::uint32_t word = 0;
        (void)getter.unsignedGet2(i, j, &word);
    }
}

void readEntry(const TableEntry& entry) {
    const char* path = entry.words[kPath].text;
    const char* first = std::strstr(path, "{i}");
    if (first == nullptr) return readDepth0(entry);
    const bool deep = std::strstr(first + 1, "{i}") != nullptr;
    const std::uint32_t inner = std::strstr(path, ".AC.") != nullptr ? kCategories : kStations;
    for (std::uint32_t i = 1; i <= instancesOf(path); ++i) {
        if (!deep) {
            readDepth1(entry, i);
            continue;
        }
        for (std::uint32_t j = 1; j <= inner; ++j)
            readDepth2(entry, i, j);
    }
}

std::string writeFile(const char* name, const std::string& content) {
    std::string path = "/tmp/quorvel-bench-XXXXXX";
    const int descriptor = mkstemp(path.data());
    if (descriptor < 0 || write(descriptor, content.data(), content.size()) != static_cast<ssize_t>(content.size())) {
        std::fprintf(stderr, "cannot write %s (%s)\n", path.c_str(), name);
        std::exit(1);
    }
    close(descriptor);
    return path;
}

std::string interfaces;
std::string counters;

void removeFiles() {
    (void)unlink(interfaces.c_str());
    (void)unlink(counters.c_str());
}

std::string interfaceCounters() {
    std::string content = "Inter-|   Receive  |  Transmit\n face |bytes packets errs drop fifo frame\n";
    for (const char* name : {"wl0", "wl1", "wl2"}) {
        for (int sub = 0; sub < 8; ++sub) {
            content += std::string(name) + (sub == 0 ? "" : "." + std::to_string(sub)) +
                       ": 123456789 123456 12 3 0 0 0 45 987654321 98765 6 7 0 0 0 0\n";
        }
    }
    return content;
}

void writeFiles() {
    interfaces = writeFile("interface counters", interfaceCounters());
    counters = writeFile("utility output",
                         "txframe 98765 txbyte 987654321 txretrans 5 txerror 6 rxframe 123456 rxbyte 123456789\n"
                         "rxerror 12 rxnobuf 0 rxbadplcp 21 rxcrsglitch 22 rxbadfcs 23 rxbadsrcmac 0 rxmgocast 4\n"
                         "rxdropped 3 noise: -90 dBm\n");
    std::atexit(removeFiles);
}

}  // namespace

void preparePlatform() {
    if (interfaces.empty()) writeFiles();
    setFile(interfaces.c_str());
    setOutput(counters.c_str());
    setStations(kStations);
}

std::uint64_t wholeModelReads() {
    return reads;
}

void readWholeModel() {
    reads = 0;
    const Calls before = calls();
    for (const TableEntry& entry : gQuorvelWiFiDataModelTable.entries)
        readEntry(entry);
    const Calls& after = calls();
    modelCalls = {after.log - before.log,
                  after.lock - before.lock,
                  after.unlock - before.unlock,
                  after.extendedGet - before.extendedGet,
                  after.get - before.get,
                  after.set - before.set,
                  after.nvramGet - before.nvramGet,
                  0,
                  0,
                  0,
                  after.fileOpen - before.fileOpen,
                  after.fileClose - before.fileClose,
                  after.commandOpen - before.commandOpen,
                  after.commandClose - before.commandClose,
                  after.line - before.line,
                  after.other - before.other};
}

void wholeModelFloor() {
    const Calls wanted = modelCalls;
    char value[WLCSM_VALUE_SIZE];
    char line[512];
    for (std::uint64_t n = 0; n < wanted.log; ++n) {
        Quorvel_LogPrint(3, "wifi/QuorvelWiFiRadio", "WiFiRadioChannelGet", 1, "%s Enter", "WiFiRadioChannelGet");
    }
    for (std::uint64_t n = 0; n < wanted.lock; ++n)
        (void)QuorvelOsMutexLock(nullptr);
    for (std::uint64_t n = 0; n < wanted.unlock; ++n)
        (void)QuorvelOsMutexUnlock(nullptr);
    for (std::uint64_t n = 0; n < wanted.extendedGet; ++n)
        (void)wlcsm_mngr_ext_get(0, 0, "wlChannel", value);
    for (std::uint64_t n = 0; n < wanted.get; ++n)
        (void)wlcsm_mngr_get(0, 0, "wlStaInfo_0", value);
    for (std::uint64_t n = 0; n < wanted.nvramGet; ++n)
        (void)wlcsm_nvram_get("bsd_role");
    for (std::uint64_t n = 0; n < wanted.other; ++n)
        (void)wlcsm_get_wlUpSecs(0);
    const std::uint64_t streams = wanted.fileOpen + wanted.commandOpen;
    if (streams == 0) return;
    // The lines are shared out evenly.
    std::uint64_t left = wanted.line;
    for (std::uint64_t n = 0; n < streams; ++n) {
        std::FILE* stream = std::fopen("/proc/net/dev", "r");
        if (stream == nullptr) return;
        std::uint64_t share = left / (streams - n);
        left -= share;
        while (share-- > 0)
            (void)!std::fgets(line, sizeof line, stream);
        std::fclose(stream);
    }
}

}  // namespace quorvel::bench
