#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel::agent {

/// The table below which the stations' tables are.
inline constexpr std::string_view kAccessPoints = "Device.WiFi.AccessPoint.";

/// The instance numbers of stations. The library numbers associated devices by their position, which shifts when one
/// leaves; a controller sees one number for a station's stay, and nobody gets that number again.
class Stations {
  public:
    struct Row {
        std::string path;  ///< "Device.WiFi.AccessPoint.1.AssociatedDevice.7."
        std::string mac;
    };
    struct Difference {
        std::vector<Row> joined;
        std::vector<Row> left;
    };

    /// Takes the list of an access point ("Device.WiFi.AccessPoint.1.AssociatedDevice."), in the library's order, and
    /// returns how it differs from the last. A list with a repeated or an empty address was read while rows shifted: it
    /// adds stations, but removes none; neither does one that is not `whole`.
    Difference update(const std::string& table, const std::vector<std::string>& macs, bool whole = true);

    /// Returns the number of a station, or 0.
    [[nodiscard]] std::uint32_t numberOf(std::string_view table, std::string_view mac) const;

    /// Returns the numbers of an access point's stations, ascending.
    [[nodiscard]] std::vector<std::uint32_t> numbers(std::string_view table) const;

    /// Returns the tables that have been looked at.
    [[nodiscard]] std::vector<std::string> tables() const;

    /// Returns whether a path is, or is below, the table of an access point's stations; `table` is that table.
    [[nodiscard]] static bool concerns(std::string_view path, std::string_view& table);

  private:
    struct Table {
        std::map<std::string, std::uint32_t, std::less<>> numbers;
        std::uint32_t highest = 0;
    };
    std::map<std::string, Table, std::less<>> tables_;
};

}  // namespace quorvel::agent
