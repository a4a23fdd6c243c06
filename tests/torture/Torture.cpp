#include "tests/torture/Torture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <map>
#include <vector>

#include "tests/torture/TortureWorld.h"
#include "tests/wifi/Silence.h"
#include "tests/wifi/platform/Resources.h"

namespace quorvel::torture {

namespace {

using scripted::Call;
using scripted::Platform;
using scripted::Resources;
using scripted::Silence;

Platform& platform() {
    return Platform::instance();
}

Figures count;

// Calls that cannot fail (a question's answer, a wait, the release of something).
bool canFail(const std::string& name) {
    static const std::set<std::string> never = {"Quorvel_IsContextSetMap",
                                                "wlcsm_get_systemUpSecs",
                                                "wlcsm_get_wlUpSecs",
                                                "sleep",
                                                "fclose",
                                                "pclose",
                                                "close"};
    return never.count(name) == 0;
}

// How one run differs from the success path.
struct Fault {
    std::string failing;  // the call that fails; empty for none
    std::string words;
    std::function<void()> arm = [] {};
};

// Features of the success path.
struct Success {
    Run run;
    std::string output;
    std::ptrdiff_t blocks = 0;  // that it leaves allocated
};

std::set<std::string> tortured;

// A host's own failures have codes of their own, which must come through.
bool hasHostsCode(const std::string& name) {
    static const std::set<std::string> hosts = {
        "QuorvelOsCreateMutex", "QuorvelOsMutexLock",    "QuorvelOsMutexUnlock",     "Quorvel_ContextInit",
        "QuorvelUtilGetCfg",    "QuorvelOsSpawnProcess", "QuorvelOsTerminateProcess"};
    return hosts.count(name) > 0;
}

void failAt(const std::string& name, std::uint32_t n) {
    if (hasHostsCode(name)) {
        platform().answerAt(name, n, kHostsCode);
    } else {
        platform().failAt(name, n);
    }
}

void failFrom(const std::string& name, std::uint32_t n) {
    if (hasHostsCode(name)) {
        platform().answerFrom(name, n, kHostsCode);
    } else {
        platform().failFrom(name, n);
    }
}

std::string outputOf(const Scenario& scenario) {
    return scenario.output == nullptr ? "" : scenario.output->bytes(0, scenario.output->size());
}

// Whether the output begins with the value: a text with its end, or a number of the output's width (of 8 bytes at
// most).
bool holds(const Scenario& scenario, const std::string& value) {
    if (scenario.outputKind == OutputKind::Text) {
        // A text that fills its place has no end.
        const std::string bytes = scenario.output->bytes(0, scenario.output->size());
        return bytes.substr(0, std::min(bytes.size(), std::strlen(bytes.c_str()))) == value;
    }
    const std::size_t width = std::min<std::size_t>(scenario.output->size(), sizeof(std::uint64_t));
    const std::uint64_t number = value.empty() ? 0 : std::stoull(value);
    std::uint64_t found = 0;
    std::memcpy(&found, scenario.output->get(), width);
    return found == number;
}

std::string wrongInOutput(const Scenario& scenario, const Success& success, const Aftermath& aftermath) {
    if (scenario.output == nullptr) {
        return "";
    }
    if (!scenario.output->intact()) {
        return "something was written outside the output";
    }
    // The last failure that had to do with the output decides.
    Output expected = Output::AsEver;
    std::string value;
    for (const Failure& failure : aftermath.failures) {
        if (failure.rule->output != Output::AsEver || failure.rule->ends) {
            expected = failure.rule->output;
            value = failure.rule->value;
        }
    }
    std::string untouched(scenario.output->size(), static_cast<char>(scripted::GuardedBlock::kFill));
    (void)untouched.replace(0, scenario.outputBegin.size(), scenario.outputBegin);
    switch (expected) {
        case Output::Untouched:
            return outputOf(scenario) == untouched ? "" : "the output was written, though there is nothing to write";
        case Output::AsEver:
            return outputOf(scenario) == success.output ? "" : "the output is not what it is on the success path";
        case Output::Value:
            return holds(scenario, value) ? "" : "the output is not \"" + value + "\"";
    }
    return "";
}

void lookAtLock(const Scenario& scenario, const Fault& fault) {
    const bool mayBeHeld = scenario.keepsLockWhenFailing && fault.failing == "wlcsm_mngr_save_nvram";
    EXPECT_EQ(platform().lockHeld(), mayBeHeld) << "the lock is left as it must be";
    EXPECT_TRUE(platform().lockMisuse().empty()) << platform().lockMisuse().front();
}

void lookAtConsequences(const Scenario& scenario, const Success& success, const Success& now) {
    const Expectation expectation = expect(scenario.name, success.run, now.run);
    EXPECT_EQ(expectation.missing, std::vector<std::string>{});
    if (!expectation.missing.empty()) {
        return;
    }
    EXPECT_EQ(now.run.result, expectation.result);
    EXPECT_EQ(wrongInLog(expectation, now.run), "");
    EXPECT_EQ(wrongInTrace(expectation, now.run), "");
    EXPECT_EQ(wrongInOutput(scenario, success, expectation.aftermath), "");
    EXPECT_EQ(scenario.check(expectation.aftermath), "");
    EXPECT_LE(now.blocks, success.blocks) << "memory is left allocated";
}

// Runs the scenario with the fault and looks at what it leaves.
Success run(const Scenario& scenario, const Fault& fault,
            const std::function<void(const Success& now)>& lookAtOutcome) {
    SCOPED_TRACE(scenario.name + ", " + fault.words);
    const Resources before;
    Success now;
    platform().reset();
    makeWorld(platform());
    if (scenario.output != nullptr) {
        *scenario.output = scripted::GuardedBlock(scenario.output->size());
        scenario.output->write(0, scenario.outputBegin);
    }
    platform().activate(true);
    std::size_t blocks = 0;
    {
        const Silence silence;
        scenario.prepare();
        platform().forget();
        // A rule that never comes to hold, so that allocations are written down.
        for (const char* allocation : {"malloc", "calloc", "realloc"}) {
            platform().failAt(allocation, UINT32_MAX);
        }
        fault.arm();
        blocks = platform().liveBlocks();
        now.run.result = scenario.act();
        now.blocks = static_cast<std::ptrdiff_t>(platform().liveBlocks()) - static_cast<std::ptrdiff_t>(blocks);
    }
    now.run.calls = platform().calls();
    now.run.logs = platform().logs();
    now.output = outputOf(scenario);
    lookAtLock(scenario, fault);
    // From here on, the model is read without faults.
    for (const Call& call : now.run.calls) {
        platform().succeed(call.name);
    }
    platform().forgetLockMisuse();
    lookAtOutcome(now);
    EXPECT_TRUE(platform().openStreams().empty()) << platform().openStreams().front() << " is left open";
    platform().activate(false);
    platform().endThreads();
    const Resources after = Resources::onceThreadsAreGone(before.threads);
    EXPECT_EQ(after.descriptors, before.descriptors) << "descriptors are left";
    EXPECT_EQ(after.threads, before.threads) << "threads are left";
    ++count.runs;
    return now;
}

void failAll(const std::string& prefix, const std::map<std::string, std::uint32_t>& soFar,
             const std::vector<Call>& calls) {
    for (const Call& call : calls) {
        if (call.name.rfind(prefix, 0) != 0 || !canFail(call.name)) {
            continue;
        }
        const auto made = soFar.find(call.name);
        failFrom(call.name, made == soFar.end() ? 1 : made->second + 1);
    }
}

}  // namespace

void runOnce(const Scenario& scenario) {
    ++count.scenarios;
    (void)run(scenario, {"", "as it is"}, [&scenario](const Success& now) {
        Aftermath aftermath;
        aftermath.result = now.run.result;
        EXPECT_EQ(scenario.check(aftermath), "");
    });
}

const Figures& figures() {
    return count;
}

const std::set<std::string>& torturedFunctions() {
    return tortured;
}

void torture(const Scenario& scenario) {
    ++count.scenarios;
    const Success good = run(scenario, {"", "on the success path"},
                             [&scenario](const Success& now) { lookAtConsequences(scenario, now, now); });
    const auto look = [&](const Success& now) { lookAtConsequences(scenario, good, now); };
    if (!scenario.resultIsNoCode) {
        ASSERT_EQ(good.run.result, 0U) << scenario.name << " does not succeed when nothing fails";
    }
    EXPECT_EQ(good.blocks, scenario.blocksLeft) << scenario.name << " leaves another number of heap blocks";
    tortured.insert(scenario.silentFunctions.begin(), scenario.silentFunctions.end());
    tortured.insert(scenario.name);
    for (const std::string& function : tracedFunctions(good.run)) {
        tortured.insert(function);
    }
    std::map<std::string, std::uint32_t> soFar;
    for (const Call& call : good.run.calls) {
        const std::map<std::string, std::uint32_t> before = soFar;
        const std::uint32_t n = ++soFar[call.name];
        if (!canFail(call.name)) {
            continue;
        }
        ++count.calls;
        const std::string words = call.text() + ", call " + std::to_string(n) + " of its name, ";
        (void)run(scenario, {call.name, words + "failing once", [&] { failAt(call.name, n); }}, look);
        if (scenario.askedForEver.count(call.name) == 0) {
            (void)run(scenario, {call.name, words + "failing from then on", [&] { failFrom(call.name, n); }}, look);
        }
        if (call.name.rfind("wlcsm_", 0) == 0) {
            (void)run(scenario,
                      {call.name, words + "the manager gone", [&] { failAll("wlcsm_", before, good.run.calls); }},
                      look);
        }
        if (testing::Test::HasFailure()) {
            return;  // one fault is enough to look at
        }
    }
}

}  // namespace quorvel::torture
