#include <gtest/gtest.h>
#include <quorvel.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "gateway/framework/HostControl.h"
#include "tests/gateway/framework/ScratchFolder.h"

namespace {

struct Line {
    std::uint32_t level;
    std::string text;
};

class HostLog : public testing::Test {
  protected:
    void SetUp() override {
        QuorvelHost_SetLogSink(
            [](std::uint32_t level, const char* line, void* user) {
                static_cast<std::vector<Line>*>(user)->push_back({level, line});
            },
            &lines_);
        QuorvelHost_SetLogLevel(3);
        QuorvelHost_ClearLastError();
    }
    void TearDown() override {
        QuorvelHost_SetLogSink(nullptr, nullptr);
        QuorvelHost_SetLogLevel(0);
        unsetenv("QUORVEL_LOG_FILE");
    }

    std::vector<Line> lines_;
};

TEST_F(HostLog, WritesLevelPlaceAndText) {
    Quorvel_LogPrint(1, "wifi/QuorvelWiFiRadio", "WiFiRadioChannelGet", 77, "%s %d", "Enter", 5);
    ASSERT_EQ(lines_.size(), 1U);
    EXPECT_EQ(lines_[0].level, 1U);
    EXPECT_NE(lines_[0].text.find("] warning wifi/QuorvelWiFiRadio:77 WiFiRadioChannelGet: Enter 5\n"),
              std::string::npos)
        << lines_[0].text;
}

TEST_F(HostLog, EndsEveryLineWithOneNewline) {
    Quorvel_LogPrint(0, "f", "g", 1, "Could not set priority on wler_thread0.\n");
    Quorvel_LogPrint(0, "f", "g", 1, "text\n\n");
    ASSERT_EQ(lines_.size(), 2U);
    EXPECT_TRUE(lines_[0].text.ends_with("wler_thread0.\n"));
    EXPECT_TRUE(lines_[1].text.ends_with("g: text\n"));
}

TEST_F(HostLog, LetsThroughWhatTheLevelAllows) {
    for (std::uint32_t level = 0; level <= 3; ++level) {
        QuorvelHost_SetLogLevel(level);
        lines_.clear();
        for (std::uint32_t each = 0; each <= 3; ++each)
            Quorvel_LogPrint(each, "f", "g", 1, "x");
        EXPECT_EQ(lines_.size(), level + 1) << level;
    }
}

TEST_F(HostLog, KeepsTheLastErrorOfEachThread) {
    Quorvel_LogPrint(0, "f", "g", 1, "mine %d\n", 1);
    Quorvel_LogPrint(1, "f", "g", 1, "only a warning");
    std::string other = "?";
    std::thread([&other] {
        other = QuorvelHost_LastError();
        Quorvel_LogPrint(0, "f", "g", 1, "theirs");
    }).join();
    EXPECT_EQ(other, "");
    EXPECT_STREQ(QuorvelHost_LastError(), "mine 1");
    QuorvelHost_ClearLastError();
    EXPECT_STREQ(QuorvelHost_LastError(), "");
}

TEST_F(HostLog, BoundsAVeryLongText) {
    const std::string text(100000, 'x');
    Quorvel_LogPrint(0, "f", "g", 1, "%s", text.c_str());
    ASSERT_EQ(lines_.size(), 1U);
    EXPECT_LT(lines_[0].text.size(), 5000U);
    EXPECT_TRUE(lines_[0].text.ends_with("x\n"));
}

TEST_F(HostLog, LeavesErrnoAlone) {
    errno = EXDEV;
    Quorvel_LogPrint(0, "f", "g", 1, "%s", "x");
    EXPECT_EQ(errno, EXDEV);
}

TEST_F(HostLog, ToleratesMissingTexts) {
    const char* none = nullptr;
    Quorvel_LogPrint(0, none, none, 1, "x");
    ASSERT_EQ(lines_.size(), 1U);
    EXPECT_NE(lines_[0].text.find("error ?:1 ?: x"), std::string::npos);
}

TEST_F(HostLog, AppendsToTheFileOfTheEnvironment) {
    const ScratchFolder folder;
    setenv("QUORVEL_LOG_FILE", folder.write("log", "before\n").c_str(), 1);
    QuorvelHost_SetLogSink(nullptr, nullptr);
    Quorvel_LogPrint(2, "f", "g", 1, "first");
    Quorvel_LogPrint(3, "f", "g", 1, "second");
    const std::string text = folder.read("log");
    EXPECT_TRUE(text.starts_with("before\n["));
    EXPECT_NE(text.find("notice f:1 g: first\n"), std::string::npos);
    EXPECT_TRUE(text.ends_with("trace f:1 g: second\n"));
}

TEST_F(HostLog, GoesToStandardErrorByDefault) {
    unsetenv("QUORVEL_LOG_FILE");
    QuorvelHost_SetLogSink(nullptr, nullptr);
    testing::internal::CaptureStderr();
    Quorvel_LogPrint(0, "f", "g", 1, "visible");
    EXPECT_TRUE(testing::internal::GetCapturedStderr().ends_with("error f:1 g: visible\n"));
}

TEST_F(HostLog, GoesNowhereWhenTheEnvironmentSaysSo) {
    setenv("QUORVEL_LOG_FILE", "", 1);
    QuorvelHost_SetLogSink(nullptr, nullptr);
    testing::internal::CaptureStderr();
    Quorvel_LogPrint(0, "f", "g", 1, "kept");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_STREQ(QuorvelHost_LastError(), "kept");
}

TEST_F(HostLog, TakesLinesFromManyThreadsWhole) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([number] {
            for (int each = 0; each < 200; ++each)
                Quorvel_LogPrint(2, "f", "g", 1, "thread %d line %d", number, each);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(lines_.size(), 800U);
    EXPECT_TRUE(std::ranges::all_of(lines_, [](const Line& line) { return line.text.ends_with('\n'); }));
}

}  // namespace
