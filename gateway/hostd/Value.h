#pragma once

#include <cstdint>
#include <string>

#include "gateway/hostd/TableEntry.h"
#include "gateway/hostd/protocol/Records.h"

namespace quorvel::hostd {

/// A parameter's value: text for a text, the number (a boolean's 0 or 1) for everything else.
struct Value {
    Type type = Type::kText;
    std::uint32_t number = 0;  ///< an int's bits
    std::string text;

    friend bool operator==(const Value&, const Value&) = default;
};

using protocol::Fault;
using protocol::FaultCode;

}  // namespace quorvel::hostd
