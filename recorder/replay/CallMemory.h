// The memory of a recorded call, made again: arguments for the library, and what it left in them.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "recorder/desk/CallTree.h"
#include "recorder/library/Functions.h"

namespace quorvel::recorder {

class CallMemory {
  public:
    CallMemory(const Record& call, const ContextUse& use) : call_(call), use_(use) {}

    /// Returns the next argument of a call in the order of its parameters.
    template <typename Argument>
    Argument next() {
        if constexpr (std::is_integral_v<Argument>) {
            return static_cast<Argument>(number());
        } else if constexpr (std::is_function_v<std::remove_pointer_t<Argument>>) {
            return isNull() ? nullptr : reinterpret_cast<Argument>(callback_);
        } else if constexpr (std::is_same_v<Argument, const char*>) {
            return text();
        } else if constexpr (std::is_same_v<Argument, void*>) {
            return use_.size != 0 ? context() : memory();
        } else {
            return static_cast<Argument>(memory());
        }
    }

    /// The callback that a registration is given.
    void setCallback(void (*callback)()) {
        callback_ = callback;
    }

    /// Compares what the library left with what the recording has. Returns a sentence for each difference.
    [[nodiscard]] std::vector<std::string> compare(const Record& returned) const;

  private:
    struct Block {
        const void* address;
        size_t size;
    };

    const Value& take();
    bool isNull();
    uint32_t number();
    const char* text();
    void* memory();
    void* context();
    void* allocate(size_t size);

    const Record& call_;
    const ContextUse& use_;
    size_t next_ = 0;
    void (*callback_)() = nullptr;
    std::deque<std::vector<uint64_t>> storage_;  // blocks, each aligned for a record
    std::vector<Block> blocks_;                  // what is compared, in order
};

}  // namespace quorvel::recorder
