#include "wifi/parsing/NeighbourScan.h"

#include <cstring>
#include <string_view>

#include "wifi/Log.h"
#include "wifi/model/Implementations.h"
#include "wifi/parsing/DecimalText.h"
#include "wifi/parsing/Text.h"

namespace quorvel {
namespace {

// The log knows the parser as a part of the apply that scans.
constexpr const char* kLogFile = "wifi/QuorvelWiFiRadioStatsImpl";
constexpr char kScan[] = "WiFiRadioStatsApplyContextImpl";

// Longer lines arrive in pieces, each of which counts as a line.
constexpr size_t kLineSize = 128;

// The parts found in the entry being parsed.
struct Found {
    bool radio;
    bool ssid;
    bool bssid;
    bool mode;
    bool channel;
    bool rssi;
    bool noise;
    bool rates;
    bool qbss;
    // Indicators for the decisions at the entry's end.
    bool rsn;
    bool wpa;
    bool tkip;
    bool aes;
    bool psk;
    bool wep;
    bool ht;
    bool vht;
};

struct Entry {
    NeighboringWiFiResult& result;
    Found& found;
    uint32_t number;  // from 0
    uint32_t radio;   // from 1
};

// Logs a part that was found, a number or a text.
template <typename Value>
[[gnu::noinline]] void logFound(const Entry& entry, const char* format, Value value, const char* function = kScan,
                                uint32_t line = __builtin_LINE()) {
    Quorvel_LogPrint(kLogTraffic, kLogFile, function, line, format, entry.number, value);
}

// Returns what follows `prefix` in the line, or null when the line does not start with it.
const char* afterPrefix(const char* line, std::string_view prefix) {
    // Most lines start with another letter.
    if (line[0] != prefix[0]) return nullptr;
    return strncmp(line, prefix.data(), prefix.size()) == 0 ? line + prefix.size() : nullptr;
}

// Returns what follows the first `text` in the line, or null when the line does not contain it.
const char* after(const char* line, std::string_view text) {
    const char* place = strstr(line, text.data());
    return place == nullptr ? nullptr : place + text.size();
}

// A word between blanks.
struct Token {
    char text[kLineSize];
    const char* end;  // where the next one is looked for

    [[gnu::noinline]] explicit Token(const char* from) {
        while (isBlank(*from))
            ++from;
        size_t length = 0;
        for (; *from != '\0' && !isBlank(*from); ++from)
            text[length++] = *from;
        text[length] = '\0';
        end = from;
    }
    [[nodiscard]] bool isEmpty() const {
        return text[0] == '\0';
    }
};

[[gnu::noinline]] void store(char* field, size_t size, const char* text) {
    memcpy(field, text, strnlen(text, size));
}

template <size_t size>
void store(char (&field)[size], const char* text) {
    store(field, size, text);
}

int32_t number(const char* text) {
    return static_cast<int32_t>(decimalNumber(text));
}

void findRadio(const Entry& entry) {
    if (entry.found.radio) return;
    entry.found.radio = true;
    constexpr uint32_t kNameLength = 64;
    char name[kNameLength + 1] = {};
    (void)WiFiRadioNameGetImpl(entry.radio, name, kNameLength);  // an unread name is empty
    store(entry.result.radio, name);
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_RADIO[%d] found: %s", name);
}

void findSsid(const Entry& entry, const char* line) {
    if (entry.found.ssid) return;
    const char* quoted = afterPrefix(line, "SSID: ");
    if (quoted == nullptr) return;
    entry.found.ssid = true;
    // Without the opening quote; and the closing one goes before the field bounds the copy.
    Token name(*quoted == '\0' ? quoted : quoted + 1);
    if (!name.isEmpty()) name.text[strlen(name.text) - 1] = '\0';
    store(entry.result.ssid, name.text);
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_SSID[%d] found: %s", name.text);
}

void findBssid(const Entry& entry, const char* line) {
    if (entry.found.bssid) return;
    const char* text = afterPrefix(line, "BSSID: ");
    if (text == nullptr) return;
    entry.found.bssid = true;
    const Token bssid(text);
    store(entry.result.bssid, bssid.text);
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_BSSID[%d] found: %s", bssid.text);
}

void findMode(const Entry& entry, const char* line) {
    if (entry.found.mode) return;
    const char* text = afterPrefix(line, "Mode: ");
    if (text == nullptr) return;
    entry.found.mode = true;
    const Token mode(text);
    // Quirk: compares the token's length: "Man" is managed too.
    entry.result.mode = strncmp(mode.text, "Managed", strlen(mode.text)) == 0 ? 2 : 1;
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_MODE[%d] found: %d", entry.result.mode);
}

void findChannel(const Entry& entry, const char* line) {
    if (entry.found.channel) return;
    const char* text = after(line, "Channel: ");
    if (text == nullptr) return;
    entry.found.channel = true;
    NeighboringWiFiResult& result = entry.result;
    Token channel(text);
    char* slash = strchr(channel.text, '/');
    if (slash != nullptr) {
        *slash = '\0';
        const char* width = slash + 1;
        if (strcmp(width, "80") == 0) {
            result.operatingChannelBandwidth = 3;
        } else {
            QUORVEL_LOG(Error, kScan, "Invalid Channel bandwidth %s", width);
        }
    } else {
        // A side band, upper or lower, makes 40 MHz.
        const bool hasSideBand = strchr(channel.text, 'u') != nullptr || strchr(channel.text, 'l') != nullptr;
        result.operatingChannelBandwidth = hasSideBand ? 2 : 1;
    }
    result.channel = static_cast<uint32_t>(number(channel.text));
    result.operatingFrequencyBand = result.channel < 36 ? 1 : 2;
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_CHANNEL[%d] found: %d", result.channel);
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_OPERATINGCHANNELBANDWIDTH[%d] found: %d",
             result.operatingChannelBandwidth);
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_OPERATINGFREQUENCYBAND[%d] found: %d",
             result.operatingFrequencyBand);
}

void findRssi(const Entry& entry, const char* line) {
    if (entry.found.rssi) return;
    const char* text = after(line, "RSSI: ");
    if (text == nullptr) return;
    entry.found.rssi = true;
    entry.result.signalStrength = number(text);
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_SIGNALSTRENGTH[%d] found: %d", entry.result.signalStrength);
}

// The first rule that fits a line is the only one.
void findSecurity(Found& found, const char* line) {
    if (afterPrefix(line, "RSN") != nullptr) {
        found.rsn = true;
    } else if (afterPrefix(line, "WPA") != nullptr) {
        found.wpa = true;
    } else if (const char* capability = after(line, "Capability")) {
        found.wep = strstr(capability, "WEP") != nullptr || found.wep;
    } else if (const char* ciphers = after(line, "unicast ciphers")) {
        found.tkip = strstr(ciphers, "TKIP") != nullptr || found.tkip;
        found.aes = strstr(ciphers, "AES") != nullptr || found.aes;
    } else if (const char* suites = after(line, "AKM Suites")) {
        found.psk = strstr(suites, "WPA-PSK") != nullptr || strstr(suites, "WPA2-PSK") != nullptr || found.psk;
    }
}

void findCapability(Found& found, const char* line) {
    if (afterPrefix(line, "HT Capable") != nullptr) {
        found.ht = true;
    } else if (afterPrefix(line, "VHT Capable") != nullptr) {
        found.vht = true;
    }
}

void findNoise(const Entry& entry, const char* line) {
    if (entry.found.noise) return;
    const char* text = after(line, "noise: ");
    if (text == nullptr) return;
    entry.found.noise = true;
    entry.result.noise = number(text);
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_NOISE[%d] found: %d", entry.result.noise);
}

// A comma list that grows in a field and never beyond it.
struct CommaList {
    char* field;
    size_t size;
    size_t length = 0;

    template <size_t capacity>
    explicit CommaList(char (&list)[capacity]) : field(list), size(capacity) {}
    void append(const char* text) {
        const size_t taken = strnlen(text, size - length);
        memcpy(field + length, text, taken);
        length += taken;
        if (length < size) field[length++] = ',';
    }
    // Takes the last comma away.
    void end() {
        if (length != 0) field[--length] = '\0';
    }
};

void findRates(const Entry& entry, const char* line) {
    constexpr std::string_view kPrefix = "Supported Rates: ";
    if (entry.found.rates || afterPrefix(line, kPrefix) == nullptr) return;
    entry.found.rates = true;
    NeighboringWiFiResult& result = entry.result;
    CommaList supported(result.supportedDataTransferRates);
    CommaList basic(result.basicDataTransferRates);
    // Behind the prefix stand a bracket and a blank.
    const char* rest = line + strnlen(line, kPrefix.size() + 2);
    for (Token rate(rest); !rate.isEmpty() && strcmp(rate.text, "]") != 0; rate = Token(rate.end)) {
        char* mark = strchr(rate.text, '(');
        if (mark != nullptr) {
            *mark = '\0';
            basic.append(rate.text);
        }
        supported.append(rate.text);
    }
    supported.end();
    basic.end();
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_SUPPORTEDDATATRANSFERRATES[%d] found: %s",
             result.supportedDataTransferRates);
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_BASICDATATRANSFERRATES[%d] found: %s",
             result.basicDataTransferRates);
}

void findQbss(const Entry& entry, const char* line) {
    if (entry.found.qbss) return;
    const char* text = afterPrefix(line, "QBSS Channel Utilization: ");
    if (text == nullptr) return;
    entry.found.qbss = true;
    const char* share = after(text, "(");
    if (share != nullptr) entry.result.qbssUtilization = static_cast<uint32_t>(number(share));
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_QBSSUTILIZATION[%d] found: %d", entry.result.qbssUtilization);
}

void parseLine(const Entry& entry, const char* line) {
    findRadio(entry);
    findSsid(entry, line);
    findBssid(entry, line);
    findMode(entry, line);
    findChannel(entry, line);
    findRssi(entry, line);
    findSecurity(entry.found, line);
    findCapability(entry.found, line);
    entry.result.beaconPeriod = 100;
    findNoise(entry, line);
    findRates(entry, line);
    entry.result.dtimPeriod = 1;
    findQbss(entry, line);
}

// Encryption of a network with both RSN and WPA.
uint32_t mixedEncryption(const Found& found) {
    constexpr uint32_t kTkip = 1;
    constexpr uint32_t kAes = 2;
    constexpr uint32_t kTkipAndAes = 3;
    if (!found.tkip) return kAes;
    return found.aes ? kTkipAndAes : kTkip;
}

void decideSecurity(const Entry& entry) {
    static constexpr char kDecision[] = "Quorvel_P_WiFiRadioStatsNeighboringWiFiDiagnosticResultDecideSecurity";
    const Found& found = entry.found;
    NeighboringWiFiResult& result = entry.result;
    QUORVEL_LOG(Traffic, kDecision,
                "Neighboring WiFi[%d]: foundRSN[%d], foundWPA[%d], foundTKIP[%d], foundAES[%d], foundPSK[%d], "
                "foundWEP[%d]",
                entry.number, found.rsn, found.wpa, found.tkip, found.aes, found.psk, found.wep);
    if (found.rsn && found.wpa) {
        result.securityModeEnabled = found.psk ? 5 : 8;
        result.encryptionMode = mixedEncryption(found);
    } else if (found.rsn) {
        result.securityModeEnabled = found.psk ? 4 : 7;
        result.encryptionMode = 2;
    } else if (found.wpa) {
        QUORVEL_LOG(Error, kDecision, "Invalid Security Mode: WPA");
    } else {
        result.securityModeEnabled = found.wep ? 2 : 1;
    }
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_SECURITYMODEENABLED[%d] found: %d", result.securityModeEnabled,
             kDecision);
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_ENCRYPTIONMODE[%d] found: %d", result.encryptionMode, kDecision);
}

template <size_t count>
bool containsAny(const char* text, const char (&parts)[count][4]) {
    for (const auto& part : parts) {
        if (strstr(text, part) != nullptr) return true;
    }
    return false;
}

void decideStandard(const Entry& entry) {
    static constexpr char kDecision[] = "Quorvel_P_WiFiRadioStatsNeighboringWiFiDiagnosticResultDecideStandard";
    // Quirk: looks for parts of the text, not for rates: "12" alone makes both b and g.
    static constexpr char kRatesOfB[][4] = {"1", "2", "5.5", "11"};
    static constexpr char kRatesOfG[][4] = {"6", "9", "12", "18", "24", "36", "48", "54"};
    const Found& found = entry.found;
    NeighboringWiFiResult& result = entry.result;
    QUORVEL_LOG(Traffic, kDecision, "Neighboring WiFi[%d]: foundHT[%d], foundVHT[%d]", entry.number, found.ht,
                found.vht);
    char rates[sizeof result.supportedDataTransferRates + 1] = {};
    memcpy(rates, result.supportedDataTransferRates, sizeof result.supportedDataTransferRates);
    CommaList standards(result.supportedStandards);
    if (result.channel > 35) {
        standards.append("a");
    } else if (result.channel < 15) {
        if (containsAny(rates, kRatesOfB)) standards.append("b");
        if (containsAny(rates, kRatesOfG)) standards.append("g");
    }
    // Quirk: with both, n only.
    if (found.ht) {
        standards.append("n");
    } else if (found.vht) {
        standards.append("ac");
    }
    standards.end();
    memcpy(result.operatingStandards, result.supportedStandards, sizeof result.supportedStandards);
    logFound(entry, "WIFINEIGHBORINGDIAGNOSTICSRESULT_SUPPORTEDSTANDARDS[%d] found: %s", result.supportedStandards,
             kDecision);
}

}  // namespace

uint32_t countNeighbours(FILE* file) {
    uint32_t count = 0;
    char line[kLineSize];
    while (fgets(line, sizeof line, file) != nullptr) {
        if (afterPrefix(line, "SSID: ") != nullptr) ++count;
    }
    return count;
}

void parseNeighbours(FILE* file, uint32_t radio, NeighboringWiFiResult* results, uint32_t count) {
    Found found{};
    char line[kLineSize];
    uint32_t number = 0;
    while (number < count && fgets(line, sizeof line, file) != nullptr) {
        QUORVEL_LOG(Trace, kScan, "strlen[%d]: %s", static_cast<int>(strlen(line)), line);
        const Entry entry{results[number], found, number, radio};
        if (line[0] != '\0' && line[0] != '\n') {
            parseLine(entry, line);
            continue;
        }
        decideSecurity(entry);
        decideStandard(entry);
        QUORVEL_LOG(Traffic, kScan, "Neighboring WiFi[%d] parse done.", number);
        found = {};
        ++number;
    }
}

}  // namespace quorvel
