#pragma once

#include <string>
#include <string_view>
#include <type_traits>

// Renders call arguments as text for the recordings.
namespace quorvel::scripted {

struct Opaque {
    const void* pointer;
    const char* name;
};

inline std::string render(const char* text) {
    return text == nullptr ? "null" : "\"" + std::string(text) + "\"";
}

inline std::string render(const Opaque& opaque) {
    return opaque.pointer == nullptr ? "null" : opaque.name;
}

template <typename Number>
requires std::is_arithmetic_v<Number> std::string render(Number number) {
    return std::to_string(number);
}

inline std::string renderAll() {
    return {};
}

template <typename First, typename... Rest>
std::string renderAll(const First& first, const Rest&... rest) {
    std::string text = render(first);
    ((text += ", " + render(rest)), ...);
    return text;
}

inline Opaque context(const void* pointer) {
    return {pointer, "ctx"};
}

inline Opaque out(const void* pointer) {
    return {pointer, "out"};
}

}  // namespace quorvel::scripted
