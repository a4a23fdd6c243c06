// The implementation functions behind the front ends, declared by expanding the definitions: C linkage, so that a test
// can link them, and not exported. Each takes what its front end takes, runs under the library's lock and returns a
// result code.
#pragma once

#include <cstdint>

#include "wifi/Preprocessor.h"

#pragma GCC visibility push(hidden)

#define OBJECT(...) extern "C" uint32_t OBJECT_FUNCTION(ApplyContextImpl)(void* ctx LAST_INSTANCES THIS_APPLY_EXTRA);
#define DECLARE_IMPL_(name, type) extern "C" uint32_t FUNCTION(name, GetImpl)(INSTANCES OUTPUT_##type);
#define DECLARE_IMPL_MAPPED(name, type) DECLARE_IMPL_(name, type)
#define DECLARE_IMPL_BYPASSED(name, type) DECLARE_IMPL_(name, type)
#define DECLARE_IMPL_OWN(name, type) DECLARE_IMPL_(name, type)
#define DECLARE_IMPL_INERT(name, type) DECLARE_IMPL_(name, type)
#define DECLARE_IMPL_COUNTER(name, type) DECLARE_IMPL_(name, type)
#define DECLARE_IMPL_RESULT(name, type) DECLARE_IMPL_(name, type)
#define DECLARE_IMPL_STATION_TEXT(name, type) DECLARE_IMPL_(name, type)
#define DECLARE_IMPL_STATION_NUMBER(name, type) DECLARE_IMPL_(name, type)
#define DECLARE_IMPL_STATION(name, type) \
    extern "C" uint32_t FUNCTION(name, GetImpl)(uint32_t ap, const char* mac, int32_t* out);
#define DECLARE_IMPL_NONE(name, type)
#define PARAMETER(node, name, access, type, accepted, read, ...) DECLARE_IMPL_##read(name, type)
#include "wifi/QuorvelWiFiDataModel.def"
#undef DECLARE_IMPL_

extern "C" {

uint32_t WiFiRadioChannelStatsGet2Impl(uint32_t radio, void* record, uint32_t length);
uint32_t WiFiAccessPointRxStatsResultGetImpl(uint32_t ap, const char* mac, uint32_t w1, uint32_t w2, uint64_t* out);
uint32_t WiFiAccessPointTxStatsResultGetImpl(uint32_t ap, const char* mac, uint32_t w1, uint32_t w2, uint64_t* out);
uint32_t WiFiAccessPointStatsGetImpl(uint32_t ap, const char* mac, void* record, uint64_t* out);
uint32_t WiFiAccessPointSsidNameStatusGetImpl(uint32_t ap, void* buffer);
uint32_t WiFiAccessPointMacModeGetImpl(uint32_t ap, uint32_t* out);
uint32_t WiFiAccessPointAssociatedDeviceInstanceGetImpl(uint32_t ap, uint32_t dev, void* record);
}

#pragma GCC visibility pop
