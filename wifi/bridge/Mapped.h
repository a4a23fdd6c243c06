// Reads and writes of parameters that are variables of the manager, through the library's own mapping tables.
#pragma once

#include <cstdint>

#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Mapping.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

/// Reads a row's variable for instance `i` (1 for an object without instances) and converts it. Returns the bridge's
/// code.
[[nodiscard]] uint32_t readMapped(OwnRow row, uint32_t i, void* out);
/// The same of a text, cut to `len` bytes; the buffer has one byte more.
[[nodiscard]] uint32_t readMapped(OwnRow row, uint32_t i, char* buf, uint32_t len);

/// The same for callers that name the node.
template <ObjectIndex object, uint32_t node>
[[nodiscard]] uint32_t readNode(uint32_t i, void* out) {
    static_assert(model::isMapped(object));
    constexpr OwnRow kRow = ownRow(object, node);
    return readMapped(kRow, i, out);
}
template <ObjectIndex object, uint32_t node>
[[nodiscard]] uint32_t readNode(uint32_t i, char* buf, uint32_t len) {
    static_assert(model::isMapped(object));
    constexpr OwnRow kRow = ownRow(object, node);
    return readMapped(kRow, i, buf, len);
}

/// Returns the radio of an instance: the first one, the instance itself, or the one whose slot holds it.
[[nodiscard]] uint32_t radioOf(model::Scope scope, uint32_t i);

/// Returns the SSID of an instance; 1 where there is none.
[[nodiscard]] constexpr uint32_t ssidOf(model::Scope scope, uint32_t i) {
    return scope == model::Scope::kAccessPoint ? i : 1;
}

/// Writes the marked nodes below `count` of a context for a radio and an SSID (from 1), by the table whose header this
/// is. Returns the bridge's code.
[[nodiscard]] uint32_t applyOwn(OwnRow header, uint32_t radio, uint32_t ssid, void* ctx, uint32_t count);

/// Writes the marked nodes of an object's context for instance `i`. Returns the bridge's code.
template <ObjectIndex object>
[[nodiscard]] uint32_t applyMapped(uint32_t i, void* ctx) {
    static_assert(model::isMapped(object));
    constexpr OwnRow kHeader = ownRow(object, 0);
    constexpr auto kRows = static_cast<uint32_t>(mappingRowsOf(object));
    return applyOwn(kHeader, radioOf(kHeader.scope, i), ssidOf(kHeader.scope, i), ctx, kRows);
}

}  // namespace quorvel

#pragma GCC visibility pop
