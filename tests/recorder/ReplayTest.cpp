// Recordings of a small host, replayed on the library they were made with and on faulty ones.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <variant>

#include "recorder/desk/Recording.h"
#include "tests/recorder/RecordBuilder.h"
#include "tests/recorder/Recorded.h"

namespace quorvel::recorder_test {
namespace {

using recorder::Recording;
using recorder::RecordKind;

class Replay : public testing::Test {
  protected:
    static Recording read(const std::string& path) {
        auto found = recorder::readRecordingFile(path);
        EXPECT_TRUE(std::holds_alternative<Recording>(found));
        return std::holds_alternative<Recording>(found) ? std::get<Recording>(std::move(found)) : Recording{};
    }

    TestFolder folder_;
    std::string file_ = folder_.path("host.rec");
};

TEST_F(Replay, OfTheSameLibraryHasNoDifference) {
    const RunResult host = recordHost(RECORDED_LIBRARY, file_);
    ASSERT_EQ(host.status, 0) << host.output;
    EXPECT_NE(host.output.find("1 station events"), std::string::npos) << host.output;
    const Recording recording = read(file_);
    EXPECT_TRUE(recording.ended);
    EXPECT_TRUE(recording.replayable);
    EXPECT_EQ(recording.wordSize, sizeof(void*));
    size_t calls = 0;
    for (const auto& record : recording.records)
        calls += record.kind == RecordKind::kCall ? 1 : 0;
    EXPECT_GT(calls, 200U);
    const RunResult replayed = replay(file_, RECORDED_LIBRARY);
    EXPECT_EQ(replayed.status, 0) << replayed.output;
    EXPECT_EQ(replayed.output, std::to_string(calls) + " calls replayed, 0 differences\n");
}

TEST_F(Replay, OfManyThreadsHasNoDifference) {
    const RunResult host = recordHost(RECORDED_LIBRARY, file_, "threads");
    ASSERT_EQ(host.status, 0) << host.output;
    const RunResult replayed = replay(file_, RECORDED_LIBRARY);
    EXPECT_EQ(replayed.status, 0) << replayed.output;
    EXPECT_NE(replayed.output.find(" 0 differences"), std::string::npos) << replayed.output;
}

TEST_F(Replay, OfAHostThatLeavesBehindTheLastCallIsWhole) {
    ASSERT_EQ(recordHost(RECORDED_LIBRARY, file_, "leaves").status, 0);
    EXPECT_TRUE(read(file_).ended);
    const RunResult replayed = replay(file_, RECORDED_LIBRARY);
    EXPECT_EQ(replayed.status, 0) << replayed.output;
}

TEST_F(Replay, TellsADifferenceToPrograms) {
    ASSERT_EQ(recordHost(RECORDED_LIBRARY, file_).status, 0);
    EXPECT_EQ(replay(file_, RECORDED_LIBRARY, "--plain").output, "");
    EXPECT_NE(replay(file_, RECORDED_LIBRARY, "--json").output.find("\"differing\": 0"), std::string::npos);
    (void)setenv("QUORVEL_FAULT", "output", 1);
    const RunResult replayed = replay(file_, FAULTY_LIBRARY, "--plain");
    (void)unsetenv("QUORVEL_FAULT");
    EXPECT_EQ(replayed.status, 1);
    EXPECT_NE(replayed.output.find("WiFiAccessPointStatsGet\tthe recording's memory"), std::string::npos)
        << replayed.output;
}

TEST_F(Replay, StopsBeforeACall) {
    ASSERT_EQ(recordHost(RECORDED_LIBRARY, file_).status, 0);
    const RunResult replayed = replay(file_, RECORDED_LIBRARY, "--until 3");
    EXPECT_EQ(replayed.status, 0);
    EXPECT_NE(replayed.output.find("2 calls replayed"), std::string::npos) << replayed.output;
    EXPECT_NE(replayed.output.find("stopped before call 3, "), std::string::npos) << replayed.output;
}

// Each kind of fault is in a library of its own, named by the environment.
struct Fault {
    const char* name;
    const char* call;  // where it is caught first
    const char* text;  // what the report says
};

class ReplayOfFault : public Replay, public testing::WithParamInterface<Fault> {};

TEST_P(ReplayOfFault, IsCaughtAtItsCall) {
    ASSERT_EQ(recordHost(RECORDED_LIBRARY, file_).status, 0);
    const RunResult whole = replay(file_, FAULTY_LIBRARY);
    ASSERT_EQ(whole.status, 0) << whole.output;
    (void)setenv("QUORVEL_FAULT", GetParam().name, 1);
    const RunResult replayed = replay(file_, FAULTY_LIBRARY);
    (void)unsetenv("QUORVEL_FAULT");
    EXPECT_EQ(replayed.status, 1);
    const std::string first = replayed.output.substr(0, replayed.output.find('\n'));
    EXPECT_NE(first.find(GetParam().call), std::string::npos) << replayed.output;
    EXPECT_NE(first.find(GetParam().text), std::string::npos) << replayed.output;
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ReplayOfFault,
    testing::Values(Fault{"argument", "WiFiRadioApplyContext", "the recording has wlcsm_mngr_set("},
                    Fault{"missing", "WiFiRadioApplyContext", "the recording has wlcsm_mngr_set("},
                    Fault{"extra", "WiFiRadioApplyContext", "the library does wlcsm_mngr_set("},
                    Fault{"order", "WiFiRadioApplyContext", "the recording has wlcsm_mngr_set("},
                    Fault{"result", "WiFiRadioCheckContextNodeSet", "the recording's result is 1, the library's is 0"},
                    Fault{"output", "WiFiAccessPointStatsGet", "the library left"},
                    Fault{"log", "WiFiRadioApplyContext", "the recording has log"}),
    [](const auto& fault) { return std::string(fault.param.name); });

TEST_F(Replay, OfAContinuedRecordingIsRefused) {
    store(file_, magic() + startRecord(0));
    const RunResult replayed = replay(file_, RECORDED_LIBRARY);
    EXPECT_EQ(replayed.status, 1);
    EXPECT_NE(replayed.output.find("continues an earlier recording"), std::string::npos) << replayed.output;
}

TEST_F(Replay, EndsWhereRecordsAreMissing) {
    store(file_, magic() + startRecord() + nameRecord(1, "WiFiSystemReset") +
                     RecordBuilder(RecordKind::kCall, 1).str() +
                     RecordBuilder(RecordKind::kGap).number(3).number(1).str() +
                     RecordBuilder(RecordKind::kReturn, 1).number(0, recorder::ValueRole::kResult).str());
    const RunResult replayed = replay(file_, RECORDED_LIBRARY);
    EXPECT_EQ(replayed.status, 0);
    EXPECT_NE(replayed.output.find("records are missing in or before call 1, WiFiSystemReset"), std::string::npos)
        << replayed.output;
}

TEST_F(Replay, NamesWhatIsWrongWithAFile) {
    store(file_, "QVLREC01 and then nothing that fits");
    const RunResult replayed = replay(file_, RECORDED_LIBRARY);
    EXPECT_EQ(replayed.status, 1);
    EXPECT_NE(replayed.output.find("host.rec, byte 8: the record's length is"), std::string::npos) << replayed.output;
}

TEST_F(Replay, HoldsNoSecretOfTheSession) {
    ASSERT_EQ(recordHost(RECORDED_LIBRARY, file_).status, 0);
    const std::string bytes = contents(file_);
    for (const char* const secret :
         {"quorvel-home-passphrase", "12345670", "radius-secret-text", "Lighthouse 7", "00:1A:2B:3C:4D:5E",
          "another-passphrase", "another-radius-secret", "98765432", "\x1a\x2b\x3c\x4d\x5e"})
        EXPECT_EQ(bytes.find(secret), std::string::npos) << secret;
}

TEST_F(Replay, OfARecordingThatKeepsAddressesFindsThem) {
    ASSERT_EQ(recordHost(RECORDED_LIBRARY, file_, "", "QUORVEL_RECORDER_KEEP=macs,ssids").status, 0);
    const std::string bytes = contents(file_);
    EXPECT_NE(bytes.find("00:1A:2B:3C:4D:5E"), std::string::npos);
    EXPECT_NE(bytes.find("Lighthouse 7"), std::string::npos);
    EXPECT_EQ(bytes.find("quorvel-home-passphrase"), std::string::npos);
    EXPECT_EQ(replay(file_, RECORDED_LIBRARY).status, 0);
}

TEST_F(Replay, NeedsARecordingOfItsOwnUserAlone) {
    ASSERT_EQ(recordHost(RECORDED_LIBRARY, file_).status, 0);
    struct stat found {};
    ASSERT_EQ(stat(file_.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0600U);
}

TEST_F(Replay, OfARecordingWritesThroughNoLink) {
    const std::string target = folder_.path("target");
    store(target, "untouched");
    ASSERT_EQ(symlink(target.c_str(), file_.c_str()), 0);
    const RunResult host = recordHost(RECORDED_LIBRARY, file_);
    EXPECT_EQ(host.status, 0);
    EXPECT_NE(host.output.find("is not a file: a recording is never written through a link"), std::string::npos)
        << host.output;
    EXPECT_NE(host.output.find("1 station events"), std::string::npos) << host.output;
    EXPECT_EQ(contents(target), "untouched");
}

TEST_F(Replay, KeepsAnOlderRecording) {
    store(file_, "older");
    ASSERT_EQ(recordHost(RECORDED_LIBRARY, file_).status, 0);
    EXPECT_EQ(contents(file_ + ".1"), "older");
}

TEST_F(Replay, CanBeginInTheFirstFileOfARotation) {
    ASSERT_EQ(recordHost(RECORDED_LIBRARY, file_, "", "QUORVEL_RECORDER_LIMIT=65536").status, 0);
    const Recording last = read(file_);
    EXPECT_FALSE(last.replayable);
    EXPECT_TRUE(last.ended);
    EXPECT_TRUE(read(file_ + ".1").ended);
}

TEST_F(Replay, IsNotNeededForTheHostToGoOn) {
    const RunResult host = recordHost("/nonexistent/library.so", file_);
    EXPECT_NE(host.output.find("cannot load the recorded library: /nonexistent/library.so"), std::string::npos)
        << host.output;
    const RunResult wrong = recordHost(RECORDED_LIBRARY, file_, "", "QUORVEL_RECORDER_LIMIT=12");
    EXPECT_NE(wrong.output.find("QUORVEL_RECORDER_LIMIT is \"12\": it must be 0 for no limit"), std::string::npos)
        << wrong.output;
}

}  // namespace
}  // namespace quorvel::recorder_test
