// Getters, and the lock that every one of them takes.
#include "selftest/Calls.h"
#include "selftest/Checks.h"

namespace quorvel::selftest {
namespace {

constexpr std::uint32_t kCreateFails = 55;
constexpr std::uint32_t kLockFails = 77;
constexpr std::uint32_t kUnlockFails = 78;
constexpr const char* kStation = "02:00:00:00:00:01";
constexpr std::size_t kBufferRoom = 8192;

// A getter and a place for what it reads.
struct Reading {
    const Parameter& parameter;
    Caller get;
    alignas(8) std::array<char, kBufferRoom> out{};

    Reading(const Library& library, const Parameter& of) : parameter(of), get(library, of.getter()) {}

    std::uint32_t into(Word out_, std::uint32_t length, std::uint32_t instance) const {
        if (parameter.perStation()) return get(instance, wordOf(kStation), out_);
        if (parameter.text()) return get.at(parameter.depth, instance, out_, length);
        return get.at(parameter.depth, instance, out_);
    }
    // As the rules want it.
    [[nodiscard]] std::uint32_t read(std::uint32_t instance = 1) const {
        return into(wordOf(out.data()), parameter.row->type.capacity, instance);
    }
};

template <typename Check>
void forEach(const Library& library, Report& report, const char* rule, const Check& check) {
    report.begin(rule);
    for (const Parameter& parameter : parameters()) {
        if (!parameter.readable()) continue;
        const Reading reading(library, parameter);
        if (reading.get.there()) check(reading);
    }
}

}  // namespace

void checkLockCreation(const Library& library, Report& report) {
    report.begin("the lock: made by the first call, again until it succeeds");
    const Caller get(library, "WiFiRadioEnableGet");
    if (!get.there()) return;
    std::uint8_t out = 0;
    platform().createResult = kCreateFails;
    for (const char* time : {"first", "second"}) {
        report.expect(get.name() + " when the mutex cannot be made, " + time + " time", get(1, wordOf(&out)),
                      kCreateFails);
        report.check(platform().creates == 1 && platform().lockAttempts == 0,
                     get.name() + ", " + time + " time: expected one attempt to make the mutex and none to lock it");
    }
    platform().createResult = 0;
    (void)get(1, wordOf(&out));
    report.check(platform().creates == 1 && platform().locks == 1, get.name() + " does not make the mutex and lock it");
    (void)get(1, wordOf(&out));
    report.check(platform().creates == 0 && platform().locks == 1, get.name() + " makes the mutex a second time");
}

void checkGetters(const Library& library, Report& report) {
    forEach(library, report, "getters: a null output is refused without the lock", [&](const Reading& reading) {
        report.expect(reading.get.name() + " without an output", reading.into(0, 65536, 1), 6);
        report.check(platform().lockAttempts == 0, reading.get.name() + " without an output takes the lock");
        if (!reading.parameter.perStation()) return;
        report.expect(reading.get.name() + " without a station", reading.get(1, 0, wordOf(reading.out.data())), 6);
    });
    platform().lockResult = kLockFails;
    forEach(
        library, report, "texts: buffers from the minimum on are taken, no shorter ones", [&](const Reading& reading) {
            if (!reading.parameter.text()) return;
            const std::uint32_t minimum = reading.parameter.row->type.capacity;
            const Word out = wordOf(reading.out.data());
            const std::string of = reading.get.name() + " with a buffer of ";
            for (const std::uint32_t length : {0U, minimum - 1}) {
                report.expect(of + std::to_string(length), reading.into(out, length, 1), 8);
                report.check(platform().lockAttempts == 0, of + std::to_string(length) + " takes the lock");
            }
            (void)reading.into(out, minimum, 1);
            report.check(platform().lockAttempts == 1, of + std::to_string(minimum) + " does not proceed to the lock");
        });
    forEach(library, report, "getters: a failing lock's result is returned, nothing is read",
            [&](const Reading& reading) {
                report.expect(reading.get.name() + " when the lock fails", reading.read(), kLockFails);
                report.check(platform().managerCalls == 0 && platform().unlocks == 0,
                             reading.get.name() + " goes on although the lock failed");
            });
    platform().lockResult = 0;
    forEach(library, report, "getters: the lock is free after every call", [&](const Reading& reading) {
        for (const bool answers : {false, true}) {
            platform().managerAnswers = answers;
            for (const std::uint32_t instance : {0U, 1U, 24U, 0xFFFFFFFFU}) {
                (void)reading.read(instance);
                report.check(platform().locks == 1 && lockBalanced(),
                             reading.get.name() + " of instance " + std::to_string(instance) + ": locks " +
                                 std::to_string(platform().locks) + " times, unlocks " +
                                 std::to_string(platform().unlocks) + " times, expected once each");
            }
        }
        platform().managerAnswers = false;
    });
    forEach(library, report, "getters: a failing unlock's result follows success", [&](const Reading& reading) {
        platform().managerAnswers = true;
        const std::uint32_t before = reading.read();
        platform().unlockResult = kUnlockFails;
        report.expect(reading.get.name() + " when the unlock fails", reading.read(),
                      before == 0 ? kUnlockFails : before);
        platform().unlockResult = 0;
        platform().managerAnswers = false;
    });
}

}  // namespace quorvel::selftest
