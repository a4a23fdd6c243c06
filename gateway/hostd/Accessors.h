#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "gateway/hostd/DataModel.h"
#include "gateway/hostd/Value.h"

namespace quorvel::hostd {

/// Reads a parameter through its getter. Returns the plug-in's result code; `value` is valid only when it is 0. The
/// parameter must have a getter of the ordinary kind. Bytes that a getter leaves unwritten read as 0 or as the empty
/// text.
[[nodiscard]] std::uint32_t read(const Parameter& parameter, const Instances& instances, Value& value);

/// Reads one of the per-station parameters for the station called `mac`.
[[nodiscard]] std::uint32_t readStation(const Parameter& parameter, const Instances& instances, const char* mac,
                                        Value& value);

/// Has a channel measured: `record` (of `size` bytes, with the channel in its first word) is filled by the plug-in.
[[nodiscard]] std::uint32_t measure(const Parameter& parameter, const Instances& instances, void* record,
                                    std::uint32_t size);

/// Turns text into a value of the parameter's type. Returns kNone, kWrongType or (a number that does not fit)
/// kValueRefused. Booleans are true, false, 1 and 0.
[[nodiscard]] FaultCode parse(const Parameter& parameter, std::string_view text, Value& value);

/// Calls the parameter's setter with an initialised context. Returns the plug-in's result code.
[[nodiscard]] std::uint32_t stage(const Parameter& parameter, void* context, const Instances& instances,
                                  const Value& value);

/// Initialises the context of an object, which has node.contextSize bytes.
[[nodiscard]] std::uint32_t initContext(const Node& node, void* context);

/// Applies the context of an object.
[[nodiscard]] std::uint32_t applyContext(const Node& node, void* context, const Instances& instances);

}  // namespace quorvel::hostd
