#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "gateway/description/Description.h"
#include "gateway/manager/Clock.h"
#include "gateway/manager/Random.h"
#include "gateway/manager/Values.h"
#include "host/ChannelRecords.h"
#include "host/StationRecords.h"

/// The simulated WLAN: radios, BSSs, stations, neighbours and the manager's variables. It knows neither sockets nor
/// files nor real time: it is moved through board time by advanceTo, and the same board, seed and requests at the same
/// times give the same state and the same log.
namespace quorvel::manager {

/// The values that survive a power cycle once they have been saved: variables that differ from the factory's, by
/// "RADIO.SUB.NAME" (SUB is "-" for a radio, both for the system), and non-volatile keys that differ, absent ones with
/// no text.
struct Saved {
    std::map<std::string, std::optional<std::string>> variables;
    std::map<std::string, std::optional<std::string>> nvram;

    friend bool operator==(const Saved&, const Saved&) = default;
};

struct Counters {
    std::uint64_t txBytes = 0;
    std::uint64_t rxBytes = 0;
    std::uint64_t txFrames = 0;
    std::uint64_t rxFrames = 0;
    std::uint64_t txErrors = 0;
    std::uint64_t rxErrors = 0;
    std::uint64_t txRetries = 0;
    std::uint64_t rxRetries = 0;
};

struct Station {
    description::Station setup;  ///< at present: moves change it
    std::size_t planAt = 0;      ///< next step of its plan
    std::string security;        ///< the mode that the station is set up for
    std::string passphrase;
    bool wanted = false;  ///< tries to be associated
    bool associated = false;
    bool refusalLogged = false;
    Milliseconds retryAt = 0;
    Milliseconds associatedAt = 0;
    std::uint32_t associations = 0;
    Counters counters;
};

struct WpsSession {
    bool running = false;
    bool pin = false;
    Milliseconds startedAt = 0;
};

struct Bss {
    description::Bss factory;
    Values values;
    bool filterListPresent = false;
    std::vector<std::size_t> stations;  ///< associated, in order of association
    WpsSession wps;
    Counters counters;
    std::uint64_t pendingTx = 0;  ///< bytes that the kernel interface has not seen yet
    std::uint64_t pendingRx = 0;
};

struct Radio {
    description::Radio factory;
    Values values;
    unsigned currentChannel = 0;
    Milliseconds lastChange = 0;
    Milliseconds nextAutoChannel = 0;
    int noise = -91;
    unsigned selfBusy = 0;  ///< percent of air time for own traffic in the last second
    Counters counters;
    std::uint64_t badPlcp = 0;
    std::uint64_t badFcs = 0;
    std::uint64_t badSourceMac = 0;
    std::uint64_t otherManagement = 0;
    unsigned measuredChannel = 0;
    unsigned measuredDwell = 0;  ///< 0 before the first measurement
    std::vector<Bss> bss;
};

struct LogEntry {
    std::uint64_t number = 0;  ///< from 1
    Milliseconds at = 0;
    std::string kind;
    std::string text;
};

/// A message that the event socket owes its clients.
struct StationMessage {
    AssociationMessage bytes = {};
    std::size_t size = 0;
};

class Model {
  public:
    /// Puts the board at power-on: factory values, then what was saved.
    Model(description::Board board, const Saved& saved, std::uint64_t seed);

    /// Lets board time go on to `now`, which must not go back.
    void advanceTo(Milliseconds now);
    [[nodiscard]] Milliseconds now() const {
        return now_;
    }
    /// Returns the time of the next change that no request makes and that others notice without a request: traffic on
    /// an interface, a station that comes or goes, a channel. Returns nothing when there is none. Numbers that only a
    /// request shows, like noise, are caught up with then.
    [[nodiscard]] std::optional<Milliseconds> nextChange() const;

    // Variables. Indices are 0-based; get returns nothing for a variable that does not exist.
    [[nodiscard]] std::optional<std::string> get(unsigned radio, unsigned sub, std::string_view name) const;
    [[nodiscard]] bool set(unsigned radio, unsigned sub, std::string_view name, std::optional<std::string_view> value);
    [[nodiscard]] std::optional<std::string> nvramGet(std::string_view name) const;
    [[nodiscard]] bool nvramSet(std::string_view name, std::optional<std::string_view> value);
    [[nodiscard]] Saved saved() const;

    // Commands.
    void halStarted();
    [[nodiscard]] bool startStopServices(unsigned index, unsigned command);
    [[nodiscard]] bool restart(unsigned radio);
    [[nodiscard]] bool switchChannel(unsigned radio, std::string_view text);  ///< "44" or "44/80"

    // Information. Each returns nothing for a radio, BSS or station that does not exist.
    [[nodiscard]] std::optional<ManagerStationRecord> stationInfo(unsigned radio, unsigned sub,
                                                                  std::string_view mac) const;
    [[nodiscard]] std::optional<SsidRecord> ssidInfo(unsigned radio, unsigned sub) const;
    [[nodiscard]] std::uint32_t upSeconds() const;
    [[nodiscard]] std::uint32_t radioUpSeconds(unsigned radio) const;

    // Channel measurement.
    [[nodiscard]] bool startMeasurement(unsigned radio, unsigned channel, unsigned dwell);
    [[nodiscard]] std::optional<ChannelMetricsRecord> channelMetrics(unsigned radio) const;
    [[nodiscard]] std::optional<ChannelStatsRecord> channelStats(unsigned radio) const;
    [[nodiscard]] std::optional<ChannelStats2Record> channelStats2(unsigned radio) const;
    [[nodiscard]] unsigned utilization(unsigned radio, unsigned channel) const;  ///< percent

    // Surroundings. Errors are texts that say what to change; nothing is success.
    [[nodiscard]] std::optional<std::string> joinStation(const description::Station& setup);
    [[nodiscard]] std::optional<std::string> rejoinStation(const common::MacAddress& mac,
                                                           std::optional<unsigned> accessPoint);
    [[nodiscard]] std::optional<std::string> leaveStation(const common::MacAddress& mac);
    [[nodiscard]] std::optional<std::string> moveStation(const common::MacAddress& mac, int rssi);
    [[nodiscard]] std::optional<std::string> setTraffic(const common::MacAddress& mac, unsigned downlink,
                                                        unsigned uplink);
    [[nodiscard]] std::optional<std::string> addNeighbour(const description::Neighbour& neighbour);
    [[nodiscard]] std::optional<std::string> removeNeighbour(const common::MacAddress& bssid);
    /// Returns the reason why the station is not let in, or nothing when it is or would be.
    [[nodiscard]] std::optional<std::string> refusal(const Station& station) const;

    void log(const std::string& kind, const std::string& text);
    void reseed(std::uint64_t seed);

    // Whole state, for reading.
    [[nodiscard]] const description::Board& board() const {
        return board_;
    }
    [[nodiscard]] const std::vector<Radio>& radios() const {
        return radios_;
    }
    [[nodiscard]] const std::vector<Station>& stations() const {
        return stations_;
    }
    [[nodiscard]] const std::vector<description::Neighbour>& neighbours() const {
        return neighbours_;
    }
    [[nodiscard]] const std::deque<LogEntry>& entries() const {
        return entries_;
    }
    [[nodiscard]] bool isUp(unsigned radio) const;
    [[nodiscard]] bool isUp(unsigned radio, unsigned sub) const;
    [[nodiscard]] unsigned bandwidth(unsigned radio) const;  ///< MHz
    [[nodiscard]] int noise(unsigned radio) const {
        return radios_[radio].noise;
    }
    [[nodiscard]] ManagerStationRecord record(const Station& station) const;
    [[nodiscard]] unsigned downlinkRate(const Station& station) const;  ///< kbit/s
    [[nodiscard]] unsigned uplinkRate(const Station& station) const;

    /// Takes the messages since the last call.
    [[nodiscard]] std::vector<StationMessage> takeMessages();
    struct KernelTraffic {
        unsigned radio;
        unsigned sub;
        std::uint64_t tx;
        std::uint64_t rx;
    };
    [[nodiscard]] std::vector<KernelTraffic> takeKernelTraffic();

  private:
    struct Target;

    [[nodiscard]] const Values* valuesOf(unsigned radio, unsigned sub, std::string_view name) const;
    [[nodiscard]] Values* valuesOf(unsigned radio, unsigned sub, std::string_view name);
    [[nodiscard]] std::optional<std::string> computed(unsigned radio, unsigned sub, std::string_view name) const;
    [[nodiscard]] bool accepts(unsigned radio, std::string_view name, std::string_view value) const;
    void react(unsigned radio, unsigned sub, std::string_view name, const std::string& before);
    void resetRadio(unsigned radio);
    void resetBss(unsigned radio, unsigned sub);
    void restore(const Saved& saved);

    [[nodiscard]] bool isUsable(unsigned radio, unsigned channel) const;
    void useChannel(unsigned radio, unsigned channel, const char* why);
    void chooseChannel(unsigned radio);

    [[nodiscard]] Station* find(const common::MacAddress& mac);
    [[nodiscard]] const Station* find(const common::MacAddress& mac) const;
    [[nodiscard]] Bss* bssOf(const Station& station);
    [[nodiscard]] const Bss* bssOf(const Station& station) const;
    [[nodiscard]] std::optional<std::string> securityMismatch(const Station& station, const Bss& bss) const;
    void tryJoin(std::size_t station);
    void associate(std::size_t station);
    void dissociate(std::size_t station, const std::string& why);
    void dropRefused();
    void dropAll(unsigned radio, const std::string& why);
    void message(const Station& station, std::uint32_t event);

    void tick();
    void followPlan(std::size_t station);
    void runWps(unsigned radio, unsigned sub);
    void wpsCommand(unsigned radio, unsigned sub);
    void runTraffic();

    description::Board board_;
    std::vector<Radio> radios_;
    std::vector<Station> stations_;
    std::vector<description::Neighbour> neighbours_;
    Values system_;
    Values nvram_;
    bool securityDaemons_ = true;
    Random random_;
    Milliseconds now_ = 0;
    std::deque<LogEntry> entries_;
    std::uint64_t lastEntry_ = 0;
    std::vector<StationMessage> messages_;
};

}  // namespace quorvel::manager
