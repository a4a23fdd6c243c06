#pragma once

#include <vector>

#include "gateway/hostd/DataModel.h"

namespace quorvel::hostd {

/// The place of a parameter's field in its object's context.
struct Field {
    const Parameter* parameter = nullptr;
    std::uint32_t node = 0;  ///< node number, from 1
    std::uint32_t offset = 0;
    std::uint32_t size = 0;
};

/// Finds out how an object's context is laid out: one field per parameter in node order behind the host's header, a
/// boolean 1 byte, a number 4, a text its capacity. The table holds no capacities and no node numbers; they are
/// asked of the accessors' own checks, with a scratch context and without reading or writing the device. Nodes that
/// cannot be asked for follow the order of the table.
[[nodiscard]] std::vector<Field> layoutOf(const DataModel& model, int node, const Instances& instances);

/// Returns the number of bytes that the fields end at.
[[nodiscard]] std::uint32_t sizeOf(const std::vector<Field>& layout);

}  // namespace quorvel::hostd
