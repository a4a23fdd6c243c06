#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "common/MacAddress.h"

namespace quorvel::fleet {

using Json = nlohmann::ordered_json;

/// A fleet, or one of its gateways, cannot be made: the value, the rule and the remedy.
class FleetError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The most gateways that have addresses of their own: their number takes 24 bits of an address.
inline constexpr unsigned kMostGateways = 0xffffff;

/// The features of gateway `number` (from 1 to kMostGateways) that differ from the other gateways'. Made from the
/// fleet's seed and the number alone: the same every time, on every machine.
///
/// An address of the board or of a scenario becomes one of the gateway's own. Its last two bytes stay, so that a
/// person finds it again; three bytes hold the gateway; the first byte says which of the board's address blocks (the
/// first four bytes) it came from. So two gateways of a fleet never share an address.
class Identity {
  public:
    Identity(std::uint64_t seed, unsigned number);

    /// Returns the seed of what varies by chance on the gateway.
    [[nodiscard]] std::uint32_t seed() const {
        return seed_;
    }
    /// Returns the gateway's serial number, at most 40 characters that a description accepts: the letters that `model`
    /// begins with, four digits of the fleet and eight of the gateway.
    [[nodiscard]] std::string serial(const std::string& model) const;

    /// Returns the address of this gateway that takes the place of `address`. Throws FleetError when the board and the
    /// scenario have addresses of more than 60 blocks.
    [[nodiscard]] common::MacAddress address(const common::MacAddress& address);

    /// Returns the address of the gateway's passing station number `passer` (from 0 to 65535), which no board has.
    [[nodiscard]] common::MacAddress passer(unsigned passer) const;

    /// Returns the gateway's description, made from the fleet's: serial number, BSSIDs and stations are its own, radio
    /// equipment, names, neighbours and faults are the board's.
    [[nodiscard]] Json describe(const Json& board);

    /// Puts the gateway's addresses in the place of all addresses in the texts of `json`.
    void replaceAddresses(Json& json);

  private:
    [[nodiscard]] common::MacAddress compose(unsigned block, std::uint8_t high, std::uint8_t low) const;

    std::uint64_t fleetSeed_;
    unsigned number_;
    std::uint32_t place_;  ///< the number, shuffled by the seed
    std::uint32_t seed_;
    std::map<std::uint32_t, unsigned> blocks_;
};

}  // namespace quorvel::fleet
