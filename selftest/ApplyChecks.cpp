// Applies: what they refuse, and what becomes of the context.
#include "selftest/Calls.h"
#include "selftest/Checks.h"

namespace quorvel::selftest {
namespace {

constexpr std::uint32_t kLockFails = 77;
constexpr std::uint32_t kUnlockFails = 78;

struct Trial {
    const model::Object& object;
    Caller init;
    Caller apply;
    unsigned depth;
    // Its contexts are neither checked nor initialised again.
    bool leavesContext;

    Trial(const Library& library, const model::Object& of)
        : object(of),
          init(library, std::string(of.prefix) + "InitContext"),
          apply(library, std::string(of.prefix) + "ApplyContext"),
          depth(depthOf(of)),
          leavesContext(of.path.ends_with(".AC.{i}")) {}

    // A third argument of 0 has no scan started.
    [[nodiscard]] std::uint32_t run(Word context) const {
        return apply.with(context, depth, 1, 0, 0);
    }
};

void checkRefusals(const Trial& trial, Report& report) {
    if (trial.leavesContext) return;
    report.expect(trial.apply.name() + " with a null context", trial.run(0), 2);
    report.check(platform().lockAttempts == 0, trial.apply.name() + " with a null context takes the lock");
    Context context;
    const Context before = context;
    report.expect(trial.apply.name() + " with a context that was not initialised", trial.run(context.word()), 5);
    report.check(platform().lockAttempts == 0 && context == before,
                 trial.apply.name() + " with a context that was not initialised takes the lock or changes it");
}

void checkFailingLock(const Trial& trial, Report& report) {
    Context context;
    (void)trial.init(context.word());
    const Context before = context;
    platform().lockResult = kLockFails;
    report.expect(trial.apply.name() + " when the lock fails", trial.run(context.word()), kLockFails);
    platform().lockResult = 0;
    report.check(platform().managerCalls == 0 && platform().unlocks == 0 && context == before,
                 trial.apply.name() + " goes on although the lock failed");
}

void checkSuccess(const Trial& trial, Report& report) {
    Context context;
    (void)trial.init(context.word());
    report.expect(trial.apply.name() + " of a context without marks", trial.run(context.word()), 0);
    report.check(platform().locks == 1 && lockBalanced(), trial.apply.name() + " does not lock and unlock once each");
    const unsigned inits = trial.leavesContext ? 0 : 1;
    report.check(
        platform().contextInits == inits && (inits == 0 || platform().contextSize == contextSizeOf(trial.object)),
        trial.apply.name() + ": initialises the context " + std::to_string(platform().contextInits) + " times (" +
            std::to_string(platform().contextSize) + " bytes) after success, expected " + std::to_string(inits) + " (" +
            std::to_string(contextSizeOf(trial.object)) + " bytes)");
    platform().unlockResult = kUnlockFails;
    report.expect(trial.apply.name() + " when the unlock fails", trial.run(context.word()), kUnlockFails);
    platform().unlockResult = 0;
    report.check(platform().contextInits == 0, trial.apply.name() + " initialises the context after a failed unlock");
}

// Every node marked, with a manager that does nothing: whatever the result, the lock is free afterwards.
void checkBalance(const Trial& trial, Report& report) {
    for (const bool answers : {false, true}) {
        Context context;
        (void)trial.init(context.word());
        for (std::uint32_t node = 1; node <= nodeLimitOf(trial.object); ++node)
            context.bytes[4 + node / 8] |= static_cast<std::uint8_t>(1U << (node % 8));
        platform().managerAnswers = answers;
        const std::uint32_t result = trial.run(context.word());
        platform().managerAnswers = false;
        report.check(platform().locks == 1 && lockBalanced(),
                     trial.apply.name() + " of every node: does not lock and unlock once each");
        if (result == 0 && !trial.leavesContext) {
            report.check(nothingPending(context.bytes.data()),
                         trial.apply.name() + " succeeds and leaves nodes marked");
        }
        if (result != 0) {
            report.check(platform().contextInits == 0, trial.apply.name() + " initialises the context after a failure");
        }
    }
}

template <typename Check>
void forEach(const Library& library, Report& report, const char* rule, const Check& check) {
    report.begin(rule);
    for (const model::Object& object : model::kObjects) {
        const Trial trial(library, object);
        if (trial.apply.there() && trial.init.there()) check(trial, report);
    }
}

}  // namespace

void checkApplies(const Library& library, Report& report) {
    forEach(library, report, "applies: null and uninitialised contexts are refused", checkRefusals);
    forEach(library, report, "applies: a failing lock's result is returned, nothing is done", checkFailingLock);
    forEach(library, report, "applies: the context is initialised again after success only", checkSuccess);
    forEach(library, report, "applies: the lock is free after every call", checkBalance);
}

}  // namespace quorvel::selftest
