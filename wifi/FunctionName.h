// The name that a front end's log lines carry. It stands whole behind the function's site, or (QUORVEL_COMPOSED_NAMES,
// where flash is short) the site says of which parts it is put together: the object's prefix, the parameter's name as
// it stands in the exported table, and an ending.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "wifi/QuorvelWiFiContexts.h"
#include "wifi/QuorvelWiFiTable.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

#ifdef QUORVEL_COMPOSED_NAMES

/// The endings of all front ends' names, one after the other.
inline constexpr char kEndings[] =
    "Get\0Set\0GetImpl\0InstanceGetImpl\0InitContext\0CheckContextNodeSet\0ApplyContext\0InstanceGet\0MethodSet\0Cancel"
    "\0ChannelStatsGet\0"
    "ChannelStatsSet\0ChannelStatsGet2\0RxStatsResultGet\0TxStatsResultGet\0StatsGet\0SsidNameStatusGet\0MacModeGet\0"
    "NewAPAssociatedDeviceCallbackRegister\0NewAPAssociatedDeviceCallbackDeRegister";

/// The parts of a name.
struct FunctionName {
    static constexpr uint8_t kNoEntry = 0xFF;
    uint8_t entry;    ///< whose parameter's name it has, an index of the exported table; kNoEntry for none
    uint16_t ending;  ///< where in kEndings
};
static_assert(kParametersInTable < FunctionName::kNoEntry);

/// The longest name.
inline constexpr size_t kFunctionNameSize = 80;

/// What comes before the prefix in an object's source file.
inline constexpr std::string_view kFileStem = "wifi/Quorvel";

namespace names {

struct Parameter {
    ObjectIndex object;
    std::string_view name;
};

inline constexpr Parameter kParameters[] = {
#define PARAMETER(node, name, ...) {QUORVEL_CAT3(k, THIS_OBJECT, Object), #name},
#include "wifi/QuorvelWiFiDataModel.def"
};

inline constexpr std::string_view kPrefixes[] = {
    "WiFiSystem",
#define OBJECT(...) QUORVEL_TEXT(THIS_OBJECT),
#include "wifi/QuorvelWiFiDataModel.def"
};

/// Not constant: what calls it does not compile.
void isNoFrontEnd();

consteval uint16_t endingOf(std::string_view text) {
    for (size_t at = 0; at < sizeof kEndings;) {
        const std::string_view ending(kEndings + at);
        if (ending == text) return static_cast<uint16_t>(at);
        at += ending.size() + 1;
    }
    isNoFrontEnd();
    return 0;
}

}  // namespace names

/// Takes a function's name apart.
consteval FunctionName takeApart(ObjectIndex object, std::string_view name) {
    const std::string_view rest = name.substr(names::kPrefixes[object].size());
    if (!name.starts_with(names::kPrefixes[object]) || name.size() >= kFunctionNameSize) names::isNoFrontEnd();
    for (size_t row = 0; row < kParametersInTable; ++row) {
        const auto& [owner, parameter] = names::kParameters[row];
        if (owner != object || !rest.starts_with(parameter)) continue;
        const std::string_view ending = rest.substr(parameter.size());
        if (ending != "Get" && ending != "Set" && ending != "GetImpl") continue;
        return {static_cast<uint8_t>(entryOfRow(row)), names::endingOf(ending)};
    }
    return {FunctionName::kNoEntry, names::endingOf(rest)};
}

#else

/// How far behind the site's beginning the name stands.
struct FunctionName {
    uint8_t distance;
};

/// A record that begins with a site, and the function's name behind it.
template <typename Record, size_t size>
struct Named {
    Record record;
    char function[size];
};

#endif

/// Where a front-end function stands: what its log lines say. Holds no pointer, so that the loader has nothing to
/// relocate.
struct Site {
    uint16_t line;
    ObjectIndex object;
    FunctionName name;
};

/// A function's name as text, while this lives.
class FunctionText {
  public:
#ifdef QUORVEL_COMPOSED_NAMES
    /// `file` is the object's source file.
    FunctionText(const Site& site, const char* file);
    [[nodiscard]] const char* text() const {
        return text_;
    }

  private:
    char text_[kFunctionNameSize];
#else
    FunctionText(const Site& site, const char*) : text_(reinterpret_cast<const char*>(&site) + site.name.distance) {}
    [[nodiscard]] const char* text() const {
        return text_;
    }

  private:
    const char* text_;
#endif
};

}  // namespace quorvel

// A constant record called `name` that begins with the site of the function called `functionName`.
#ifdef QUORVEL_COMPOSED_NAMES
#define QUORVEL_RECORD(type, name, functionName, ...)                                          \
    static constexpr type name {                                                               \
        {static_cast<uint16_t>(__LINE__), ::quorvel::QUORVEL_CAT3(k, THIS_OBJECT, Object),     \
         ::quorvel::takeApart(::quorvel::QUORVEL_CAT3(k, THIS_OBJECT, Object), functionName)}, \
            __VA_ARGS__                                                                        \
    }
#define QUORVEL_SITE(functionName)                                                              \
    static constexpr ::quorvel::Site site {                                                     \
        static_cast<uint16_t>(__LINE__), ::quorvel::QUORVEL_CAT3(k, THIS_OBJECT, Object),       \
            ::quorvel::takeApart(::quorvel::QUORVEL_CAT3(k, THIS_OBJECT, Object), functionName) \
    }
#else
#define QUORVEL_RECORD(type, name, functionName, ...)                                                        \
    static constexpr ::quorvel::Named<type, sizeof(functionName)> name##Named{                               \
        {{static_cast<uint16_t>(__LINE__), ::quorvel::QUORVEL_CAT3(k, THIS_OBJECT, Object), {sizeof(type)}}, \
         __VA_ARGS__},                                                                                       \
        functionName};                                                                                       \
    static constexpr const type& name = name##Named.record
#define QUORVEL_SITE(functionName)                                                                                     \
    static constexpr ::quorvel::Named<::quorvel::Site, sizeof(functionName)> siteNamed{                                \
        {static_cast<uint16_t>(__LINE__), ::quorvel::QUORVEL_CAT3(k, THIS_OBJECT, Object), {sizeof(::quorvel::Site)}}, \
        functionName};                                                                                                 \
    static constexpr const ::quorvel::Site& site = siteNamed.record
#endif

#pragma GCC visibility pop
