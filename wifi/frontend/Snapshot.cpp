#include "wifi/frontend/Snapshot.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "wifi/model/Table.h"

namespace quorvel {
namespace {

using model::Kind;

// One row of the definitions as a snapshot reads it. Where its field is follows from the rows before it.
struct Step {
    uint8_t capacity : 5;  // of a text, in kCapacities
    Kind kind : 2;
    bool isRead : 1;
};
static_assert(sizeof(Step) == 1);

// The capacities of all rows, each once, and in the order of the rows.
struct Capacities {
    std::array<uint16_t, 1 << 5> bytes{};
    size_t count = 0;

    constexpr uint8_t add(uint32_t capacity) {
        uint8_t place = 0;
        while (place < count && bytes[place] != capacity)
            ++place;
        if (place == count) bytes[count++] = static_cast<uint16_t>(capacity);
        return place;
    }
};
constexpr Capacities kAllCapacities = [] {
    Capacities all;
    for (const model::Parameter& parameter : model::kParameters)
        (void)all.add(parameter.type.capacity);
    return all;
}();
constexpr auto kCapacities = [] {
    std::array<uint16_t, kAllCapacities.count> capacities{};
    for (size_t n = 0; n < capacities.size(); ++n)
        capacities[n] = kAllCapacities.bytes[n];
    return capacities;
}();

constexpr auto kSteps = [] {
    std::array<Step, kParametersInTable> steps{};
    Capacities capacities = kAllCapacities;
    for (size_t row = 0; row < steps.size(); ++row) {
        const model::Parameter& parameter = model::kParameters[row];
        steps[row].capacity = capacities.add(parameter.type.capacity) & 0x1F;
        steps[row].kind = parameter.type.kind;
        steps[row].isRead = model::readable(parameter) && !parameter.type.ofStation;
    }
    return steps;
}();

constexpr size_t largestText() {
    size_t largest = 0;
    for (const size_t capacity : kCapacities)
        largest = std::max(largest, capacity);
    return largest;
}

// A field of a context: of a text's capacity, of one byte, or of a word at a multiple of four.
struct Place {
    size_t begin;
    size_t capacity;  // of a text
    size_t end;

    constexpr Place(const Step& step, size_t from)
        : begin(isWord(step) ? (from + 3) & ~size_t{3} : from),
          capacity(kCapacities[step.capacity]),
          end(begin + (isWord(step)                 ? sizeof(uint32_t)
                       : step.kind == Kind::kString ? capacity
                                                    : 1)) {}

  private:
    static constexpr bool isWord(const Step& step) {
        return step.kind == Kind::kUnsignedInt || step.kind == Kind::kInt;
    }
};

constexpr bool placesAreThoseOfTheContexts() {
    for (const model::Object& object : model::kObjects) {
        size_t end = kContextHeaderSize;
        const size_t first = model::firstRowOf(object.index);
        for (size_t row = first; row < first + model::parametersOf(object.index).size(); ++row) {
            const Place place(kSteps[row], end);
            end = place.end;
            if (place.begin != kFields[row].offset || end - place.begin != kFields[row].size) return false;
        }
    }
    return true;
}
static_assert(placesAreThoseOfTheContexts());

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
uint32_t readNumber(void* ctx, TableWord getter, const Instance& at, const Place& place) {
    Value value{};
    const uint32_t result = read(getter, at, &value);
    if (result == 0) storeBytes(ctx, place.begin, &value, sizeof value);
    return result;
}

uint32_t readText(void* ctx, TableWord getter, const Instance& at, const Place& place) {
    // The generic getter may put a NUL one byte behind the longest text. A channel record, which is a text to the
    // table, has fields of 64 bits.
    alignas(uint64_t) char text[largestText() + 1];
    // A getter may leave the buffer unchanged, or append to it.
    memset(text, 0, place.capacity + 1);
    const uint32_t result = read(getter, at, text, static_cast<uint32_t>(place.capacity));
    if (result == 0) storeText(ctx, place.begin, text, place.capacity);
    return result;
}

uint32_t readField(void* ctx, TableWord getter, const Instance& at, Kind kind, const Place& place) {
    switch (kind) {
        case Kind::kBoolean:
            return readNumber<uint8_t>(ctx, getter, at, place);
        case Kind::kUnsignedInt:
            return readNumber<uint32_t>(ctx, getter, at, place);
        case Kind::kInt:
            return readNumber<int32_t>(ctx, getter, at, place);
        case Kind::kString:
            break;
    }
    return readText(ctx, getter, at, place);
}

}  // namespace

uint32_t readInstance(void* ctx, uint32_t i, uint32_t j, const SnapshotSite& site, TextGetter withoutEntry) {
    (void)Quorvel_ContextInit(ctx, site.contextSize);  // a context that the host refuses stays unchanged
    const Instance at{site.depth, i, j};
    size_t end = kContextHeaderSize;
    for (size_t row = site.firstRow; row < size_t{site.firstRow} + site.rows; ++row) {
        const Step step = kSteps[row];
        const Place place(step, end);
        end = place.end;
        if (!step.isRead) continue;
        const TableEntry& entry = gQuorvelWiFiDataModelTable.entries[model::entryOfRow(row)];
        TableWord getter = entry.words[getterWord(typeCodeOf(step.kind), at.depth)];
        if (withoutEntry != nullptr && step.kind == Kind::kString) getter = withoutEntry;
        if (const uint32_t result = readField(ctx, getter, at, step.kind, place)) return result;
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
