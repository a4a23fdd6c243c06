#pragma once

#include <string>
#include <string_view>

#include "gateway/hostd/Value.h"
#include "gateway/hostd/protocol/Requests.h"

namespace quorvel::hostd {

/// Takes the answer to one request: any number of parts. The caller of the code that answers adds the end.
class Reply {
  public:
    Reply() = default;
    Reply(const Reply&) = delete;
    Reply& operator=(const Reply&) = delete;
    virtual ~Reply() = default;

    /// Sends a part.
    virtual void part(const protocol::Part& part) = 0;

    /// Sends one fault.
    void fault(Fault fault);
};

/// Returns a value's JSON form; bytes of a text that are no UTF-8, and control characters, are written as \xNN.
[[nodiscard]] protocol::Json toJson(const Value& value);

/// Returns the text with bytes that are no UTF-8, and control characters, written as \xNN.
[[nodiscard]] std::string presentable(std::string_view text);

}  // namespace quorvel::hostd
