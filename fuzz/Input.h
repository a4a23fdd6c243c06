#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

// Shared by the fuzz targets: taking an input apart, and saying what must hold.
namespace quorvel::fuzz {

// Takes an input apart from its start; what is missing reads as zeros.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

    [[nodiscard]] std::uint8_t byte() {
        if (left_ == 0) {
            return 0;
        }
        --left_;
        return *data_++;
    }
    [[nodiscard]] std::uint32_t word() {
        std::uint32_t value = 0;
        for (unsigned n = 0; n < 4; ++n) {
            value |= std::uint32_t{byte()} << (8 * n);
        }
        return value;
    }
    [[nodiscard]] std::string bytes(std::size_t count) {
        const std::size_t taken = count < left_ ? count : left_;
        std::string text(reinterpret_cast<const char*>(data_), taken);
        data_ += taken;
        left_ -= taken;
        return text;
    }
    [[nodiscard]] std::string rest() {
        return bytes(left_);
    }
    [[nodiscard]] bool isEmpty() const {
        return left_ == 0;
    }

  private:
    const std::uint8_t* data_;
    std::size_t left_;
};

// Ends the run as a crash when something that must hold does not.
inline void require(bool holds, const char* what) {
    if (holds) {
        return;
    }
    (void)std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

}  // namespace quorvel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
