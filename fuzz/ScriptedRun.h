#pragma once

#include <cstdint>
#include <memory>

#include "fuzz/Input.h"
#include "tests/wifi/platform/ScriptedPlatform.h"

namespace quorvel::fuzz {

// One run of the plug-in on the scripted platform. The C library's calls are the platform's while it lives; at its end
// the lock must be free and every stream closed.
class ScriptedRun {
  public:
    ScriptedRun() : platform(scripted::Platform::instance()) {
        platform.reset();
        platform.activate(true);
    }
    ~ScriptedRun() {
        const bool clean = !platform.lockHeld() && platform.lockMisuse().empty() && platform.openStreams().empty();
        platform.activate(false);
        require(clean, "the lock is free, was never misused, and every stream is closed");
    }
    ScriptedRun(const ScriptedRun&) = delete;
    ScriptedRun& operator=(const ScriptedRun&) = delete;

    scripted::Platform& platform;
};

// A buffer of exactly `size` bytes, so that a sanitizer sees the byte behind its end.
class ExactBuffer {
  public:
    explicit ExactBuffer(std::size_t size) : bytes_(new char[size]()) {}
    [[nodiscard]] char* get() {
        return bytes_.get();
    }

  private:
    std::unique_ptr<char[]> bytes_;
};

// Whether the code is one that reading or applying can end with.
[[nodiscard]] inline bool isReadResult(std::uint32_t result) {
    return result == 0 || result == 1 || result == 6;
}

}  // namespace quorvel::fuzz
