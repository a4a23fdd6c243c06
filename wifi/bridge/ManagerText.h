// Variables of the manager read with its plain call, and its indices of instances.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "wifi/QuorvelWiFiExports.h"

#pragma GCC visibility push(hidden)

namespace quorvel {

inline constexpr uint32_t kRadios = 3;
inline constexpr uint32_t kAccessPointsPerRadio = 8;
inline constexpr uint32_t kAccessPoints = kRadios * kAccessPointsPerRadio;

/// Returns the position of an SSID or access point (from 1) within its radio: 0 to 7.
[[nodiscard]] constexpr uint32_t subIndex(uint32_t instance) {
    return (instance - 1) & (kAccessPointsPerRadio - 1);
}

/// The manager's indices of an access point or SSID, from 0.
struct ManagerAddress {
    uint32_t radio;
    uint32_t sub;
    explicit ManagerAddress(uint32_t instance)
        : radio(WiFiSystemAccessPointRadioInstanceGet(instance) - 1), sub(subIndex(instance)) {}
};

/// Bytes of every buffer that the manager writes into.
inline constexpr size_t kValueSize = 1024;

/// Clears a buffer for a value, aligned to words: the manager is given no remains of the stack.
void clearValue(char (&text)[kValueSize]);

/// A variable of the manager read into a cleared buffer; an unread one is the empty text.
struct ManagerText {
    alignas(32) char text[kValueSize];
    ManagerText() {
        clearValue(text);
    }
    /// Returns the text as a decimal number; 0 for the empty text.
    [[nodiscard]] int32_t number() const;
};

/// Reads `variable`, indices from 0. Returns whether the manager succeeded.
[[nodiscard]] bool readManager(uint32_t radio, uint32_t sub, const char* variable, ManagerText& value);

}  // namespace quorvel

#pragma GCC visibility pop
