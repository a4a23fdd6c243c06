// The implementation functions behind the front ends, declared from the rows: C linkage, so that a test can link them,
// and not exported. Each takes the front end's arguments, runs under the library's lock and returns a result code.
#pragma once

#include <cstdint>

#include "wifi/model/Signatures.h"

#pragma GCC visibility push(hidden)

extern "C" {

#define OBJECT_ROW(prefix, depth, apply, path) uint32_t prefix##ApplyContextImpl(void* ctx TRAILING(INSTANCES_##apply));
#define PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, type, ...) \
    WITH_GETTER_##access(uint32_t prefix##stem##GetImpl(LEADING(INSTANCES_##depth) OUTPUT_##type);)
#include "wifi/model/DataModel.def"

// Behind the reads without a row.
[[nodiscard]] uint32_t WiFiRadioChannelStatsGet2Impl(uint32_t radio, void* record, uint32_t length);
[[nodiscard]] uint32_t WiFiAccessPointRxStatsResultGetImpl(uint32_t ap, const char* mac, uint32_t w1, uint32_t w2,
                                                           uint64_t* out);
[[nodiscard]] uint32_t WiFiAccessPointTxStatsResultGetImpl(uint32_t ap, const char* mac, uint32_t w1, uint32_t w2,
                                                           uint64_t* out);
[[nodiscard]] uint32_t WiFiAccessPointStatsGetImpl(uint32_t ap, const char* mac, void* record, uint64_t* out);
[[nodiscard]] uint32_t WiFiAccessPointSsidNameStatusGetImpl(uint32_t ap, void* buffer);
[[nodiscard]] uint32_t WiFiAccessPointMacModeGetImpl(uint32_t ap, uint32_t* out);
[[nodiscard]] uint32_t WiFiAccessPointAssociatedDeviceInstanceGetImpl(uint32_t ap, uint32_t dev, void* record);
[[nodiscard]] uint32_t WiFiNewAPAssociatedDeviceCallbackRegisterImpl(uint32_t (*callback)(uint32_t ap, uint32_t event,
                                                                                          void* station));
[[nodiscard]] uint32_t WiFiNewAPAssociatedDeviceCallbackDeRegisterImpl(void);
}

#pragma GCC visibility pop
