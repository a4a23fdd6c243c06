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
    const char* variable;
    const char* conversionName;  ///< as the table has it; empty in the library's own, whose conversions are all known
    model::Conversion conversion;
    model::SpecialValue special;
    uint16_t fieldSize;
    uint32_t field;   ///< offset in the context
    uint32_t object;  ///< as the table's header has it; 0 in the library's own rows whose messages do not name it
    uint32_t node;
};

/// Returns the binding of a row of the library's own.
[[nodiscard]] inline Binding bindingOf(OwnRow own) {
    const OwnMappingRow& row = kOwnMappingRows[own.number];
    const MappingForm& form = kMappingForms[row.form];
    Binding binding{&kVariables[row.variable], "", form.conversion, form.special, form.fieldSize, row.field, 0, 0};
    if (form.special != model::SpecialValue::kNone || row.variable == 0) {
        // Only their messages name the node. The header is as many rows above as its number.
        const OwnMappingRow* header = &row;
        while (header->form != 0)
            --header;
        binding.object = header->field;
        binding.node = static_cast<uint32_t>(&row - header);
    }
    return binding;
}

/// Returns the binding of a node of a foreign table, whose texts' fields are as long as a value.
[[nodiscard]] Binding bindingOf(const MappingRow* rows, uint32_t node);

/// Whether the manager has a radio and an SSID of these numbers (from 1).
[[nodiscard]] constexpr bool instancesAreValid(uint32_t radio, uint32_t ssid) {
    return radio - 1 < kRadios && ssid - 1 < kAccessPoints;
}

}  // namespace quorvel

#pragma GCC visibility pop
