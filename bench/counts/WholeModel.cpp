// The whole model read, and its floor.
#include <quorvel.h>
#include <unistd.h>
#include <wlcsm.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "bench/counts/NullPlatform.h"
#include "bench/counts/Operation.h"
#include "wifi/QuorvelWiFiTable.h"

namespace quorvel::bench {
namespace {

constexpr std::uint32_t kStations = 8;
constexpr std::uint32_t kCategories = 4;
constexpr char kMac[] = "02:00:00:00:00:00";

Calls modelCalls;

// Large enough for every text, and for the records of the channel measurements.
char text[2048 + 1];

enum : std::size_t { kPath = 0, kName = 1, kType = 2, kAccess = 3, kGetter = 6, kGetterDepth2 = 55 };

std::uint32_t instancesOf(const char* path) {
    if (std::strncmp(path, "WiFi.Radio.", 11) == 0) return 3;
    if (std::strncmp(path, "WiFi.Neighboring", 16) == 0 || std::strncmp(path, "WiFi.Channel", 12) == 0) return 1;
    return 24;
}

// One read of the model: how its getter is called, and with which instances.
struct Read {
    TableWord getter;
    void (*call)(const Read&);
    std::uint32_t i;
    std::uint32_t j;
};

std::uint8_t byte;
std::uint32_t word;
std::int32_t number;

void callBoolean0(const Read& read) {
    (void)read.getter.booleanGet0(&byte);
}
void callBoolean1(const Read& read) {
    (void)read.getter.booleanGet1(read.i, &byte);
}
void callBoolean2(const Read& read) {
    (void)read.getter.booleanGet2(read.i, read.j, &byte);
}
void callUnsigned0(const Read& read) {
    (void)read.getter.unsignedGet0(&word);
}
void callUnsigned1(const Read& read) {
    (void)read.getter.unsignedGet1(read.i, &word);
}
void callUnsigned2(const Read& read) {
    (void)read.getter.unsignedGet2(read.i, read.j, &word);
}
void callInt1(const Read& read) {
    (void)read.getter.intGet1(read.i, &number);
}
void callInt2(const Read& read) {
    (void)read.getter.intGet2(read.i, read.j, &number);
}
void callText0(const Read& read) {
    (void)read.getter.textGet0(text, sizeof text - 1);
}
void callText1(const Read& read) {
    text[0] = '\0';
    (void)read.getter.textGet1(read.i, text, sizeof text - 1);
}
void callText2(const Read& read) {
    (void)read.getter.textGet2(read.i, read.j, text, 64);
}
void callStation(const Read& read) {
    (void)read.getter.stationGet(read.i, kMac, &number);
}

// By type code and depth.
using Call = void (*)(const Read&);
constexpr Call kCalls[5][3] = {{callText0, callText1, callText2},
                               {},
                               {callBoolean0, callBoolean1, callBoolean2},
                               {callUnsigned0, callUnsigned1, callUnsigned2},
                               {nullptr, callInt1, callInt2}};

void addReads(std::vector<Read>& model, const TableEntry& entry) {
    const char* path = entry.words[kPath].text;
    const char* first = std::strstr(path, "{i}");
    const std::uint32_t depth = first == nullptr ? 0 : std::strstr(first + 1, "{i}") == nullptr ? 1 : 2;
    const auto type = entry.words[kType].value;
    const TableWord getter = entry.words[depth == 2 ? kGetterDepth2 + type : kGetter + 2 * type + depth];
    // A writable text of depth 2 has its setter there.
    const bool settersWord = depth == 2 && type == kTypeString && entry.words[kAccess].value == kWritable;
    if (getter.value == 0 || settersWord) return;
    const std::string name = entry.words[kName].text;
    const bool ofStation =
        name == "AssociatedDeviceRSSI" || name == "AssociatedDeviceRxRate" || name == "AssociatedDeviceTxRate";
    const std::uint32_t outer = depth == 0 ? 1 : instancesOf(path);
    const std::uint32_t inner = ofStation                              ? kStations
                                : depth != 2                           ? 1
                                : std::strstr(path, ".AC.") != nullptr ? kCategories
                                                                       : kStations;
    for (std::uint32_t i = 1; i <= outer; ++i) {
        for (std::uint32_t j = 1; j <= inner; ++j)
            model.push_back({getter, ofStation ? callStation : kCalls[type][depth], i, j});
    }
}

// The contexts and instances that a host has prepared before it reads.
const std::vector<Read>& modelReads() {
    static const std::vector<Read> model = [] {
        std::vector<Read> all;
        for (const TableEntry& entry : gQuorvelWiFiDataModelTable.entries)
            addReads(all, entry);
        return all;
    }();
    return model;
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
    return modelReads().size();
}

void readWholeModel() {
    const std::vector<Read>& model = modelReads();
    const Calls before = calls();
    for (const Read& read : model)
        read.call(read);
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
