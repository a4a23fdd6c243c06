#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "common/Comparison.h"

namespace quorvel::agent {

/// One condition of a search: `NotifType=="Event"`.
struct Condition {
    using Operator = common::Comparison;
    std::string path;  ///< relative: "Stats.Noise", "SSIDReference+.SSID"
    Operator comparison = Operator::kEqual;
    std::string operand;  ///< decoded
    bool quoted = false;
};

/// One step of a path.
struct Segment {
    enum class Kind : std::uint8_t { kName, kNumber, kAll, kSearch, kReference };
    Kind kind = Kind::kName;
    std::string name;                        ///< kName, kReference
    std::uint32_t number = 0;                ///< kNumber; kReference: which item of the list, 0 for all
    std::vector<Condition> conditions = {};  ///< kSearch
};

/// A path as a Message carries it, taken apart.
struct Path {
    enum class Kind : std::uint8_t { kObject, kParameter, kCommand, kEvent };
    Kind kind = Kind::kObject;
    std::vector<Segment> segments;  ///< behind "Device."
    std::string leaf;               ///< of a parameter, command or event: "SSID", "Reboot()", "Boot!"
    std::string wrong;              ///< what is wrong with the syntax; empty when nothing is

    /// Returns whether the path searches: `*`, `[...]`, or all items of a reference list.
    [[nodiscard]] bool searches() const;
};

/// Takes a path apart. A path without its last dot reads as a parameter: the model tells whether it is an object.
[[nodiscard]] Path parsePath(std::string_view text);

/// Takes a path relative to an object apart: "Stats.Noise".
[[nodiscard]] Path parseRelativePath(std::string_view text);

/// Returns whether a segment consists of digits.
[[nodiscard]] bool isNumber(std::string_view segment);

/// Orders paths by their segments, instance numbers by their size: "T.2." before "T.10.".
struct PathLess {
    using is_transparent = void;
    [[nodiscard]] bool operator()(std::string_view left, std::string_view right) const;
};

/// Returns the path of the table that holds a row: "D.T." of "D.T.3.".
[[nodiscard]] std::string_view tableOf(std::string_view row);

}  // namespace quorvel::agent
