// The arguments of a format as values.
#pragma once

#include <cstdarg>
#include <vector>

#include "recorder/desk/Recording.h"

namespace quorvel::recorder {

/// A constant text of the library.
[[nodiscard]] Value nameValue(const char* text);

/// Appends what `format` takes from the list.
void appendFormatValues(std::vector<Value>& values, const char* format, std::va_list list);

}  // namespace quorvel::recorder
