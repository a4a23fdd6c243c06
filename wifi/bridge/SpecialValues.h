// Values that are no straight conversion of the manager's text: the station filter's and the cipher.
#pragma once

#include <cstdint>

#include "wifi/bridge/ManagerText.h"
#include "wifi/model/Columns.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// Stores the value of a text that the manager has. Returns whether there is one; a node that is special only when its
/// variable is absent has none.
[[nodiscard]] bool readSpecial(model::SpecialValue special, const char* text, void* out);

/// Stores the value of an absent variable. Returns whether there is one.
[[nodiscard]] bool readAbsent(model::SpecialValue special, void* out);

enum class Writing : uint8_t {
    kConverted,  ///< the node is no special one
    kSkipped,
    kSpecial,
};

/// Makes the text of a field, in a cleared buffer.
[[nodiscard]] Writing writeSpecial(model::SpecialValue special, const char* field, char* text);

}  // namespace quorvel

#pragma GCC visibility pop
