#include "wifi/Snapshot.h"

#include <cstring>

namespace quorvel {
namespace {

// The largest text of the data model; the generic getter may put a NUL one byte behind it.
constexpr size_t kLargestText = 2048;

bool isFilterTable(const Site& site) {
    return site.object == kWiFiAccessPointAccessPointControlFilterTableObject;
}

uint32_t endSnapshot(uint32_t result, const Site& site) {
    if (result == 0) {
        logDone(site);
        return result;
    }
    // The filter table's snapshot has its own words for a getter that failed: meant.
    logResult(site, isFilterTable(site) ? "Impl call failed, result %d" : "Get failed, result %d", result);
    return result;
}

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
uint32_t readNumber(void* ctx, TableWord getter, const Instance& at, const SnapshotStep& step) {
    Value value{};
    const uint32_t result = read(getter, at, &value);
    if (result == 0) storeBytes(ctx, step.offset, &value, sizeof value);
    return result;
}

TypeCode typeOf(const SnapshotStep& step) {
    switch (step.kind) {
        case kBooleanField:
            return kTypeBoolean;
        case kUnsignedField:
            return kTypeUnsignedInt;
        case kIntField:
            return kTypeInt;
        default:
            return kTypeString;
    }
}

// The getter in the parameter's entry. A writable text of depth 2 has its setter there: meant.
TableWord getterOf(const TableEntry& entry, TypeCode type, uint32_t depth, TextGetter withoutEntry) {
    if (depth == 2 && type == kTypeString && withoutEntry != nullptr) return withoutEntry;
    return entry.words[getterWord(type, depth)];
}

uint32_t readStep(void* ctx, TableWord getter, TypeCode type, const Instance& at, const SnapshotStep& step,
                  char* text) {
    if (type == kTypeBoolean) return readNumber<uint8_t>(ctx, getter, at, step);
    if (type == kTypeUnsignedInt) return readNumber<uint32_t>(ctx, getter, at, step);
    if (type == kTypeInt) return readNumber<int32_t>(ctx, getter, at, step);
    // A getter may leave the buffer as it is, or append to it.
    memset(text, 0, step.kind + size_t{1});
    const uint32_t result = read(getter, at, text, step.kind);
    if (result == 0) storeText(ctx, step.offset, text, step.kind);
    return result;
}

}  // namespace

void beginSnapshot(void* ctx, const Site& site) {
    // The filter table's snapshot is not announced: meant.
    if (!isFilterTable(site)) logEnter(site);
    (void)initialiseContext(ctx, site);  // a context that the host refuses stays as it is
}

uint32_t takeSnapshot(void* ctx, uint32_t i, uint32_t j, const SnapshotStep* steps, const Snapshot& snapshot,
                      TextGetter withoutEntry) {
    beginSnapshot(ctx, snapshot.site);
    const Instance at{snapshot.depth, i, j};
    char text[kLargestText + 1];
    for (size_t n = 0; n < snapshot.steps; ++n) {
        const SnapshotStep& step = steps[n];
        if (step.kind == kSkippedField) continue;
        const TypeCode type = typeOf(step);
        const TableEntry& entry = gQuorvelWiFiDataModelTable.entries[entryOfRow(snapshot.firstRow + n)];
        const TableWord getter = getterOf(entry, type, at.depth, withoutEntry);
        if (const uint32_t result = readStep(ctx, getter, type, at, step, text)) {
            return endSnapshot(result, snapshot.site);
        }
    }
    return endSnapshot(kSuccess, snapshot.site);
}

void storeBytes(void* ctx, size_t offset, const void* bytes, size_t size) {
    if (ctx != nullptr) memcpy(static_cast<char*>(ctx) + offset, bytes, size);
}

void storeText(void* ctx, size_t offset, const char* text, size_t capacity) {
    storeBytes(ctx, offset, text, strnlen(text, capacity));
}

}  // namespace quorvel
