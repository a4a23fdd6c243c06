// The recorded answer to something that the library does.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "recorder/desk/Recording.h"

namespace quorvel::recorder {

/// Values as a recording has them.
[[nodiscard]] Value numberValue(uint32_t number);
[[nodiscard]] Value textValue(const char* text);
[[nodiscard]] Value bytesValue(const void* bytes, size_t size);
/// An address; the standard streams are 1 and 2.
[[nodiscard]] Value handleValue(const void* address);

class Answer {
  public:
    /// Asks the player for what the platform answered then.
    Answer(const char* function, std::initializer_list<Value> arguments);

    /// Returns the recorded result; `otherwise` when the recording has none.
    [[nodiscard]] uint32_t result(uint32_t otherwise) const;
    /// Returns the recorded result as a text that lives as long as the recording, or null.
    [[nodiscard]] const char* text() const;
    /// Returns the recorded result as an address, or null.
    [[nodiscard]] void* address() const;
    /// Copies memory that the platform filled, `index` from 0, into `to`, at most `size` bytes. A text gets its NUL.
    void fill(size_t index, void* to, size_t size) const;
    /// Returns the recorded address that the platform stored, or null.
    [[nodiscard]] void* storedAddress() const;
    /// errno after the call.
    [[nodiscard]] int error() const {
        return record_ == nullptr ? 0 : record_->error;
    }

  private:
    [[nodiscard]] const Value* first(ValueRole role, size_t index = 0) const;

    const Record* record_;
};

}  // namespace quorvel::recorder
