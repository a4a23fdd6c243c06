// Setters: what they refuse, and where they put what they accept.
#include <limits>

#include "selftest/Calls.h"
#include "selftest/Checks.h"

namespace quorvel::selftest {
namespace {

using model::Accepted;
using model::Kind;

// A setter and the contexts it is tried on.
struct Trial {
    const Library& library;
    const Parameter& parameter;
    Report& report;
    Caller set;

    Trial(const Library& from, const Parameter& of, Report& to)
        : library(from), parameter(of), report(to), set(from, of.setter()) {}

    void initialise(Context& context) const {
        (void)Caller(library, parameter.function("InitContext"))(context.word());
    }

    // Sets with these arguments; a refusal leaves the context as it was, and no setter locks.
    template <typename... Last>
    void refuses(const std::string& what, std::uint32_t code, Last... last) const {
        Context context;
        initialise(context);
        const Context before = context;
        report.expect(set.name() + " of " + what, set.with(context.word(), parameter.depth, 1, last...), code);
        report.check(context == before, set.name() + " of " + what + " changes the context");
        report.check(platform().lockAttempts == 0, set.name() + " takes the lock, expected not to");
    }

    // `field` is the value that the parameter's field must have afterwards.
    template <typename... Last>
    void accepts(const std::string& what, const void* field, std::size_t size, Last... last) const {
        Context context;
        initialise(context);
        Context expected = context;
        report.expect(set.name() + " of " + what, set.with(context.word(), parameter.depth, 1, last...), 0);
        report.check(platform().lockAttempts == 0, set.name() + " takes the lock, expected not to");
        report.check(onlyPending(context.bytes.data(), parameter.row->node),
                     set.name() + " of " + what + " does not mark node " + std::to_string(parameter.row->node) +
                         " and no other");
        std::memcpy(expected.bytes.data(), context.bytes.data(), 132);
        std::memcpy(expected.bytes.data() + parameter.field, field, size);
        report.check(context == expected, set.name() + " of " + what + " does not store it in its field, " +
                                              std::to_string(size) + " bytes at " + std::to_string(parameter.field) +
                                              ", and nowhere else");
    }
};

void checkContextRules(const Trial& trial) {
    const std::string text(1, '1');
    const Word value = trial.parameter.text() ? wordOf(text.c_str()) : 1;
    trial.report.expect(trial.set.name() + " with a null context",
                        trial.set.with(0, trial.parameter.depth, 1, value, 1), 2);
    Context context;
    const Context before = context;
    trial.report.expect(trial.set.name() + " with a context that was not initialised",
                        trial.set.with(context.word(), trial.parameter.depth, 1, value, 1), 5);
    trial.report.check(context == before, trial.set.name() + " changes a context that was not initialised");
}

void checkNumber(const Trial& trial, std::uint32_t value, bool accepted) {
    const bool isSigned = trial.parameter.row->type.kind == Kind::kInt;
    const std::string what = isSigned ? std::to_string(static_cast<std::int32_t>(value)) : std::to_string(value);
    if (!accepted) {
        trial.refuses(what, 8, value);
    } else if (trial.parameter.row->type.kind == Kind::kBoolean) {
        const auto byte = static_cast<std::uint8_t>(value);
        trial.accepts(what, &byte, sizeof byte, value);
    } else {
        trial.accepts(what, &value, sizeof value, value);
    }
}

// The bounds themselves, their neighbours, and the ends of the type.
void checkRange(const Trial& trial, std::uint32_t low, std::uint32_t high) {
    checkNumber(trial, low, true);
    checkNumber(trial, high, true);
    checkNumber(trial, high + 1, false);
    checkNumber(trial, std::numeric_limits<std::uint32_t>::max(), false);
    checkNumber(trial, 0x80000000U, false);
    if (low > 0) checkNumber(trial, low - 1, false);
}

void checkNumbers(const Trial& trial) {
    const Accepted& accepted = trial.parameter.row->accepted;
    if (trial.parameter.row->type.kind == Kind::kBoolean) {
        checkRange(trial, 0, 1);
    } else if (accepted.rule == Accepted::Rule::kRange) {
        checkRange(trial, accepted.low, accepted.high);
    } else {
        for (const std::uint32_t value : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU})
            checkNumber(trial, value, true);
    }
}

void checkText(const Trial& trial, std::uint32_t length, bool accepted) {
    const std::string text(length, '1');
    const std::string what = "a text of " + std::to_string(length);
    if (!accepted) {
        trial.refuses(what, 8, wordOf(text.c_str()), length);
        return;
    }
    std::string field = text;
    field.resize(trial.parameter.row->type.capacity);
    trial.accepts(what, field.data(), field.size(), wordOf(text.c_str()), length);
}

void checkTexts(const Trial& trial) {
    const std::uint32_t capacity = trial.parameter.row->type.capacity;
    const Accepted& accepted = trial.parameter.row->accepted;
    trial.refuses("a null text", 6, 0, 1);
    checkText(trial, capacity + 1, false);
    if (accepted.rule != Accepted::Rule::kLengths) {
        checkText(trial, 0, true);
        checkText(trial, 1, true);
        checkText(trial, capacity, true);
        return;
    }
    for (std::uint32_t length = 0; length <= capacity; ++length)
        checkText(trial, length, length == accepted.low || length == accepted.high);
}

// A new text leaves nothing of a longer one behind it.
void checkReplacement(const Trial& trial) {
    const Parameter& parameter = trial.parameter;
    const std::uint32_t capacity = parameter.row->type.capacity;
    if (parameter.row->accepted.rule == Accepted::Rule::kLengths) return;
    Context context;
    trial.initialise(context);
    const std::string whole(capacity, 'x');
    (void)trial.set.with(context.word(), parameter.depth, 1, wordOf(whole.c_str()), capacity);
    (void)trial.set.with(context.word(), parameter.depth, 1, wordOf("y"), 1);
    std::string expected = "y";
    expected.resize(capacity);
    trial.report.check(std::memcmp(context.bytes.data() + parameter.field, expected.data(), capacity) == 0,
                       trial.set.name() + " of a short text leaves the rest of a longer one behind it");
}

// The numbers of depth 2 that act at once: only their bounds can be seen without a manager.
void checkDirect(const Trial& trial) {
    const Accepted& accepted = trial.parameter.row->accepted;
    if (trial.parameter.depth != 2 || accepted.rule != Accepted::Rule::kRange) return;
    for (const std::uint32_t value : {accepted.low - 1, accepted.high + 1}) {
        if (value > 0x7FFFFFFFU) continue;
        trial.report.expect(trial.set.name() + " of " + std::to_string(value), trial.set(0, 1, 1, value), 8);
        trial.report.check(platform().managerCalls == 0,
                           trial.set.name() + " of " + std::to_string(value) + ", out of range, reaches the manager");
    }
    for (const std::uint32_t value : {accepted.low, accepted.high}) {
        const std::uint32_t result = trial.set(0, 1, 1, value);
        trial.report.check(result != 8 && result != 2, trial.set.name() + " of " + std::to_string(value) +
                                                           ": returned " + std::to_string(result) +
                                                           ", expected the value to be accepted without a context");
        trial.report.check(lockBalanced(), trial.set.name() + " keeps the lock");
    }
}

template <typename Check>
void forEach(const Library& library, Report& report, const char* rule, bool staged, const Check& check) {
    report.begin(rule);
    for (const Parameter& parameter : parameters()) {
        if (!parameter.writable() || parameter.staged() != staged) continue;
        if (staged && library.find(parameter.function("InitContext")) == 0) continue;
        const Trial trial(library, parameter, report);
        if (trial.set.there()) check(trial);
    }
}

}  // namespace

void checkSetters(const Library& library, Report& report) {
    forEach(library, report, "setters: null and uninitialised contexts are refused", true, checkContextRules);
    forEach(library, report, "numbers and booleans: bounds, field and mark", true, [](const Trial& trial) {
        if (!trial.parameter.text()) checkNumbers(trial);
    });
    forEach(library, report, "texts: null, capacity and lengths, field and mark", true, [](const Trial& trial) {
        if (!trial.parameter.text()) return;
        checkTexts(trial);
        checkReplacement(trial);
    });
    forEach(library, report, "setters that act at once: bounds", false, checkDirect);
}

}  // namespace quorvel::selftest
