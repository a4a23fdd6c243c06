#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/torture/Consequences.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "tests/wifi/platform/ScriptedPlatform.h"

namespace quorvel::torture {

// The kind of value in an output.
enum class OutputKind { Number, Text };

// Something whole that a host does with the library: one call, or a transaction of several.
struct Scenario {
    // The exported function, when it is one; what it does otherwise.
    std::string name;
    // Brings about what the action starts from. Its calls do not fail and are not counted.
    std::function<void()> prepare = [] {};
    // Does it; returns the result code that ended it.
    std::function<std::uint32_t()> act;
    // Where the action writes what it read; refilled before each run, and begun with the given bytes.
    std::shared_ptr<scripted::GuardedBlock> output = nullptr;
    OutputKind outputKind = OutputKind::Number;
    std::string outputBegin = {};
    // Looks at whatever else the action left, and returns what is wrong with it, or the empty text.
    std::function<std::string(const Aftermath&)> check = [](const Aftermath&) { return std::string(); };
    // Calls that are not failed for ever. Quirk: the library would repeat them for ever.
    std::set<std::string> askedForEver = {};
    // The save's failure keeps the lock.
    bool keepsLockWhenFailing = false;
    // Heap blocks that the success path leaves, or, below 0, those from before that it frees.
    std::ptrdiff_t blocksLeft = 0;
    // A result that is no code (an instance number, a count, a truth value).
    bool resultIsNoCode = false;
    // Exported functions of the action that log nothing by which they could be seen.
    std::vector<const char*> silentFunctions = {};
};

// How often something failed so far, over all scenarios of the program.
struct Figures {
    std::size_t scenarios = 0;
    std::size_t calls = 0;
    std::size_t runs = 0;
};
[[nodiscard]] const Figures& figures();

// The exported functions that some scenario went through on its success path.
[[nodiscard]] const std::set<std::string>& torturedFunctions();

// Runs the scenario on its success path, then again for each platform call that it made there, allocations among them:
// with that call failing once; with it failing from then on; and, for a call of the manager, with the whole manager
// gone from then on. Checks the rules after every run; a broken rule fails the current test.
void torture(const Scenario& scenario);

// Runs the scenario once without a fault and checks what it leaves.
void runOnce(const Scenario& scenario);

}  // namespace quorvel::torture
