#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "agent/Gateway.h"
#include "agent/Problem.h"
#include "agent/Task.h"
#include "agent/model/Schema.h"
#include "agent/wifi/Stations.h"

namespace quorvel::agent {

/// One value of an object instance.
struct Reading {
    std::string object;  ///< "Device.WiFi.Radio.1."
    std::string parameter;
    std::string value;
};

struct Readings {
    std::vector<Reading> values;
    std::vector<GatewayFault> faults;
};

/// The library's objects as a controller sees them: stations have lasting numbers, secrets read as empty, an Alias that
/// the library does not have is made up.
class WifiView {
  public:
    /// `noticed` takes each difference between the lists of stations that a read brings to light.
    WifiView(Gateway& gateway, std::function<void(const Stations::Difference&)> noticed)
        : gateway_(gateway), noticed_(std::move(noticed)) {}

    void adopt(const Schema& schema) {
        schema_ = &schema;
    }

    /// Reads parameters ("Device.WiFi.Radio.1.Channel") and objects ("Device.WiFi.Radio.1."), of these down to `levels`
    /// levels, 0 for all. `clear`: secured values as they are, for taking back a Set.
    Task<Readings> read(std::vector<std::string> paths, unsigned levels, bool clear = false);

    /// Returns the rows of a table, ascending; a problem when a row in its path is missing.
    struct Rows {
        std::vector<std::uint32_t> instances;
        Problem problem;
    };
    Task<Rows> rows(std::string table);

    /// Compares the lists of stations of some access points, by their numbers; none are named: of all.
    Task<void> compareStations(std::set<std::string> accessPoints);

    /// Reads the stations of all access points with everything below them.
    Task<std::vector<Reading>> readStations();

    [[nodiscard]] const Stations& stations() const {
        return stations_;
    }

    /// Translates values as the gateway numbers them; those of stations that are unknown are left out.
    [[nodiscard]] std::vector<Reading> translate(const std::vector<GatewayValue>& values, bool clear);

  private:
    Task<Readings> readLists(unsigned levels);
    void noticeStations(const GetAnswer& answer, const std::vector<std::string>& asked);

    Gateway& gateway_;
    std::function<void(const Stations::Difference&)> noticed_;
    const Schema* schema_ = nullptr;
    Stations stations_;
};

}  // namespace quorvel::agent
