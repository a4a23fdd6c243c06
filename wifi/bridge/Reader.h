// How the value of a row is read when it needs no function of its own, decided by what the row says.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wifi/Result.h"
#include "wifi/bridge/Mapped.h"

namespace quorvel {

/// The reading of an object's COUNTER and CONTENTION rows, specialised in its implementation file:
///   template <size_t row> static uint32_t read(instance numbers, out)
template <ObjectIndex object>
struct Reads;

/// The implementation function of a row of the definitions.
template <size_t row>
struct Reader {
    template <typename... Arguments>
    [[nodiscard]] static uint32_t readRow(Arguments... arguments) {
        constexpr const auto& kRow = model::kParameters[row];
        if constexpr (kRow.read == model::Read::kInert) {
            return kSuccess;  // the caller's output keeps its value
        } else if constexpr (kRow.read == model::Read::kMapped || kRow.read == model::Read::kBypassed) {
            constexpr ObjectIndex kObject = kRow.object;
            if constexpr (model::objectOf(kObject).depth == 0) {
                return readNode<kObject, kRow.node>(1, arguments...);
            } else {
                return readNode<kObject, kRow.node>(arguments...);
            }
        } else {
            return Reads<kRow.object>::template read<row>(arguments...);
        }
    }
};

}  // namespace quorvel
