#include "common/Durations.h"

#include <gtest/gtest.h>

#include <numeric>

namespace quorvel::common {
namespace {

using namespace std::chrono_literals;

TEST(Durations, FallIntoTheClassWhoseBoundIncludesThem) {
    Durations durations;
    for (const Durations::Clock::duration each :
         {Durations::Clock::duration(0us), Durations::Clock::duration(10us), Durations::Clock::duration(10001ns),
          Durations::Clock::duration(1s), Durations::Clock::duration(10s), Durations::Clock::duration(11s)})
        durations.add(each);
    EXPECT_EQ(durations.classes(), (Durations::Classes{2, 1, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1}));
    EXPECT_NEAR(durations.seconds(), 22.000020001, 1e-9);
}

TEST(Durations, AreCountedByAStopwatchThatEnds) {
    Durations durations;
    {
        const Stopwatch watch(durations);
        EXPECT_EQ(durations.classes(), Durations::Classes{});
    }
    const Durations::Classes classes = durations.classes();
    EXPECT_EQ(std::accumulate(classes.begin(), classes.end(), std::uint64_t{0}), 1U);
}

}  // namespace
}  // namespace quorvel::common
