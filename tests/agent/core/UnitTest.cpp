// The parts of the core by themselves: values, paths, timers, the event loop.
#include <poll.h>
#include <unistd.h>

#include "agent/EventLoop.h"
#include "agent/Task.h"
#include "agent/Timers.h"
#include "agent/model/Values.h"
#include "agent/path/Path.h"
#include "tests/agent/core/AgentWorld.h"

namespace quorvel::agent_test {
namespace {

using namespace std::chrono_literals;

TEST(ValuesOf, TimesReadAndWriteAlike) {
    const auto time = parseDateTime("2026-01-31T12:00:00Z");
    ASSERT_TRUE(time);
    EXPECT_EQ(dateTimeText(*time), "2026-01-31T12:00:00Z");
    EXPECT_EQ(parseDateTime("2026-01-31T13:00:00+01:00"), time);
    EXPECT_EQ(parseDateTime("2026-01-31T12:00:00.123Z"), time);
    for (const char* const wrong : {"", "0001-01-01T00:00:00Z", "2026-13-31T12:00:00Z", "2026-01-31T25:00:00Z",
                                    "2026-01-31T12:00:00", "2026-01-31T12:00:00+1:00", "2026-01-31 12:00:00Z"}) {
        EXPECT_FALSE(parseDateTime(wrong)) << wrong;
    }
}

TEST(ValuesOf, ListsLoseBlanksAndKeepBrackets) {
    EXPECT_EQ(listItems(" a , b,,c "), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(listItems("T.[A==\"x,y\"].,U."), (std::vector<std::string>{"T.[A==\"x,y\"].", "U."}));
    EXPECT_TRUE(listItems("").empty());
}

TEST(ValuesOf, TypesAreCheckedAndNormalized) {
    const auto check = [](ValueType type, std::string value, std::uint32_t least = 0, std::uint32_t most = 0) {
        Parameter parameter{"P", type};
        parameter.least = least;
        parameter.most = most;
        const Problem problem = normalize(parameter, value);
        return problem ? std::to_string(problem.code) : value;
    };
    EXPECT_EQ(check(ValueType::kBoolean, "1"), "true");
    EXPECT_EQ(check(ValueType::kBoolean, "TRUE"), "7011");
    EXPECT_EQ(check(ValueType::kUnsignedInt, "+7"), "7");
    EXPECT_EQ(check(ValueType::kUnsignedInt, "4294967295"), "4294967295");
    EXPECT_EQ(check(ValueType::kUnsignedInt, "4294967296"), "7012");
    EXPECT_EQ(check(ValueType::kUnsignedInt, "7x"), "7011");
    EXPECT_EQ(check(ValueType::kUnsignedInt, "9", 1, 8), "7012");
    EXPECT_EQ(check(ValueType::kInt, "-2147483648"), "-2147483648");
    EXPECT_EQ(check(ValueType::kInt, "2147483648"), "7012");
    EXPECT_EQ(check(ValueType::kString, "abc", 0, 2), "7012");
    EXPECT_EQ(check(ValueType::kString, "", 1, 2), "7012");
    EXPECT_EQ(check(ValueType::kDateTime, "soon"), "7011");
    EXPECT_EQ(check(ValueType::kDateTime, "0001-01-01T00:00:00Z"), "0001-01-01T00:00:00Z");
}

TEST(ValuesOf, TimesAreComparedAsTimes) {
    const Parameter parameter{"T", ValueType::kDateTime};
    const auto holds = [&parameter](const std::string& expression, const char* value) {
        const Path path = parsePath("Device.X.[T" + expression + "].");
        const Condition& condition = path.segments.at(1).conditions.at(0);
        const std::string wrong = checkCondition(condition, parameter);
        return wrong.empty() ? (meets(condition, parameter, value) ? "yes" : "no") : "wrong";
    };
    EXPECT_STREQ(holds("<2026-01-31T12:00:00Z", "2026-01-31T11:59:59Z"), "yes");
    EXPECT_STREQ(holds("==2026-01-31T12:00:00Z", "2026-01-31T13:00:00+01:00"), "yes");
    EXPECT_STREQ(holds("==0001-01-01T00:00:00Z", "0001-01-01T00:00:00Z"), "yes");
    EXPECT_STREQ(holds("<2026-01-31T12:00:00Z", "0001-01-01T00:00:00Z"), "no");
    EXPECT_STREQ(holds("<0001-01-01T00:00:00Z", "2026-01-31T12:00:00Z"), "wrong");
    EXPECT_STREQ(holds("<tomorrow", "2026-01-31T12:00:00Z"), "wrong");
    EXPECT_STREQ(holds("~=2026-01-31T12:00:00Z", "2026-01-31T12:00:00Z"), "wrong");
}

TEST(PathsOf, EscapesInConstantsAreDecoded) {
    const Path path = parsePath("Device.T.[A==\"100%25 %22x%22.y\"&&B!=7].C");
    ASSERT_EQ(path.wrong, "");
    EXPECT_EQ(path.segments.at(1).conditions.at(0).operand, "100% \"x\".y");
    EXPECT_EQ(path.segments.at(1).conditions.at(1).operand, "7");
    EXPECT_EQ(path.leaf, "C");
    EXPECT_TRUE(path.searches());
}

TEST(PathsOf, WrongFormsAreNamed) {
    for (const char* const text :
         {"Device.T.[A].B", "Device.T.[A==].B", "Device.T.[A==1 B==2].C", "Device.T.0.B", "Device.T.99999999999.B",
          "Device.Ref#0+.B", "Device.Ref#x+.B", "Device.+.B", "Device.T.[A==1", "Device.3x.B", "Device.A!b",
          "Device.1()", "Device.Ref+", "Device.T.[A==a\"b].C"}) {
        EXPECT_NE(parsePath(text).wrong, "") << text;
    }
    EXPECT_EQ(parsePath("Device").wrong, "");
    EXPECT_EQ(parsePath("Device.T.3").kind, Path::Kind::kObject);
    EXPECT_EQ(parsePath("Device.T.*").kind, Path::Kind::kObject);
}

TEST(PathsOf, RowsAreOrderedByNumber) {
    const PathLess less;
    EXPECT_TRUE(less("D.T.2.", "D.T.10."));
    EXPECT_FALSE(less("D.T.10.", "D.T.2."));
    EXPECT_TRUE(less("D.T.", "D.T.1."));
    EXPECT_FALSE(less("D.T.1.", "D.T.1."));
    EXPECT_TRUE(less("D.T.1.A.", "D.T.12."));
    EXPECT_TRUE(less("D.A.", "D.B."));
}

TEST(TimersOf, FireInTheirOrderAndOnce) {
    Timers timers;
    std::string fired;
    const BoardInstant start{};
    (void)timers.at(start + 2s, [&] { fired += 'b'; });
    (void)timers.at(start + 1s, [&] { fired += 'a'; });
    const Timers::Id gone = timers.at(start + 1s, [&] { fired += 'x'; });
    timers.cancel(gone);
    timers.cancel(gone);
    EXPECT_EQ(timers.next(), start + 1s);
    while (auto due = timers.take(start + 3s))
        due->second();
    EXPECT_EQ(fired, "ab");
    EXPECT_FALSE(timers.next());
}

TEST(TheEventLoop, ServesDescriptorsTimersAndTasks) {
    EventLoop loop;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::string seen;
    loop.watch(ends[0], POLLIN, [&](short) {
        char byte = 0;
        EXPECT_EQ(read(ends[0], &byte, 1), 1);
        seen += byte;
    });
    EXPECT_EQ(write(ends[1], "p", 1), 1);
    EXPECT_TRUE(loop.once(1s));
    const auto late = loop.after(1h, [&] { seen += 'x'; });
    (void)loop.after(0ms, [&] { seen += 't'; });
    loop.post([&] { seen += 'q'; });
    EXPECT_TRUE(loop.once(1s));
    loop.cancel(late);
    loop.forget(ends[0]);
    EXPECT_EQ(write(ends[1], "z", 1), 1);
    EXPECT_FALSE(loop.once(0ms));
    (void)loop.after(0ms, [&] { loop.stop(); });
    loop.run();
    EXPECT_EQ(seen, "ptq");
    close(ends[0]);
    close(ends[1]);
}

Task<int> endsAtOnce() {
    co_return 1;
}

Task<void> addUp(int count, int& sum) {
    for (int n = 0; n < count; ++n)
        sum += co_await endsAtOnce();
}

TEST(TasksOf, AMillionThatEndAtOnceNeedNoStack) {
    constexpr int kMany = 1000000;
    int sum = 0;
    TaskGroup tasks;
    tasks.run(addUp(kMany, sum));
    EXPECT_EQ(sum, kMany);
}

}  // namespace
}  // namespace quorvel::agent_test
