#include "Torture.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <vector>

#include "TortureWorld.h"

namespace quorvel::torture {

namespace {

using scripted::Call;
using scripted::Platform;

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

std::size_t entriesOf(const char* folder) {
    DIR* directory = opendir(folder);
    if (directory == nullptr) {
        return 0;
    }
    std::size_t entries = 0;
    while (readdir(directory) != nullptr) {
        ++entries;
    }
    (void)closedir(directory);
    return entries;
}

// What a run must leave as it found it.
struct Resources {
    std::size_t descriptors = entriesOf("/proc/self/fd");
    std::size_t threads = entriesOf("/proc/self/task");

    friend bool operator==(const Resources&, const Resources&) = default;
};

// A thread that has been joined may still be listed for a moment.
Resources resourcesOnceThreadsAreGone(std::size_t threads) {
    constexpr unsigned kLooks = 100000;
    Resources now;
    for (unsigned look = 0; look < kLooks && now.threads > threads; ++look) {
        (void)sched_yield();
        now.threads = entriesOf("/proc/self/task");
    }
    return now;
}

// The library tells people things on both standard streams; nobody reads them here.
class Silence {
  public:
    Silence() : nowhere_(open("/dev/null", O_WRONLY | O_CLOEXEC)) {
        (void)std::fflush(stdout);
        for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
            saved_[stream] = dup(stream);
            (void)dup2(nowhere_, stream);
        }
    }
    ~Silence() {
        (void)std::fflush(stdout);
        for (const auto& [stream, saved] : saved_) {
            (void)dup2(saved, stream);
            (void)close(saved);
        }
        (void)close(nowhere_);
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

  private:
    int nowhere_;
    std::map<int, int> saved_;
};

// How one run differs from the success path.
struct Fault {
    std::string failing;  // the call that fails; empty for none
    std::string words;
    std::function<void()> arm = [] {};
};

struct Outcome {
    std::uint32_t result = 0;
    std::vector<Call> calls;
};

void lookAtLock(const Scenario& scenario, const Fault& fault) {
    const bool mayBeHeld = scenario.keepsLockWhenFailing && fault.failing == "wlcsm_mngr_save_nvram";
    EXPECT_EQ(platform().lockHeld(), mayBeHeld) << "the lock is left as it must be";
    EXPECT_TRUE(platform().lockMisuse().empty()) << platform().lockMisuse().front();
}

void lookAtResult(const Scenario& scenario, std::uint32_t result) {
    if (scenario.resultIsNoCode) {
        return;
    }
    EXPECT_EQ(scenario.codes.count(result), 1U) << "result " << result << " is none that this may end with";
    EXPECT_TRUE(result == 0 || scenario.tellsNobody || !platform().logTexts(0).empty())
        << "a failure is told in the log";
}

Outcome run(const Scenario& scenario, const Fault& fault) {
    SCOPED_TRACE(scenario.name + ", " + fault.words);
    const Resources before;
    Outcome outcome;
    platform().reset();
    makeWorld(platform());
    platform().activate(true);
    {
        const Silence silence;
        scenario.prepare();
        platform().forget();
        fault.arm();
        outcome.result = scenario.act();
    }
    outcome.calls = platform().calls();
    lookAtLock(scenario, fault);
    lookAtResult(scenario, outcome.result);
    platform().forgetLockMisuse();
    EXPECT_EQ(scenario.check(outcome.result, fault.failing), "");
    EXPECT_TRUE(platform().openStreams().empty()) << platform().openStreams().front() << " is left open";
    platform().activate(false);
    platform().endThreads();
    const Resources after = resourcesOnceThreadsAreGone(before.threads);
    EXPECT_EQ(after.descriptors, before.descriptors) << "descriptors are left";
    EXPECT_EQ(after.threads, before.threads) << "threads are left";
    ++count.runs;
    return outcome;
}

void failAll(const std::string& prefix, const std::map<std::string, std::uint32_t>& soFar,
             const std::vector<Call>& calls) {
    for (const Call& call : calls) {
        if (call.name.rfind(prefix, 0) != 0 || !canFail(call.name)) {
            continue;
        }
        const auto made = soFar.find(call.name);
        platform().failFrom(call.name, made == soFar.end() ? 1 : made->second + 1);
    }
}

}  // namespace

void runOnce(const Scenario& scenario) {
    ++count.scenarios;
    (void)run(scenario, {"", "on the success path"});
}

const Figures& figures() {
    return count;
}

void torture(const Scenario& scenario) {
    ++count.scenarios;
    const Outcome good = run(scenario, {"", "on the success path"});
    if (!scenario.resultIsNoCode) {
        ASSERT_EQ(good.result, 0U) << scenario.name << " does not succeed when nothing fails";
    }
    std::map<std::string, std::uint32_t> soFar;
    for (const Call& call : good.calls) {
        const std::map<std::string, std::uint32_t> before = soFar;
        const std::uint32_t n = ++soFar[call.name];
        if (!canFail(call.name)) {
            continue;
        }
        ++count.calls;
        const std::string words = call.text() + ", call " + std::to_string(n) + " of its name, ";
        (void)run(scenario, {call.name, words + "failing once", [&] { platform().failAt(call.name, n); }});
        if (scenario.askedForEver.count(call.name) == 0) {
            (void)run(scenario,
                      {call.name, words + "failing from then on", [&] { platform().failFrom(call.name, n); }});
        }
        if (call.name.rfind("wlcsm_", 0) == 0) {
            (void)run(scenario,
                      {call.name, words + "the manager gone", [&] { failAll("wlcsm_", before, good.calls); }});
        }
        if (testing::Test::HasFailure()) {
            return;  // one fault is enough to look at
        }
    }
    for (const char* name : {"malloc", "calloc", "realloc"}) {
        (void)run(scenario, {name, std::string(name) + " failing", [&] { platform().fail(name); }});
    }
}

}  // namespace quorvel::torture
