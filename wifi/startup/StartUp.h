// Files that start-up reads.
#pragma once

#include <cstdint>

#pragma GCC visibility push(hidden)

/// Reads the first line of a file, at most `size` - 1 characters, newline included. Leaves the buffer when it cannot.
extern "C" void Quorvel_P_WiFiFileCopyToBuffer(const char* path, char* buffer, uint32_t size);

#pragma GCC visibility pop
