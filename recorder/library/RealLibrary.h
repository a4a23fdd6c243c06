// The real library: the recorder opens it, calls it, and answers its calls of the platform.
#pragma once

#include <cstdint>

#include "recorder/library/Functions.h"

namespace quorvel::recorder {

/// One import of the library that the recorder takes the place of.
struct Import {
    const char* name;
    void* replacement;  ///< the recorder's function
    void* original;     ///< the address that the import was bound to before
};

/// Opens `path` with local binding and finds its functions. Returns null, or a sentence that says why it failed.
[[nodiscard]] const char* openRealLibrary(const char* path);

/// Lets the library's relocations for `count` imports lead to the replacements, addresses in its data included, and
/// keeps their originals. Returns null, or a sentence that says why it failed.
[[nodiscard]] const char* replaceImports(Import* imports, uint32_t count);

/// The library's functions by number; valid after openRealLibrary, which finds constantRange too.
[[gnu::visibility("hidden")]] extern void* realFunctions[kFunctionCount];
/// The library's qvlThreadId.
[[gnu::visibility("hidden")]] extern const pthread_t* realThreadId;

}  // namespace quorvel::recorder
