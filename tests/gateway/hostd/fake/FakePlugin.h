#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

// A small plug-in for tests of the host's walker: a table with every depth and type, functions that remember how they
// were called, and values that a test sets.
namespace fake {

struct State {
    std::uint32_t radios = 2;
    std::uint32_t accessPoints = 1;
    std::vector<std::string> stations;       // of access point 1
    std::array<std::uint32_t, 4> results{};  // scan results per radio, from index 1
    std::uint32_t categories = 4;
    std::uint32_t channel = 36;
    std::int32_t power = -3;
    bool enabled = true;
    std::string alias = "first";
    std::uint32_t failGet = 0;    // what the getter of Radio.Alias answers
    std::uint32_t failApply = 0;  // what the apply of Radio answers
    std::uint32_t failSave = 0;
    std::uint32_t measured = 0;          // channel of the last measurement
    std::vector<std::string> calls;      // what was called, in order
    std::vector<std::string> immediate;  // setters that wrote at once
};

// Returns the state, put back to the values above.
State& reset();
State& state();

}  // namespace fake
