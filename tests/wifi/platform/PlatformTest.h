#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "tests/wifi/platform/Resources.h"
#include "tests/wifi/platform/ScriptedPlatform.h"

namespace quorvel::scripted {

// The fixture of every test of the plug-in. It starts from a platform without scripts and fails a test that leaves
// something behind: the lock held or misused, a stream or descriptor open, a thread running, a heap block.
class PlatformTest : public testing::Test {
  protected:
    PlatformTest();
    ~PlatformTest() override;
    void TearDown() override;

    // For a test whose subject leaves the lock held, or locks twice.
    void expectLockLeftHeld() {
        lockMayStayHeld_ = true;
    }
    void expectLockMisuse() {
        lockMayBeMisused_ = true;
    }

    // For a test that lets a listener run, which leaves its buffer.
    void expectBlocksLeft() {
        blocksMayBeLeft_ = true;
    }
    // For a fixture that begins by freeing what the library kept from earlier tests.
    void countBlocksFromHere() {
        blocks_ = platform.liveBlocks();
    }

    Platform& platform;

  private:
    Resources before_;
    std::size_t blocks_ = 0;
    bool blocksMayBeLeft_ = false;
    bool lockMayStayHeld_ = false;
    bool lockMayBeMisused_ = false;
};

// A block of memory for an object context (or any buffer), filled with 0xEE, between two rows of guard bytes.
class GuardedBlock {
  public:
    explicit GuardedBlock(std::size_t size) : size_(size), bytes_(size + 2 * kGuard, kFill) {}

    [[nodiscard]] void* get() {
        return bytes_.data() + kGuard;
    }
    [[nodiscard]] char* text() {
        return reinterpret_cast<char*>(get());
    }
    [[nodiscard]] std::size_t size() const {
        return size_;
    }
    // The bytes of a field.
    [[nodiscard]] std::string bytes(std::size_t offset, std::size_t length) const {
        return {reinterpret_cast<const char*>(bytes_.data()) + kGuard + offset, length};
    }
    void write(std::size_t offset, const std::string& bytes) {
        std::memcpy(bytes_.data() + kGuard + offset, bytes.data(), bytes.size());
    }
    template <typename Value>
    [[nodiscard]] Value at(std::size_t offset) const {
        Value value{};
        std::memcpy(&value, bytes_.data() + kGuard + offset, sizeof value);
        return value;
    }
    template <typename Value>
    void put(std::size_t offset, Value value) {
        std::memcpy(bytes_.data() + kGuard + offset, &value, sizeof value);
    }
    // Whether nothing was written outside the block.
    [[nodiscard]] bool intact() const {
        for (std::size_t i = 0; i < kGuard; ++i) {
            if (bytes_[i] != kFill || bytes_[kGuard + size_ + i] != kFill) {
                return false;
            }
        }
        return true;
    }

    static constexpr std::uint8_t kFill = 0xEE;

  private:
    static constexpr std::size_t kGuard = 64;  // keeps the block's alignment
    std::size_t size_;
    std::vector<std::uint8_t> bytes_;
};

}  // namespace quorvel::scripted
