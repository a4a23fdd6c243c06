#include "wifi/frontend/Snapshot.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "wifi/model/Table.h"

namespace quorvel {
namespace {

using model::Kind;

// One row of the definitions as a snapshot reads it.
struct Step {
    uint16_t offset;  // of the field in the context
    uint16_t capacity : 12;
    Kind kind : 3;
    bool isRead : 1;
};

constexpr auto makeSteps() {
    std::array<Step, kParametersInTable> steps{};
    for (size_t row = 0; row < steps.size(); ++row) {
        const model::Parameter& parameter = model::kParameters[row];
        const bool isRead = model::readable(parameter) && !parameter.type.ofStation;
        steps[row].offset = kFields[row].offset;
        steps[row].capacity = parameter.type.capacity & 0xFFF;
        steps[row].kind = parameter.type.kind;
        steps[row].isRead = isRead;
    }
    return steps;
}
constexpr std::array<Step, kParametersInTable> kSteps = makeSteps();

// Which entry of the exported table is the row's.
constexpr auto makeEntries() {
    std::array<uint8_t, kParametersInTable> entries{};
    for (size_t entry = 0; entry < entries.size(); ++entry)
        entries[model::rowOfEntry(entry)] = static_cast<uint8_t>(entry);
    return entries;
}
constexpr std::array<uint8_t, kParametersInTable> kEntries = makeEntries();
static_assert(kParametersInTable <= 256, "the numbers of entries and rows need a wider type");

constexpr size_t largestText() {
    size_t largest = 0;
    for (const model::Parameter& parameter : model::kParameters)
        largest = std::max<size_t>(largest, parameter.type.capacity);
    return largest;
}
static_assert(largestText() < 0x1000, "Step::capacity needs more bits");

struct Instance {
    uint32_t depth;
    uint32_t i;
    uint32_t j;
};

uint32_t read(TableWord getter, const Instance& at, uint8_t* out) {
    if (at.depth == 0) return getter.booleanGet0(out);
    return at.depth == 1 ? getter.booleanGet1(at.i, out) : getter.booleanGet2(at.i, at.j, out);
}

uint32_t read(TableWord getter, const Instance& at, uint32_t* out) {
    if (at.depth == 0) return getter.unsignedGet0(out);
    return at.depth == 1 ? getter.unsignedGet1(at.i, out) : getter.unsignedGet2(at.i, at.j, out);
}

uint32_t read(TableWord getter, const Instance& at, int32_t* out) {
    if (at.depth == 0) return getter.intGet0(out);
    return at.depth == 1 ? getter.intGet1(at.i, out) : getter.intGet2(at.i, at.j, out);
}

uint32_t read(TableWord getter, const Instance& at, char* buf, uint32_t len) {
    if (at.depth == 0) return getter.textGet0(buf, len);
    return at.depth == 1 ? getter.textGet1(at.i, buf, len) : getter.textGet2(at.i, at.j, buf, len);
}

template <typename Value>
uint32_t readNumber(void* ctx, TableWord getter, const Instance& at, const Step& step) {
    Value value{};
    const uint32_t result = read(getter, at, &value);
    if (result == 0) storeBytes(ctx, step.offset, &value, sizeof value);
    return result;
}

uint32_t readText(void* ctx, TableWord getter, const Instance& at, const Step& step) {
    // The generic getter may put a NUL one byte behind the longest text. A channel record, which is a text to the
    // table, has fields of 64 bits.
    alignas(uint64_t) char text[largestText() + 1];
    // A getter may leave the buffer unchanged, or append to it.
    memset(text, 0, step.capacity + size_t{1});
    const uint32_t result = read(getter, at, text, step.capacity);
    if (result == 0) storeText(ctx, step.offset, text, step.capacity);
    return result;
}

uint32_t readStep(void* ctx, TableWord getter, const Instance& at, const Step& step) {
    switch (step.kind) {
        case Kind::kBoolean:
            return readNumber<uint8_t>(ctx, getter, at, step);
        case Kind::kUnsignedInt:
            return readNumber<uint32_t>(ctx, getter, at, step);
        case Kind::kInt:
            return readNumber<int32_t>(ctx, getter, at, step);
        case Kind::kString:
            break;
    }
    return readText(ctx, getter, at, step);
}

}  // namespace

uint32_t readInstance(void* ctx, uint32_t i, uint32_t j, const SnapshotSite& site, TextGetter withoutEntry) {
    (void)Quorvel_ContextInit(ctx, site.contextSize);  // a context that the host refuses stays unchanged
    const Instance at{site.depth, i, j};
    for (size_t row = site.firstRow; row < size_t{site.firstRow} + site.rows; ++row) {
        const Step& step = kSteps[row];
        if (!step.isRead) continue;
        const TableEntry& entry = gQuorvelWiFiDataModelTable.entries[kEntries[row]];
        TableWord getter = entry.words[getterWord(typeCodeOf(step.kind), at.depth)];
        if (withoutEntry != nullptr && step.kind == Kind::kString) getter = withoutEntry;
        if (const uint32_t result = readStep(ctx, getter, at, step)) return result;
    }
    return kSuccess;
}

uint32_t takeSnapshot(void* ctx, uint32_t i, uint32_t j, const SnapshotSite& site, TextGetter withoutEntry) {
    logEnter(site);
    const uint32_t result = readInstance(ctx, i, j, site, withoutEntry);
    if (result != 0) {
        logResult(site, "Get failed, result %d", result);
    } else {
        logDone(site);
    }
    return result;
}

void storeBytes(void* ctx, size_t offset, const void* bytes, size_t size) {
    if (ctx != nullptr) memcpy(static_cast<char*>(ctx) + offset, bytes, size);
}

void storeText(void* ctx, size_t offset, const char* text, size_t capacity) {
    storeBytes(ctx, offset, text, strnlen(text, capacity));
}

}  // namespace quorvel
