#pragma once

#include <cstdint>
#include <string>

#include "tests/wifi/DataModel.h"
#include "tests/wifi/platform/PlatformTest.h"

// Parameters that are a manager variable, converted: read and written through the front ends of access point 11, which
// the manager knows as sub-interface 2 of radio index 1.
namespace quorvel {

struct MappedNumber {
    const char* stem;
    const char* variable;
    const char* text;     // at the manager
    std::uint32_t value;  // in the data model
};

struct MappedText {
    const char* stem;
    const char* variable;
};

class MappedParameters : public scripted::PlatformTest {
  protected:
    using Apply = std::uint32_t (*)(void* ctx, std::uint32_t ap);

    static constexpr std::uint32_t kAccessPoint = 11;
    static constexpr std::uint32_t kRadioIndex = 1;
    static constexpr std::uint32_t kSubIndex = 2;

    // The variable is read once, under the lock, and nothing beside the output is written.
    void expectRead(const MappedNumber& number);
    void expectRead(const MappedText& text);
    // A failed read fails the getter and leaves the output.
    void expectFailure(const char* stem, const char* variable);
    // The staged value reaches the variable, once, under the lock, and nothing else is written.
    void expectWritten(const MappedNumber& number, Apply apply);
    // A text that fills its field reaches the variable whole.
    void expectWritten(const MappedText& text, Apply apply);
    // The getter succeeds without a platform call and leaves the output.
    void expectUntouched(const char* stem);

    [[nodiscard]] static std::string readCall(const char* variable);
    [[nodiscard]] static std::string writeCall(const char* variable, const std::string& text);

  private:
    void expectUnderLock(const char* call);
};

}  // namespace quorvel
