#pragma once

#include <unistd.h>

#include <utility>

namespace quorvel::board {

// Owns a file descriptor.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() {
        reset();
    }

    [[nodiscard]] int get() const {
        return number_;
    }
    [[nodiscard]] explicit operator bool() const {
        return number_ >= 0;
    }
    // Gives the descriptor up without closing it.
    [[nodiscard]] int release() {
        return std::exchange(number_, -1);
    }
    void reset() {
        if (number_ >= 0) close(number_);
        number_ = -1;
    }

  private:
    int number_ = -1;
};

}  // namespace quorvel::board
