// Helpers of the associated devices' implementation.
#pragma once

#include <cstdint>

#pragma GCC visibility push(hidden)

/// Reads the station count of `ap` and station `dev` (from 1). Returns 0 or 1.
extern "C" uint32_t Quorvel_P_GetWiFiAccessPointAssociatedDeviceList(uint32_t ap, uint32_t dev, uint32_t* count,
                                                                     void* record);

#pragma GCC visibility pop
