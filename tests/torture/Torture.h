#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>

#include "ScriptedPlatform.h"

namespace quorvel::torture {

// Something whole that a host does with the library: one call, or a transaction of several.
struct Scenario {
    std::string name;
    // Brings about what the action starts from. Its calls do not fail and are not counted.
    std::function<void()> prepare = [] {};
    // Does it; returns the result code that ended it.
    std::function<std::uint32_t()> act;
    // Looks at what the action left, given its result and the name of the call that failed (empty on the success path),
    // and returns what is wrong with it, or the empty text.
    std::function<std::string(std::uint32_t result, const std::string& failing)> check =
        [](std::uint32_t, const std::string&) { return std::string(); };
    std::set<std::uint32_t> codes = {0, 1, 6};
    // Calls whose failing for ever is not tried, because the library goes on asking for ever: meant.
    std::set<std::string> askedForEver = {};
    // The save's failure keeps the lock.
    bool keepsLockWhenFailing = false;
    // A failure that is left to the caller to log.
    bool tellsNobody = false;
    // A result that is no code (an instance number, a count).
    bool resultIsNoCode = false;
};

// How often something failed so far, over all scenarios of the program.
struct Figures {
    std::size_t scenarios = 0;
    std::size_t calls = 0;
    std::size_t runs = 0;
};
[[nodiscard]] const Figures& figures();

// Runs the scenario on its success path, then again for each platform call that it made there: with that call failing
// once; with it failing from then on; and, for a call of the manager, with the whole manager gone from then on. Then
// once each with memory refused. After every run what must hold is looked at; what does not is a failure of the current
// test.
void torture(const Scenario& scenario);

// Runs the scenario as it is, with the same look at what it leaves.
void runOnce(const Scenario& scenario);

}  // namespace quorvel::torture
