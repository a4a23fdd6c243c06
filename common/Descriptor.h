#pragma once

#include <unistd.h>

#include <utility>

namespace quorvel::common {

/// Owns a file descriptor and closes it at the end.
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

    /// Returns the descriptor's number, or a negative one when there is none.
    [[nodiscard]] int get() const {
        return number_;
    }
    [[nodiscard]] explicit operator bool() const {
        return number_ >= 0;
    }
    /// Closes the descriptor.
    void reset() {
        if (number_ >= 0) close(number_);
        number_ = -1;
    }
    /// Returns the descriptor's number and leaves it to the caller to close.
    [[nodiscard]] int release() {
        return std::exchange(number_, -1);
    }

  private:
    int number_ = -1;
};

}  // namespace quorvel::common
