// The operations whose cost is told: each with its floor, the platform calls that it cannot do without, made bare.
#pragma once

#include <cstdint>
#include <vector>

namespace quorvel::bench {

struct Operation {
    const char* name;
    std::uint32_t repetitions;
    void (*prepare)();  ///< once, before both sides
    void (*run)();
    void (*floor)();  ///< null for an operation whose whole cost counts
    /// The floor repeats the calls that the platform counted in the last run.
    bool needsCountingPlatform = false;
};

/// The operations on the do-nothing platform.
const std::vector<Operation>& operations();

/// Reads every readable parameter of every instance: 3 radios, 24 access points with 8 stations each.
void readWholeModel();
/// Makes as many platform calls of each kind as the last readWholeModel did.
void wholeModelFloor();
/// The number of getter calls of the last readWholeModel.
std::uint64_t wholeModelReads();

/// Prepares the files that the platform gives for commands and the board's files. To be called first; again, it takes
/// back what was changed.
void preparePlatform();

}  // namespace quorvel::bench
