#include "gateway/hostd/ContextLayout.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <set>
#include <string>

#include <quorvel.h>
#include "gateway/hostd/Accessors.h"

namespace quorvel::hostd {
namespace {

constexpr std::uint32_t kOutOfRange = 8;
constexpr std::uint32_t kMaxCapacity = 4096;
// Long enough for a text that must have a length of its own, such as a PIN.
constexpr std::uint32_t kCommonLength = 8;

class Scratch {
  public:
    explicit Scratch(const Node& node) : node_(node), bytes_(node.contextSize / sizeof(std::max_align_t) + 1) {}

    // Stages the value into a fresh context and tells whether the setter takes it.
    bool takes(const Parameter& parameter, const Instances& instances, const Value& value) {
        return initContext(node_, bytes_.data()) == 0 && stage(parameter, bytes_.data(), instances, value) == 0;
    }

    // Returns the node that the last staging marked, or 0.
    std::uint32_t marked(std::uint32_t limit) {
        for (std::uint32_t node = 1; node <= limit; ++node) {
            if (Quorvel_IsContextSetMap(bytes_.data(), node) != 0) return node;
        }
        return 0;
    }

  private:
    const Node& node_;
    std::vector<std::max_align_t> bytes_;
};

// Only setters that stage may be tried; those of depth 1 all do.
bool canBeTried(const Parameter& parameter) {
    return parameter.depth == 1 && parameter.setter != 0 && parameter.call == Call::kOrdinary;
}

bool takesLength(Scratch& scratch, const Parameter& parameter, const Instances& instances, std::uint32_t length) {
    Value value{Type::kText, 0, std::string(length, '1')};
    if (scratch.takes(parameter, instances, value)) return true;
    if (length < kCommonLength) return false;
    value.text.replace(kCommonLength, std::string::npos, length - kCommonLength, '\0');
    return scratch.takes(parameter, instances, value);
}

// Returns the longest text that the setter takes, leaving it staged, or 0.
std::uint32_t setLimit(Scratch& scratch, const Parameter& parameter, const Instances& instances) {
    std::uint32_t best = 0;
    if (!takesLength(scratch, parameter, instances, kCommonLength)) {
        for (best = kCommonLength - 1; best > 0; --best) {
            if (takesLength(scratch, parameter, instances, best)) break;
        }
        return best;
    }
    best = kCommonLength;
    for (std::uint32_t refused = kMaxCapacity + 1; refused - best > 1;) {
        const std::uint32_t middle = best + (refused - best) / 2;
        (takesLength(scratch, parameter, instances, middle) ? best : refused) = middle;
    }
    return takesLength(scratch, parameter, instances, best) ? best : 0;
}

// Returns the shortest buffer that the getter takes. It refuses shorter ones before it does anything.
std::uint32_t getMinimum(const Parameter& parameter, const Instances& instances) {
    std::vector<char> buffer(std::size_t{2} * kMaxCapacity);
    for (std::uint32_t length = 1; length <= kMaxCapacity; ++length) {
        if (measure(parameter, instances, buffer.data(), length) != kOutOfRange) return length;
    }
    return 0;
}

void stageSomeNumber(Scratch& scratch, const Parameter& parameter, const Instances& instances) {
    for (const std::uint32_t number : {0U, 1U, 2U, 3U, 10U, 36U, 50U, 100U, 256U, 1000U, 2347U}) {
        if (scratch.takes(parameter, instances, {parameter.type, number, ""})) return;
    }
}

std::uint32_t sizeOfField(Type type, std::uint32_t capacity) {
    switch (type) {
        case Type::kText:
            return capacity;
        case Type::kBoolean:
            return 1;
        case Type::kUnsignedInt:
        case Type::kInt:
            return 4;
    }
    return 0;
}

}  // namespace

std::vector<Field> layoutOf(const DataModel& model, int index, const Instances& instances) {
    const Node& node = model.nodes()[static_cast<std::size_t>(index)];
    const auto count = static_cast<std::uint32_t>(node.parameters.size());
    Scratch scratch(node);
    std::vector<Field> fields;
    std::set<std::uint32_t> taken;
    for (const int entry : node.parameters) {
        const Parameter& parameter = model.parameters()[static_cast<std::size_t>(entry)];
        std::uint32_t capacity = 0;
        Field field{&parameter, 0, 0, 0};
        if (canBeTried(parameter)) {
            if (parameter.type == Type::kText) {
                capacity = setLimit(scratch, parameter, instances);
            } else {
                stageSomeNumber(scratch, parameter, instances);
            }
            field.node = scratch.marked(count);
            taken.insert(field.node);
        }
        if (parameter.type == Type::kText && capacity == 0 && parameter.getter != 0) {
            capacity = parameter.call == Call::kOrdinary ? getMinimum(parameter, instances) : 2048;
        }
        field.size = sizeOfField(parameter.type, capacity);
        fields.push_back(field);
    }
    std::uint32_t next = 1;
    for (Field& field : fields) {
        if (field.node != 0) continue;
        while (taken.contains(next))
            ++next;
        field.node = next++;
    }
    std::sort(fields.begin(), fields.end(), [](const Field& a, const Field& b) { return a.node < b.node; });
    std::uint32_t offset = QUORVEL_CONTEXT_HEADER_SIZE;
    for (Field& field : fields) {
        if (field.parameter->type == Type::kUnsignedInt || field.parameter->type == Type::kInt) {
            offset = (offset + 3U) & ~3U;
        }
        field.offset = offset;
        offset += field.size;
    }
    return fields;
}

std::uint32_t sizeOf(const std::vector<Field>& layout) {
    if (layout.empty()) return QUORVEL_CONTEXT_HEADER_SIZE;
    return (layout.back().offset + layout.back().size + 3U) & ~3U;
}

}  // namespace quorvel::hostd
