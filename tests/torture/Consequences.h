#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/wifi/platform/ScriptedPlatform.h"

// The required consequences of a failed platform call: result, log and output, for every function of the library
// and every call that it makes. Written out apart from the library.
namespace quorvel::torture {

// A host's own code for a failure, which no implementation of this library gives: it must come through unchanged.
constexpr std::uint32_t kHostsCode = 77;

enum class Output {
    Untouched,  // as the caller handed it in
    AsEver,     // as on the success path
    Value,      // the rule's value
};

// The failure of one call in one function.
struct Rule {
    const char* function;  // `*` matches anything
    const char* call;
    const char* argument;  // a text among its arguments, or nothing for any
    // Errors and warnings that are logged for it, in order. `%0`, `%1`, ... are the call's arguments; `*` is anything.
    std::vector<const char*> lines;
    // The function ends with this code; otherwise it goes on.
    std::optional<std::uint32_t> ends;
    Output output;
    const char* value = "";
    // The rule holds only when a call with this text among its arguments has failed before.
    const char* afterFailed = "";
    // The rest of the success path's log is missing.
    bool another = false;
};

// One failed call of a run, where it was made, and what comes of it.
struct Failure {
    scripted::Call call;
    std::string function;  // the exported function at work
    std::string caller;    // the snapshot that called it, or nothing
    const Rule* rule = nullptr;
};

// Results and leftovers of a run.
struct Run {
    std::uint32_t result = 0;
    std::vector<scripted::Call> calls;
    std::vector<scripted::LogLine> logs;
};

struct Aftermath {
    std::uint32_t result = 0;
    bool succeeded = false;  // nothing failed
    std::vector<Failure> failures;

    // The failure that ended it, or null.
    [[nodiscard]] const Failure* fatal() const;
    [[nodiscard]] bool failed(const std::string& call) const;
};

// The required result and log of a run.
struct Expectation {
    std::uint32_t result = 0;
    std::vector<std::string> lines;  // in the order of the failures
    std::vector<std::string> missing;
    Aftermath aftermath;
};

// `success` is the scenario's run without failures.
[[nodiscard]] Expectation expect(const std::string& scenario, const Run& success, const Run& run);

// Whether a text matches the pattern, in which `*` matches anything.
[[nodiscard]] bool reads(const std::string& text, const std::string& pattern);

// Describes what is wrong with the errors and warnings of a run, or with its trace: a function that fails does not log
// "DONE". Empty when both are right.
[[nodiscard]] std::string wrongInLog(const Expectation& expectation, const Run& run);
[[nodiscard]] std::string wrongInTrace(const Expectation& expectation, const Run& run);

// The functions whose beginning or end the trace shows.
[[nodiscard]] std::vector<std::string> tracedFunctions(const Run& run);

}  // namespace quorvel::torture
