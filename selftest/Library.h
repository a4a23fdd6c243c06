#pragma once

#include <cstdint>
#include <string>

namespace quorvel::selftest {

/// The platform's word: a pointer's size.
using Word = std::uintptr_t;

/// The plug-in under test.
class Library {
  public:
    /// Loads it. Throws std::runtime_error saying why it cannot be loaded.
    explicit Library(const std::string& file);

    /// Returns the address of what the library itself exports under this name, or 0.
    [[nodiscard]] Word find(const std::string& name) const;
    /// Returns the size of what is exported under this name, or 0.
    [[nodiscard]] std::size_t sizeOf(const std::string& name) const;
    /// Says what an address is: "WiFiRadioEnableGet", "0", or "an address outside the library".
    [[nodiscard]] std::string describe(Word address) const;
    /// Returns the text at an address of the library; for other addresses, describe().
    [[nodiscard]] std::string text(Word address) const;

  private:
    [[nodiscard]] bool owns(Word address) const;

    void* handle_ = nullptr;
    const void* base_ = nullptr;
};

/// Calls an exported function with words for arguments: every argument of the interface is a word or less, and a
/// function ignores what it does not take.
template <typename... Arguments>
std::uint32_t call(Word function, Arguments... arguments) {
    return reinterpret_cast<std::uint32_t (*)(decltype(static_cast<Word>(arguments))...)>(function)(
        static_cast<Word>(arguments)...);
}

inline Word wordOf(const void* pointer) {
    return reinterpret_cast<Word>(pointer);
}

}  // namespace quorvel::selftest
