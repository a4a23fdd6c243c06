#pragma once

#include <cstdint>
#include <string>

#include "gateway/hostd/TableEntry.h"

namespace quorvel::hostd {

/// A parameter's value: text for a text, the number (a boolean's 0 or 1) for everything else.
struct Value {
    Type type = Type::kText;
    std::uint32_t number = 0;  ///< an int's bits
    std::string text;

    friend bool operator==(const Value&, const Value&) = default;
};

/// USP fault codes that the host gives.
enum class FaultCode : std::uint16_t {
    kNone = 0,
    kInternal = 7003,        ///< the plug-in could not do it
    kBadSyntax = 7008,       ///< the search expression makes no sense
    kWrongType = 7011,       ///< the text is no value of the parameter's type
    kValueRefused = 7012,    ///< the plug-in refused the value
    kReadOnly = 7013,        ///< the parameter cannot be written
    kNoSuchInstance = 7016,  ///< the object instance does not exist
    kNoSuchPath = 7026,      ///< the data model has no such path
};

/// What went wrong with one path.
struct Fault {
    FaultCode code = FaultCode::kNone;
    std::string path;
    std::string reason;
    std::string suggestion;    ///< the nearest existing path, when there is one
    std::uint32_t result = 0;  ///< the plug-in's own result code, 0 when it was not asked
    std::string logLine;       ///< the plug-in's error lines, joined by "; "
};

}  // namespace quorvel::hostd
