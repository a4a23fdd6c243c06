#include "recorder/replay/CallMemory.h"

#include <algorithm>
#include <cstring>

#include "recorder/desk/Text.h"

namespace quorvel::recorder {

namespace {

// Buffers have at least this, so that a library that writes more than it should does not end the replay.
constexpr size_t kSmallestBlock = 16384;

const Value kNothing;

}  // namespace

const Value& CallMemory::take() {
    return next_ < call_.values.size() ? call_.values[next_++] : kNothing;
}

bool CallMemory::isNull() {
    return take().type == ValueType::kNull;
}

uint32_t CallMemory::number() {
    return static_cast<uint32_t>(take().number);
}

void* CallMemory::allocate(size_t size) {
    storage_.emplace_back((std::max(size, kSmallestBlock) + 7) / 8);
    return storage_.back().data();
}

const char* CallMemory::text() {
    const Value& value = take();
    if (value.type == ValueType::kNull) return nullptr;
    auto* const block = static_cast<char*>(allocate(value.bytes.size() + 1));
    std::memcpy(block, value.bytes.data(), value.bytes.size());
    return block;
}

void* CallMemory::memory() {
    const Value& value = take();
    if (value.type == ValueType::kNull) return nullptr;
    void* const block = allocate(value.bytes.size());
    std::memcpy(block, value.bytes.data(), value.bytes.size());
    blocks_.push_back({block, value.bytes.size()});
    return block;
}

void* CallMemory::context() {
    const Value& value = take();
    if (value.type == ValueType::kNull) return nullptr;
    auto* const block = static_cast<uint8_t*>(allocate(kSmallestBlock));
    std::memcpy(block, value.bytes.data(), std::min(value.bytes.size(), kSmallestBlock));
    blocks_.push_back({block, use_.size});
    if (use_.fieldSize != 0) {
        const Value& field = take();
        uint8_t* const at = block + use_.fieldOffset;
        std::memcpy(at, field.bytes.data(), std::min<size_t>(field.bytes.size(), use_.fieldSize));
        blocks_.push_back({at, use_.fieldSize});
    }
    return block;
}

std::vector<std::string> CallMemory::compare(const Record& returned) const {
    std::vector<std::string> differences;
    const auto after = returned.valuesOf(ValueRole::kAfter);
    for (size_t i = 0; i < after.size() && i < blocks_.size(); ++i) {
        const std::string_view then = after[i]->bytes;
        const std::string_view now(static_cast<const char*>(blocks_[i].address), then.size());
        const auto [left, right] = std::ranges::mismatch(then, now);
        if (left == then.end()) continue;
        const auto at = static_cast<size_t>(left - then.begin());
        const auto bytesAt = [&](std::string_view bytes) {
            return describe(Value{ValueRole::kAfter, ValueType::kBytes, 0, std::string(bytes.substr(at, 16))});
        };
        differences.push_back("the recording's memory " + std::to_string(i + 1) + " has at byte " + std::to_string(at) +
                              " " + bytesAt(then) + ", the library left " + bytesAt(now));
    }
    return differences;
}

}  // namespace quorvel::recorder
