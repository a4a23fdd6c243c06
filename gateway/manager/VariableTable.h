#pragma once

#include <string_view>

#include "gateway/description/Description.h"
#include "gateway/manager/Values.h"

namespace quorvel::manager {

enum class Scope { kSystem, kRadio, kBss };
enum class Kind { kStored, kVolatile, kFixed, kComputed, kAction };

struct Variable {
    std::string_view name;
    Scope scope;
    Kind kind;
    std::string_view factory;
};

/// Finds a variable by its exact name, or gives null.
[[nodiscard]] const Variable* findVariable(std::string_view name);

/// The values that a board leaves the factory with.
[[nodiscard]] Values factorySystem();
[[nodiscard]] Values factoryRadio(const description::Radio& radio);
[[nodiscard]] Values factoryBss(const description::Radio& radio, const description::Bss& bss);
[[nodiscard]] Values factoryNvram(const description::Board& board);

/// The manager's bandwidth code of 20, 40, 80 or 160 MHz, and back; 0 for anything else.
[[nodiscard]] unsigned bandwidthCode(unsigned megahertz);
[[nodiscard]] unsigned bandwidthOfCode(unsigned code);

/// The manager's authentication mode of a security mode's name.
[[nodiscard]] std::string_view authModeOf(std::string_view security);

}  // namespace quorvel::manager
