#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

// A board's description: what hardware and surroundings the simulated gateway has. It is read from a JSON file and says
// what the factory put on the board; what is configured later lives in the WLAN manager's store.
namespace quorvel::manager {

inline constexpr unsigned kMaxRadios = 3;
inline constexpr unsigned kBssPerRadio = 8;
inline constexpr unsigned kMaxAccessPoints = kMaxRadios * kBssPerRadio;

// A 48-bit address as six bytes in the order in which it is written.
struct MacAddress {
    std::uint8_t bytes[6] = {};

    friend bool operator==(const MacAddress&, const MacAddress&) = default;
    friend auto operator<=>(const MacAddress&, const MacAddress&) = default;
};

// Reads "02:1a:..." (either case). Returns nothing when the text is anything but six colon-separated pairs.
[[nodiscard]] std::optional<MacAddress> parseMac(const std::string& text);
// Writes the address with lower-case digits and colons, 17 characters.
[[nodiscard]] std::string formatMac(const MacAddress& mac);

enum class Band { k2_4GHz, k5GHz };

// How a command-line tool of the board misbehaves.
enum class ToolFault {
    None,
    Fails,    // prints nothing and exits with 1
    Empty,    // prints nothing and exits with 0
    Garbage,  // prints bytes that mean nothing and exits with 0
    Hangs,    // does not answer for some seconds, then fails
};

// Security modes by their data-model names: "None", "WEP-64", "WEP-128", "WPA-Personal", "WPA2-Personal",
// "WPA-WPA2-Personal", "WPA-Enterprise", "WPA2-Enterprise", "WPA-WPA2-Enterprise".
[[nodiscard]] bool isSecurityMode(const std::string& text);

struct BoardBss {
    unsigned index = 0;  // 0 to 7 within the radio
    std::string ssid;
    MacAddress bssid;
    bool enabled = false;
    bool hidden = false;
    bool isolated = false;
    bool wps = false;
    std::string security = "None";
    std::string passphrase;
    std::string wepKey;               // 5 or 13 characters
    std::string encryption = "aes";   // "tkip", "aes" or "tkip+aes"
    std::string filter = "disabled";  // "disabled", "allow" or "deny"
    std::vector<MacAddress> filterList;
    unsigned maxStations = 128;
};

struct BoardRadio {
    unsigned index = 0;  // 0 to 2
    Band band = Band::k5GHz;
    bool enabled = true;
    bool autoChannel = false;
    unsigned channel = 36;
    unsigned bandwidth = 80;  // MHz: 20, 40, 80 or 160
    unsigned chains = 4;
    int noise = -91;                         // dBm
    std::vector<unsigned> possibleChannels;  // never empty after reading
    std::string country = "US";              // two letters
    std::vector<BoardBss> bss;               // always kBssPerRadio entries in order, those not described disabled
};

// One step of a station's own plan; `at` is in seconds of board time since power-on.
struct StationStep {
    enum class Kind { Join, Leave, Move };
    double at = 0;
    Kind kind = Kind::Join;
    std::optional<int> rssi;              // dBm
    std::optional<unsigned> accessPoint;  // 1 to 24
};

struct BoardStation {
    MacAddress mac;
    unsigned accessPoint = 1;               // 1 to 24
    int rssi = -60;                         // dBm
    std::string standard = "ac";            // link standard, up to 63 characters
    unsigned bandwidth = 80;                // MHz
    unsigned downlinkRate = 0;              // kbit/s; 0 derives it from RSSI and bandwidth
    unsigned uplinkRate = 0;                // kbit/s; likewise
    unsigned downlinkTraffic = 0;           // kbit/s on average
    unsigned uplinkTraffic = 0;             // kbit/s on average
    std::optional<std::string> security;    // what the station is set up for; absent: what the factory gave the BSS
    std::optional<std::string> passphrase;  // likewise
    bool wpsPushButton = false;             // waits for a push-button exchange instead of knowing the passphrase
    std::string wpsPin;                     // waits for a PIN exchange with this PIN
    std::vector<StationStep> plan;          // in order of time; joinAt and leaveAt are steps too
};

struct BoardNeighbour {
    std::string ssid;
    MacAddress bssid;
    std::string channel;  // "6", "6l", "6u", "36/80", "36/160"
    unsigned primaryChannel = 0;
    unsigned width = 20;  // MHz
    int rssi = -70;       // dBm
    int noise = -91;      // dBm
    std::string security = "WPA2-Personal";
    std::vector<std::string> rates;  // "6(b)" is a basic rate
    bool ht = true;
    bool vht = false;
    int qbss = -1;  // channel utilisation 0 to 255, or -1 when not announced
    std::string mode = "Managed";
};

struct BoardFaults {
    ToolFault lspci = ToolFault::None;
    ToolFault i2cget = ToolFault::None;
    ToolFault insmod = ToolFault::None;
    ToolFault wl = ToolFault::None;
};

struct Board {
    std::string name;
    std::string identifier;          // "0x0030"
    std::vector<std::string> chips;  // PCI device identifiers, "43c5"
    std::vector<BoardRadio> radios;  // 0 to 3, in order of index without gaps
    std::vector<BoardStation> stations;
    std::vector<BoardNeighbour> neighbours;
    BoardFaults faults;
};

// What is wrong with a description: one line, "FILE:LINE:COLUMN: POINTER: what was expected, found ...".
struct BoardError {
    std::string message;
};

// Reads and checks the description in `path`. Gives the board or the first thing that is wrong with it.
[[nodiscard]] std::variant<Board, BoardError> readBoardFile(const std::string& path);

// The same for a text; `name` stands for the file in messages.
[[nodiscard]] std::variant<Board, BoardError> parseBoard(const std::string& text, const std::string& name);

// One station or neighbour in the form that it has in a description; `name` stands for the source in messages.
[[nodiscard]] std::variant<BoardStation, BoardError> parseStation(const std::string& text, const std::string& name);
[[nodiscard]] std::variant<BoardNeighbour, BoardError> parseNeighbour(const std::string& text, const std::string& name);

}  // namespace quorvel::manager
