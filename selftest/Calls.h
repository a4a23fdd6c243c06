#pragma once

#include <array>
#include <cstring>

#include "selftest/Expectation.h"
#include "selftest/Library.h"
#include "selftest/Platform.h"
#include "selftest/Watch.h"

namespace quorvel::selftest {

/// A context as the host hands it out, with room behind what the object needs.
struct Context {
    alignas(8) std::array<std::uint8_t, kContextRoom> bytes;

    /// As memory comes: not initialised.
    Context() {
        bytes.fill(0xA5);
    }
    [[nodiscard]] Word word() {
        return wordOf(bytes.data());
    }
    [[nodiscard]] bool operator==(const Context& other) const {
        return bytes == other.bytes;
    }
};

/// Calls `name` with the object's instances between `first` and the last arguments. `instance` is used for every level.
class Caller {
  public:
    Caller(const Library& library, std::string name) : name_(std::move(name)), function_(library.find(name_)) {}

    [[nodiscard]] bool there() const {
        return function_ != 0;
    }
    [[nodiscard]] const std::string& name() const {
        return name_;
    }
    /// Calls it with `(arguments...)`. The platform forgets what it was asked before.
    template <typename... Arguments>
    [[nodiscard]] std::uint32_t operator()(Arguments... arguments) const {
        platform().forget();
        nowCalling(name_);
        return call(function_, arguments...);
    }

    /// Getters: (instances, out) and, with a length, (instances, buffer, length).
    template <typename... Last>
    [[nodiscard]] std::uint32_t at(unsigned depth, std::uint32_t instance, Last... last) const {
        if (depth == 0) return (*this)(last...);
        if (depth == 1) return (*this)(instance, last...);
        return (*this)(instance, instance, last...);
    }
    /// Setters, applies and snapshots: (context, instances, last...).
    template <typename... Last>
    [[nodiscard]] std::uint32_t with(Word context, unsigned depth, std::uint32_t instance, Last... last) const {
        if (depth == 0) return (*this)(context, last...);
        if (depth == 1) return (*this)(context, instance, last...);
        return (*this)(context, instance, instance, last...);
    }

  private:
    std::string name_;
    Word function_;
};

/// Returns whether the last call left the lock as it found it.
[[nodiscard]] inline bool lockBalanced() {
    return platform().locks == platform().unlocks;
}

}  // namespace quorvel::selftest
