// A row of a mapping table, the library's own or a caller's, in the bridge's terms.
#pragma once

#include <cstddef>
#include <cstdint>

#include "wifi/bridge/ManagerText.h"
#include "wifi/model/Mapping.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// A variable of the manager and the node that it is bound to.
struct Binding {
    const MappingRow* row;
    RowFacts facts;
    uint32_t object;  ///< as the table's header has it
    uint32_t node;
};

/// Returns the binding of a row of the library's own tables.
inline Binding bindingOf(OwnRow own) {
    const MappingRow* row = &kMappingRows[own.number];
    const auto node = static_cast<uint32_t>(row->node);
    return {row, kRowFacts[own.number], static_cast<uint32_t>((row - node)->node), node};
}

/// Returns the binding of a node of any table. The field of a foreign table's text is as long as a value.
Binding bindingOf(const MappingRow* rows, uint32_t node);

/// Whether the manager has a radio and an SSID of these numbers (from 1).
inline bool instancesAreValid(uint32_t radio, uint32_t ssid) {
    return radio - 1 < kRadios && ssid - 1 < kAccessPoints;
}

}  // namespace quorvel

#pragma GCC visibility pop
