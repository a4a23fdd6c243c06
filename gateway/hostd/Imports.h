#pragma once

#include <cstddef>
#include <span>

namespace quorvel::hostd {

/// A function of a library's that it does not define itself, by its name, and another one to take its place.
struct Supplied {
    const char* name;
    void* function;
};

/// Binds each such call of the loaded library (a handle of dlopen) to the given function. Other libraries, and this
/// process, go on as they are. Returns how many of the calls the library makes. Throws std::runtime_error when the
/// library's table of calls cannot be changed. Call it before other threads call the library.
std::size_t supply(void* library, std::span<const Supplied> calls);

/// Returns the function that the loaded library's calls of `name` lead to, or null when it makes none.
[[nodiscard]] void* importOf(void* library, const char* name);

}  // namespace quorvel::hostd
