#pragma once

#include <cstdint>
#include <string>

#include "tests/wifi/LogLines.h"
#include "tests/wifi/platform/PlatformTest.h"

namespace quorvel::scripted {

// A value that no counter has: a read that fails leaves it.
inline constexpr std::uint32_t kUntouched = 0x5A5A5A5A;

// The two lines at the beginning of /proc/net/dev.
inline constexpr char kHeaders[] = "Inter-|   Receive\n face |bytes\n";

// The fixture of tests of counters that `source` reads.
class StatisticsTest : public PlatformTest {
  protected:
    explicit StatisticsTest(const char* source) : source_(source) {}

    void setInterfaces(const std::string& lines) {
        platform.setFile("/proc/net/dev", kHeaders + lines);
    }

    // Whether the function logged that error.
    [[nodiscard]] bool failed(const char* function, const std::string& message) const {
        return loggedBy(platform, source_, function, 0, message);
    }

  private:
    const char* source_;
};

}  // namespace quorvel::scripted
