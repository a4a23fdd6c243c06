// The words of a definition's columns, as values.
#pragma once

#include <cstdint>
#include <string_view>

namespace quorvel::model {

enum class Access : uint8_t {
    kReadOnly,
    kStaged,      ///< a write waits for the apply
    kStagedOnly,  ///< as kStaged, and not readable
    kAtOnce,      ///< a write takes effect when it is set
    kCommand,     ///< as kAtOnce, and its setter takes no value
};

enum class Kind : uint8_t { kBoolean, kUnsignedInt, kInt, kString };

struct Type {
    Kind kind;
    uint32_t capacity;  ///< bytes of a text; 0 for the other kinds
    bool ofStation;     ///< the getter takes a station's MAC text instead of a second instance
};

/// The values that a setter takes: those of a number from `low` to `high`, or texts of `low` or `high` characters.
struct Accepted {
    enum class Rule : uint8_t { kNone, kAny, kRange, kLengths } rule;
    uint32_t low;
    uint32_t high;
};

enum class Read : uint8_t {
    kMapped,
    kBypassed,
    kOwn,
    kInert,
    kNone,
    kStation,
    kCounter,
    kContention,
    kResult,
    kStationText,
    kStationNumber,
};

/// How a manager's text and a value become each other. Rows of objects that are not variables of the manager have none.
enum class Conversion : uint8_t { kNone, kUint32, kInt32, kBoolean, kReversedBoolean, kText, kUnconverted, kUnknown };

/// Values that are no straight conversion of the manager's text.
enum class SpecialValue : uint8_t { kNone, kFilterSwitch, kFilterListIsEmpty, kFilterAllows, kFilterList, kCipher };

/// Which of the manager's radios and SSIDs an instance of an object is.
enum class Scope : uint8_t {
    kBoard,        ///< there is one: the first radio's
    kRadio,        ///< the instance is the radio
    kAccessPoint,  ///< the instance is an SSID or access point; its slot says the radio
};

/// The words of the columns as definitions spell them.
namespace words {
// NOLINTBEGIN(readability-identifier-naming): spelt as in the definitions and their documents.
inline constexpr Access RO = Access::kReadOnly;
inline constexpr Access RW = Access::kStaged;
inline constexpr Access WO = Access::kStagedOnly;
inline constexpr Access RW_NOW = Access::kAtOnce;
inline constexpr Access RW_COMMAND = Access::kCommand;

inline constexpr Read MAPPED = Read::kMapped;
inline constexpr Read BYPASSED = Read::kBypassed;
inline constexpr Read OWN = Read::kOwn;
inline constexpr Read INERT = Read::kInert;
inline constexpr Read NONE = Read::kNone;
inline constexpr Read STATION = Read::kStation;
inline constexpr Read COUNTER = Read::kCounter;
inline constexpr Read CONTENTION = Read::kContention;
inline constexpr Read RESULT = Read::kResult;
inline constexpr Read STATION_TEXT = Read::kStationText;
inline constexpr Read STATION_NUMBER = Read::kStationNumber;

inline constexpr Type boolean{Kind::kBoolean, 0, false};
inline constexpr Type unsignedInt{Kind::kUnsignedInt, 0, false};
inline constexpr Type stationInt{Kind::kInt, 0, true};
[[nodiscard]] constexpr Type string(uint32_t capacity) {
    return {Kind::kString, capacity, false};
}

inline constexpr Accepted none{Accepted::Rule::kNone, 0, 0};
inline constexpr Accepted any{Accepted::Rule::kAny, 0, 0};
[[nodiscard]] constexpr Accepted range(uint32_t low, uint32_t high) {
    return {Accepted::Rule::kRange, low, high};
}
[[nodiscard]] constexpr Accepted lengths(uint32_t one, uint32_t other) {
    return {Accepted::Rule::kLengths, one, other};
}
// NOLINTEND(readability-identifier-naming)

/// The type column, of which `int` is a type to C++ and the other words are values.
template <typename Int>
[[nodiscard]] consteval Type typeOf() {
    static_assert(sizeof(Int) == sizeof(int32_t));
    return {Kind::kInt, 0, false};
}
template <Type type>
[[nodiscard]] consteval Type typeOf() {
    return type;
}

}  // namespace words

/// The conversion that a source column names.
[[nodiscard]] constexpr Conversion conversionNamed(std::string_view source) {
    if (source == "UINT32") return Conversion::kUint32;
    if (source == "INT32") return Conversion::kInt32;
    if (source == "BOOLEAN") return Conversion::kBoolean;
    if (source == "RBOOLEAN") return Conversion::kReversedBoolean;
    if (source == "CHAR") return Conversion::kText;
    return Conversion::kNone;
}

}  // namespace quorvel::model
