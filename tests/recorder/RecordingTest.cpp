#include "recorder/desk/Recording.h"

#include <gtest/gtest.h>

#include "tests/recorder/RecordBuilder.h"

namespace quorvel::recorder_test {
namespace {

using recorder::Recording;
using recorder::RecordingError;
using recorder::RecordKind;
using recorder::ValueRole;

Recording good(const std::string& bytes) {
    auto read = recorder::readRecording(bytes);
    if (const auto* const error = std::get_if<RecordingError>(&read)) {
        ADD_FAILURE() << error->position << ": " << error->reason;
        return {};
    }
    return std::get<Recording>(std::move(read));
}

RecordingError bad(const std::string& bytes) {
    auto read = recorder::readRecording(bytes);
    const auto* const error = std::get_if<RecordingError>(&read);
    if (error != nullptr) return *error;
    ADD_FAILURE() << "the bytes were taken for a recording";
    return {};
}

std::string small() {
    return magic() + startRecord() + nameRecord(7, "WiFiLock") + RecordBuilder(RecordKind::kCall, 7).at(10).str() +
           RecordBuilder(RecordKind::kReturn, 7).at(10, 500).number(0, ValueRole::kResult).str();
}

TEST(Recordings, AreReadRecordByRecord) {
    const Recording recording = good(small() + RecordBuilder(RecordKind::kEnd).str());
    EXPECT_EQ(recording.wordSize, 4U);
    EXPECT_TRUE(recording.replayable);
    EXPECT_FALSE(recording.macsKept);
    EXPECT_FALSE(recording.ssidsKept);
    EXPECT_EQ(recording.wallSeconds, 1'700'000'000U);
    EXPECT_EQ(recording.library, "libquorvel_wifi.so");
    EXPECT_TRUE(recording.ended);
    ASSERT_EQ(recording.records.size(), 2U);
    EXPECT_EQ(recording.records[0].function, "WiFiLock");
    EXPECT_EQ(recording.records[0].nanoseconds, 0U);
    EXPECT_EQ(recording.records[1].kind, RecordKind::kReturn);
    EXPECT_EQ(recording.records[1].nanoseconds, 500U);
    ASSERT_EQ(recording.records[1].valuesOf(ValueRole::kResult).size(), 1U);
    EXPECT_TRUE(recording.records[1].valuesOf(ValueRole::kAfter).empty());
}

TEST(Recordings, TellWhatWasKept) {
    const Recording recording = good(magic() + startRecord(recorder::kMacsKept | recorder::kSsidsKept));
    EXPECT_FALSE(recording.replayable);
    EXPECT_TRUE(recording.macsKept);
    EXPECT_TRUE(recording.ssidsKept);
}

TEST(Recordings, ThatAreCutOffAreReadUpToTheLastWholeRecord) {
    const std::string whole = small();
    const size_t last = RecordBuilder(RecordKind::kReturn, 7).number(0, ValueRole::kResult).str().size();
    for (size_t cut = 1; cut < last; ++cut) {
        const Recording recording = good(whole.substr(0, whole.size() - cut));
        EXPECT_EQ(recording.records.size(), 1U);
        EXPECT_EQ(recording.unreadBytes, last - cut);
        EXPECT_FALSE(recording.ended);
    }
}

TEST(DamagedRecordings, AreRefusedWithPlaceAndReason) {
    EXPECT_EQ(bad("").reason, "this is not a recording: it does not begin with \"QVLREC01\"");
    EXPECT_EQ(bad("QVLREC02").position, 0U);
    EXPECT_EQ(bad(magic()).reason, "the recording has no start record");

    const std::string begin = magic() + startRecord();
    std::string record = RecordBuilder(RecordKind::kGap).number(1).number(1).str();
    record[0] = 7;  // its length
    EXPECT_EQ(bad(begin + record).position, begin.size());
    EXPECT_EQ(bad(begin + record).reason, "the record's length is 7: it must be a multiple of 8 from 24 to 1048576");

    record = RecordBuilder(static_cast<RecordKind>(99)).str();
    EXPECT_EQ(bad(begin + record).reason, "the record's kind is 99, which this version does not know");

    record = RecordBuilder(RecordKind::kCall, 3).str();
    EXPECT_EQ(bad(begin + record).reason, "function 3 was not named before");
    EXPECT_EQ(bad(begin + RecordBuilder(RecordKind::kThread).name(3).str()).reason, "text 3 was not named before");

    EXPECT_EQ(bad(begin + startRecord()).reason, "there is a second start record");
    EXPECT_EQ(bad(magic() + nameRecord(1, "x") + RecordBuilder(RecordKind::kThread).str()).reason,
              "the record is not a start record, which comes first");
    EXPECT_EQ(bad(begin + RecordBuilder(RecordKind::kGap).number(1).str()).reason, "a gap has a count and a reason");
    EXPECT_EQ(bad(begin + RecordBuilder(RecordKind::kName).number(1).str()).reason,
              "a name record has a number and a text");
    EXPECT_EQ(
        bad(magic() + RecordBuilder(RecordKind::kStart).number(2).number(4).number(0).wide(0).text("").str()).reason,
        "the recording's version is 2; this program reads version 1");
}

TEST(DamagedRecordings, WithValuesBeyondTheirRecordAreRefused) {
    std::string record = RecordBuilder(RecordKind::kThread).number(1).str();
    record[5] = 2;  // one value more than there is
    const std::string begin = magic() + startRecord();
    EXPECT_EQ(bad(begin + record).reason, "the record's values do not fit its length");
    record = RecordBuilder(RecordKind::kThread).text("four").str();
    record[24] = 100;  // the text's size
    EXPECT_EQ(bad(begin + record).reason, "the record's values do not fit its length");
}

TEST(RecordingFiles, ThatAreAbsentAreNamed) {
    const auto read = recorder::readRecordingFile("/nonexistent/fault.rec");
    ASSERT_TRUE(std::holds_alternative<RecordingError>(read));
    EXPECT_EQ(std::get<RecordingError>(read).reason, "cannot open /nonexistent/fault.rec: No such file or directory");
}

}  // namespace
}  // namespace quorvel::recorder_test
