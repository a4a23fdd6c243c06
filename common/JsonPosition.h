#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace quorvel::common {

/// Returns "LINE:COLUMN", both from 1, of the byte at `offset`; an offset beyond the end is taken as the end.
[[nodiscard]] std::string placeOfByte(std::string_view text, std::size_t offset);

/// Returns "LINE:COLUMN" of the value that `pointer` ("/radios/0/channel") names in `text`, which must be valid JSON.
/// When the pointer leads nowhere, the place is that of the last value on the way.
[[nodiscard]] std::string placeOfPointer(std::string_view text, std::string_view pointer);

}  // namespace quorvel::common
