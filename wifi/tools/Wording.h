// The columns of a definition, in words.
#pragma once

#include <string>

#include "wifi/model/Contexts.h"

namespace quorvel::model {

/// Returns "boolean", "unsignedInt", "int" or "string".
[[nodiscard]] std::string_view typeName(const Type& type);

/// Returns e.g. "string(64)".
[[nodiscard]] std::string typeText(const Type& type);

/// Returns "read", "read, write", "write" or "read, write at once".
[[nodiscard]] std::string_view accessText(Access access);

/// Returns what a setter takes, e.g. "1 to 5"; empty when there is no setter.
[[nodiscard]] std::string rangeText(const Parameter& parameter);

/// Returns where the value comes from and how it is converted, e.g. "`wlEnbl`, 0 or 1".
[[nodiscard]] std::string sourceText(const Parameter& parameter);

/// Returns the word of the `read` column.
[[nodiscard]] std::string_view readName(Read read);

}  // namespace quorvel::model
