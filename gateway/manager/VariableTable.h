#pragma once

#include <string_view>

#include "gateway/manager/Model.h"

namespace quorvel::manager {

enum class Scope { System, Radio, Bss };
enum class Kind { Stored, Volatile, Fixed, Computed, Action };

struct Variable {
    std::string_view name;
    Scope scope;
    Kind kind;
    std::string_view factory;
};

// Finds a variable by its exact name, or gives null.
[[nodiscard]] const Variable* findVariable(std::string_view name);

// The values that a board leaves the factory with.
[[nodiscard]] Values factorySystem();
[[nodiscard]] Values factoryRadio(const BoardRadio& radio);
[[nodiscard]] Values factoryBss(const BoardRadio& radio, const BoardBss& bss);
[[nodiscard]] Values factoryNvram(const Board& board);

// The manager's bandwidth code of 20, 40, 80 or 160 MHz, and back; 0 for anything else.
[[nodiscard]] unsigned bandwidthCode(unsigned megahertz);
[[nodiscard]] unsigned bandwidthOfCode(unsigned code);

// The manager's authentication mode of a security mode's name.
[[nodiscard]] std::string_view authModeOf(std::string_view security);

}  // namespace quorvel::manager
