// The store of neighbour scan results: one array a radio, read as one sequence over all radios.
#include <cstdlib>
#include <cstring>

#include "wifi/Log.h"
#include "wifi/QuorvelWiFiNeighboringDiagnosticsResultImpl.h"
#include "wifi/Result.h"
#include "wifi/model/Implementations.h"
#include "wifi/model/Rows.h"
#include "wifi/parsing/Text.h"

using quorvel::kFailed;
using quorvel::kInvalidInput;
using quorvel::kSuccess;
using quorvel::NeighboringWiFiResult;

namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiNeighboringDiagnosticsResultImpl";

NeighboringWiFiResult* stores[quorvel::kRadios];

void release(uint32_t radioIndex) {
    free(stores[radioIndex]);
    stores[radioIndex] = nullptr;
}

// Finds a result for a getter, which logs under its own name. Returns null when there is none.
NeighboringWiFiResult* findFor(const char* getter, uint32_t k) {
    NeighboringWiFiResult* record = nullptr;
    if (QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(k, &record) == 0) return record;
    QUORVEL_LOG(Error, getter, "WiFiNeighboring Diagnostics Result Get Entry Fail");
    return nullptr;
}

// A member of the result.
struct Field {
    uint16_t offset;
    uint16_t size;
};
template <typename Member>
struct FieldOf : Field {
    consteval explicit FieldOf(size_t begin) : Field{static_cast<uint16_t>(begin), sizeof(Member)} {}
};

[[gnu::noinline]] uint32_t copyWord(const char* getter, uint32_t k, Field field, void* out) {
    const NeighboringWiFiResult* record = findFor(getter, k);
    if (record == nullptr) return kFailed;
    memcpy(out, reinterpret_cast<const char*>(record) + field.offset, sizeof(uint32_t));
    return kSuccess;
}

[[gnu::noinline]] uint32_t copyText(const char* getter, uint32_t k, Field field, char* buf, uint32_t len) {
    const NeighboringWiFiResult* record = findFor(getter, k);
    if (record == nullptr) return kFailed;
    quorvel::copyFieldText(buf, len, reinterpret_cast<const char*>(record) + field.offset, field.size);
    return kSuccess;
}

// Serve the getter of a number, or of a text.
template <typename Value>
uint32_t copyOut(const char* getter, uint32_t k, FieldOf<Value> field, Value* out) {
    static_assert(sizeof(Value) == sizeof(uint32_t));
    return copyWord(getter, k, field, out);
}

template <size_t size>
uint32_t copyOut(const char* getter, uint32_t k, FieldOf<char[size]> field, char* buf, uint32_t len) {
    return copyText(getter, k, field, buf, len);
}

}  // namespace

#define FIELD(member) FieldOf<decltype(NeighboringWiFiResult::member)>(offsetof(NeighboringWiFiResult, member))
#define PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, type, accepted, read, source, ...) \
    uint32_t prefix##stem##GetImpl(uint32_t k, OUTPUT_##type) {                                          \
        return copyOut(__func__, k, source, PASS_OUTPUT_##type);                                         \
    }
#include "wifi/model/BeginRows.h"

#include "wifi/QuorvelWiFiNeighboringDiagnosticsResult.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiNeighboringDiagnosticsResultApplyContextImpl(void*, uint32_t) {
    return kSuccess;
}

uint32_t WiFiNeighboringDiagnosticsResultInit(uint32_t radioIndex, uint32_t count, NeighboringWiFiResult** array) {
    release(radioIndex);
    *array = nullptr;
    if (count == 0) return kSuccess;
    stores[radioIndex] = static_cast<NeighboringWiFiResult*>(calloc(count, sizeof(NeighboringWiFiResult)));
    if (stores[radioIndex] == nullptr) {
        QUORVEL_LOG(Error, __func__, "Memory allocation fail.");
        return kFailed;
    }
    *array = stores[radioIndex];
    return kSuccess;
}

void WiFiNeighboringDiagnosticsResultUnInit(void) {
    // Quirk: the third radio's results stay.
    release(0);
    release(1);
}

uint32_t QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(uint32_t k, NeighboringWiFiResult** record) {
    uint32_t position = k - 1;
    for (uint32_t radio = 0; radio < quorvel::kRadios; ++radio) {
        const uint32_t count = quorvel::radioDiagnostics[radio].resultNumberOfEntries;
        if (position < count) {
            if (stores[radio] == nullptr) break;  // released since
            *record = &stores[radio][position];
            return kSuccess;
        }
        position -= count;
    }
    QUORVEL_LOG(Error, __func__, "Invalid resultInstance[%d]", k);
    return kInvalidInput;
}
