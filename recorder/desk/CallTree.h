// The calls of a recording, each with what the library did meanwhile.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "recorder/desk/Recording.h"

namespace quorvel::recorder {

/// A call of the host.
struct Call {
    const Record* begin = nullptr;
    const Record* end = nullptr;        ///< null when the recording ends before the call does
    std::vector<const Record*> events;  ///< platform calls, log lines and callbacks, in their order
    std::optional<uint64_t> turn;       ///< place among the calls that took the library's lock
};

/// A thread that the library started.
struct LibraryThread {
    const Record* begin = nullptr;
    std::vector<const Record*> events;
};

struct CallTree {
    std::vector<Call> calls;  ///< in the order in which the calls began
    std::vector<LibraryThread> threads;
    std::vector<const Record*> gaps;

    /// Returns the numbers of the calls, from 0, in an order in which they can be made one after the other: as they
    /// began, but those that took the library's lock in the order in which they got it.
    [[nodiscard]] std::vector<size_t> order() const;
};

/// Sorts a recording's records into calls and threads. The recording must outlive the tree.
[[nodiscard]] CallTree makeCallTree(const Recording& recording);

}  // namespace quorvel::recorder
