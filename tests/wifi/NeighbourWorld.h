#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiNeighboringDiagnosticsResultImpl.h"
#include "wifi/model/Contexts.h"
#include "wifi/model/Implementations.h"

namespace quorvel::scripted {

// The fixture of tests that scan for neighbours: no radio has results at the start, nor at the end.
class NeighbourTest : public PlatformTest {
  protected:
    NeighbourTest();
    void TearDown() override;

    // Scripts what `wl` dumps for the radio (from 1).
    void output(std::uint32_t radio, const std::string& text);
    // Stages a request for a scan.
    void request(std::uint32_t radio);
    // Scans on the radio, with that output. Forgets earlier calls and log lines.
    void scan(std::uint32_t radio, const std::string& text);

    [[nodiscard]] static std::uint32_t state(std::uint32_t radio);
    [[nodiscard]] static std::uint32_t entries(std::uint32_t radio);
    // A copy of result `k` (from 1). A text that fills its field has no NUL: see bounded().
    [[nodiscard]] static NeighboringWiFiResult at(std::uint32_t k);
    // Whether an error line of that function and text was written.
    [[nodiscard]] bool failed(const std::string& function, const std::string& text) const;

    template <std::size_t size>
    [[nodiscard]] static std::string bounded(const char (&field)[size]) {
        return {field, strnlen(field, size)};
    }

    GuardedBlock context{192};
};

}  // namespace quorvel::scripted
