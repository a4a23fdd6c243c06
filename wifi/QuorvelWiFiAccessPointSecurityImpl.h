// Helpers of the security settings' implementation.
#pragma once

#include <cstdint>

#pragma GCC visibility push(hidden)

/// Translates a security mode: from the data model's name when `loading` is not 0, else from the manager's. Always 0.
extern "C" uint32_t wlcsm_dm_adjust_security(char* dataModel, uint32_t dataModelLen, char* manager, uint32_t managerLen,
                                             uint8_t loading);

#pragma GCC visibility pop
