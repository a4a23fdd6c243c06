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

// Copies a member of the result: a number, or a text.
template <typename Value>
uint32_t copyOut(const Value& member, Value* out) {
    *out = member;
    return kSuccess;
}

template <size_t size>
uint32_t copyOut(const char (&member)[size], char* buf, uint32_t len) {
    quorvel::copyFieldText(buf, len, member, size);
    return kSuccess;
}

}  // namespace

#define FIELD(member) record->member
#define PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, type, accepted, read, source, ...) \
    uint32_t prefix##stem##GetImpl(uint32_t k, OUTPUT_##type) {                                          \
        const NeighboringWiFiResult* record = findFor(__func__, k);                                      \
        if (record == nullptr) return kFailed;                                                           \
        return copyOut(source, PASS_OUTPUT_##type);                                                      \
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
