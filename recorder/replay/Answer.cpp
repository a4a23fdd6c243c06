#include "recorder/replay/Answer.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "recorder/replay/Player.h"

namespace quorvel::recorder {

Value numberValue(uint32_t number) {
    return {ValueRole::kArgument, ValueType::kNumber, number, {}};
}

Value textValue(const char* text) {
    if (text == nullptr) return {};
    return {ValueRole::kArgument, ValueType::kText, 0, text};
}

Value bytesValue(const void* bytes, size_t size) {
    if (bytes == nullptr) return {};
    return {ValueRole::kArgument, ValueType::kBytes, 0, std::string(static_cast<const char*>(bytes), size)};
}

Value handleValue(const void* address) {
    if (address == nullptr) return {};
    if (address == stdout) return {ValueRole::kArgument, ValueType::kHandle, 1, {}};
    if (address == stderr) return {ValueRole::kArgument, ValueType::kHandle, 2, {}};
    return {ValueRole::kArgument, ValueType::kHandle, reinterpret_cast<uintptr_t>(address), {}};
}

Answer::Answer(const char* function, std::initializer_list<Value> arguments)
    : record_(player->answer(RecordKind::kPlatform, function, arguments)) {}

const Value* Answer::first(ValueRole role, size_t index) const {
    if (record_ == nullptr) return nullptr;
    const auto values = record_->valuesOf(role);
    return index < values.size() ? values[index] : nullptr;
}

uint32_t Answer::result(uint32_t otherwise) const {
    const Value* const value = first(ValueRole::kResult);
    return value == nullptr ? otherwise : static_cast<uint32_t>(value->number);
}

const char* Answer::text() const {
    const Value* const value = first(ValueRole::kResult);
    return value == nullptr || value->type == ValueType::kNull ? nullptr : value->bytes.c_str();
}

void* Answer::address() const {
    const Value* const value = first(ValueRole::kResult);
    return value == nullptr ? nullptr : reinterpret_cast<void*>(static_cast<uintptr_t>(value->number));
}

void Answer::fill(size_t index, void* to, size_t size) const {
    const Value* const value = first(ValueRole::kAfter, index);
    if (value == nullptr || value->type == ValueType::kNull || to == nullptr) return;
    const size_t copied = std::min(size, value->bytes.size());
    std::memcpy(to, value->bytes.data(), copied);
    if (value->type == ValueType::kText && copied < size) static_cast<char*>(to)[copied] = '\0';
}

void* Answer::storedAddress() const {
    const Value* const value = first(ValueRole::kAfter);
    return value == nullptr ? nullptr : reinterpret_cast<void*>(static_cast<uintptr_t>(value->number));
}

}  // namespace quorvel::recorder
