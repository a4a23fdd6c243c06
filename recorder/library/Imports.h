// The platform's calls as the recorded library makes them: recorded, and passed on to where they went before.
#pragma once

#include <cstdint>

#include "recorder/library/RealLibrary.h"

namespace quorvel::recorder {

/// Numbers of the platform's calls; those of a record are behind the exported functions'.
enum ImportNumber : uint16_t {
#define PLATFORM_CALL(name) kImport_##name,
#include "recorder/format/PlatformCalls.def"
    kImportCount
};

constexpr uint16_t numberInRecord(ImportNumber import) {
    return static_cast<uint16_t>(uint16_t{kFunctionCount} + uint16_t{import});
}
/// Calls of the host's callback have a number of their own.
inline constexpr uint16_t kCallbackNumber = uint16_t{kFunctionCount} + uint16_t{kImportCount};
inline constexpr uint16_t kNumbersInRecords = kCallbackNumber + 1;

/// Returns the name that a record's function number has.
[[nodiscard]] const char* nameOfNumber(uint16_t number);

[[gnu::visibility("hidden")]] extern Import imports[kImportCount];

/// Calls of what an import was bound to before the recorder took its place.
#define QUORVEL_ORIGINAL(name) reinterpret_cast<decltype(&::name)>(imports[kImport_##name].original)

/// The host's callback for the listener that the calling thread registers or is.
void rememberCallback(AssociatedDeviceCallback callback);
/// Records a station event and passes it on to the remembered callback.
uint32_t recordedCallback(uint32_t ap, uint32_t event, void* station);

}  // namespace quorvel::recorder
