#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common/MacAddress.h"
#include "common/RadioChannels.h"

/// A board's description: the hardware and the surroundings of the simulated gateway as they leave the factory. It is
/// read from a JSON file; later configuration lives in the WLAN manager's store.
namespace quorvel::description {

using common::Band;
using common::MacAddress;

inline constexpr unsigned kMaxRadios = 3;
inline constexpr unsigned kBssPerRadio = 8;
inline constexpr unsigned kMaxAccessPoints = kMaxRadios * kBssPerRadio;

/// How a command-line tool of the board misbehaves.
enum class ToolFault {
    kNone,
    kFails,    ///< prints nothing and exits with 1
    kEmpty,    ///< prints nothing and exits with 0
    kGarbage,  ///< prints meaningless bytes and exits with 0
    kHangs,    ///< does not answer for some seconds, then fails
};

/// Tells whether the text is a security mode by its data-model name: "None", "WEP-64", "WEP-128", "WPA-Personal",
/// "WPA2-Personal", "WPA-WPA2-Personal", "WPA-Enterprise", "WPA2-Enterprise", "WPA-WPA2-Enterprise".
[[nodiscard]] bool isSecurityMode(const std::string& text);

struct Bss {
    unsigned index = 0;  ///< 0 to 7 within the radio
    std::string ssid;
    MacAddress bssid;
    bool enabled = false;
    bool hidden = false;
    bool isolated = false;
    bool wps = false;
    std::string security = "None";
    std::string passphrase;
    std::string wepKey;               ///< 5 or 13 characters
    std::string encryption = "aes";   ///< "tkip", "aes" or "tkip+aes"
    std::string filter = "disabled";  ///< "disabled", "allow" or "deny"
    std::vector<MacAddress> filterList;
    unsigned maxStations = 128;
};

struct Radio {
    unsigned index = 0;  ///< 0 to 2
    Band band = Band::k5GHz;
    bool enabled = true;
    bool autoChannel = false;
    unsigned channel = 36;
    unsigned bandwidth = 80;  ///< MHz: 20, 40, 80 or 160
    unsigned chains = 4;
    int noise = -91;                         ///< dBm
    std::vector<unsigned> possibleChannels;  ///< never empty after reading
    std::string country = "US";              ///< two letters
    std::vector<Bss> bss;                    ///< always kBssPerRadio entries in order, those not described disabled
};

/// One step of a station's own plan; `at` is in seconds of board time since power-on.
struct StationStep {
    enum class Kind { kJoin, kLeave, kMove };
    double at = 0;
    Kind kind = Kind::kJoin;
    std::optional<int> rssi;              ///< dBm
    std::optional<unsigned> accessPoint;  ///< 1 to 24
};

struct Station {
    MacAddress mac;
    unsigned accessPoint = 1;               ///< 1 to 24
    int rssi = -60;                         ///< dBm
    std::string standard = "ac";            ///< link standard, up to 63 characters
    unsigned bandwidth = 80;                ///< MHz
    unsigned downlinkRate = 0;              ///< kbit/s; 0: derived from RSSI and bandwidth
    unsigned uplinkRate = 0;                ///< kbit/s; 0: derived from RSSI and bandwidth
    unsigned downlinkTraffic = 0;           ///< kbit/s on average
    unsigned uplinkTraffic = 0;             ///< kbit/s on average
    std::optional<std::string> security;    ///< the station's own setting; absent: the BSS's factory setting
    std::optional<std::string> passphrase;  ///< the station's own setting; absent: the BSS's factory setting
    bool wpsPushButton = false;             ///< waits for a push-button exchange instead of knowing the passphrase
    std::string wpsPin;                     ///< waits for a PIN exchange with this PIN
    std::vector<StationStep> plan;          ///< in order of time; joinAt and leaveAt are steps too
};

struct Neighbour {
    std::string ssid;
    MacAddress bssid;
    std::string channel;  ///< "6", "6l", "6u", "36/80", "36/160"
    unsigned primaryChannel = 0;
    unsigned width = 20;  ///< MHz
    int rssi = -70;       ///< dBm
    int noise = -91;      ///< dBm
    std::string security = "WPA2-Personal";
    std::vector<std::string> rates;  ///< "6(b)" is a basic rate
    bool ht = true;
    bool vht = false;
    int qbss = -1;  ///< channel utilisation 0 to 255, or -1 when not announced
    std::string mode = "Managed";
};

struct Faults {
    ToolFault lspci = ToolFault::kNone;
    ToolFault i2cget = ToolFault::kNone;
    ToolFault insmod = ToolFault::kNone;
    ToolFault wl = ToolFault::kNone;
};

struct Board {
    std::string name;
    std::string identifier;          ///< "0x0030"
    std::string oui;                 ///< of the device for its managers, six upper-case digits; may be empty
    std::string serial;              ///< of the device for its managers; may be empty
    std::vector<std::string> chips;  ///< PCI device identifiers, "43c5"
    std::vector<Radio> radios;       ///< 0 to 3, in order of index without gaps
    std::vector<Station> stations;
    std::vector<Neighbour> neighbours;
    Faults faults;
};

}  // namespace quorvel::description
