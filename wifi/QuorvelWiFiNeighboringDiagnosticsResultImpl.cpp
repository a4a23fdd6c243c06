// The store of neighbour scan results: one array a radio, read as one sequence over all radios.
#include <cstdlib>
#include <cstring>

#include "wifi/QuorvelWiFiInternal.h"

using quorvel::kFailed;
using quorvel::kInvalidInput;
using quorvel::kSuccess;
using quorvel::NeighboringWiFiResult;

namespace {

constexpr char kLogFile[] = "wifi/QuorvelWiFiNeighboringDiagnosticsResultImpl";

NeighboringWiFiResult* stores[quorvel::kRadios];

void release(uint32_t radioIndex) {
    free(stores[radioIndex]);
    stores[radioIndex] = nullptr;
}

// Finds a result for a getter, which logs under its own name. Returns null when there is none.
NeighboringWiFiResult* findFor(const quorvel::Site& getter, uint32_t k) {
    NeighboringWiFiResult* record = nullptr;
    if (QUORVEL_P_WiFiNeighboringDiagnosticsResultGetEntry(k, &record) == 0) return record;
    Quorvel_LogPrint(quorvel::kLogError, kLogFile, quorvel::functionOf(getter).text(), __LINE__,
                     "WiFiNeighboring Diagnostics Result Get Entry Fail");
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

#define MEMBER_FIELD(member) member
#define RESULT_OUT_unsignedInt out
#define RESULT_OUT_int out
#define RESULT_OUT_string(capacity) buf, len
#define PARAMETER(node, name, access, type, accepted, read, source, ...) \
    uint32_t FUNCTION(name, GetImpl)(INSTANCES OUTPUT_##type) {          \
        QUORVEL_SITE(QUORVEL_TEXT(FUNCTION(name, GetImpl)));             \
        const NeighboringWiFiResult* record = findFor(site, i);          \
        if (record == nullptr) return kFailed;                           \
        return copyOut(record->MEMBER_##source, RESULT_OUT_##type);      \
    }
#include "wifi/QuorvelWiFiNeighboringDiagnosticsResult.def"
#undef PARAMETER

uint32_t WiFiNeighboringDiagnosticsResultApplyContextImpl(void*, uint32_t) {
    return kSuccess;
}

uint32_t WiFiNeighboringDiagnosticsResultInit(uint32_t radioIndex, uint32_t count, NeighboringWiFiResult** array) {
    release(radioIndex);
    *array = nullptr;
    if (count == 0) return kSuccess;
    stores[radioIndex] = static_cast<NeighboringWiFiResult*>(calloc(count, sizeof(NeighboringWiFiResult)));
    if (stores[radioIndex] == nullptr) {
        QUORVEL_LOG_ERROR("Memory allocation fail.");
        return kFailed;
    }
    *array = stores[radioIndex];
    return kSuccess;
}

void WiFiNeighboringDiagnosticsResultUnInit(void) {
    // The third radio's results stay: meant.
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
    QUORVEL_LOG_ERROR("Invalid resultInstance[%d]", k);
    return kInvalidInput;
}
