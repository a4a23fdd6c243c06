#pragma once

#include <nlohmann/json_fwd.hpp>

#include "gateway/hostd/Value.h"

namespace quorvel::hostd {

/// Where the answer to one request goes. An answer is any number of parts and one end.
class Reply {
  public:
    Reply() = default;
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;
    virtual ~Reply() = default;

    /// Sends a part: an object with one of the members values, faults, instances, parameters, event, wait.
    virtual void part(const nlohmann::ordered_json& members) = 0;

    /// Sends one fault.
    void fault(const Fault& fault);
};

/// Returns a fault's JSON form.
[[nodiscard]] nlohmann::ordered_json toJson(const Fault& fault);

/// Returns a value's JSON form; text that is not UTF-8, or holds control characters, has these bytes written as \xNN.
[[nodiscard]] nlohmann::ordered_json toJson(const Value& value);

/// Returns the text with what a terminal or JSON cannot take written as \xNN.
[[nodiscard]] std::string presentable(std::string_view text);

}  // namespace quorvel::hostd
