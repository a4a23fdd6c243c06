// Recordings of the simulated gateway: made as a person makes them, and replayed.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "recorder/desk/Recording.h"
#include "tests/console/OnBoard.h"

namespace quorvel::recorder_test {
namespace {

using console_test::Outcome;
using recorder::Recording;

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

class RecordedBoard : public console_test::OnBoard {
  protected:
    std::string file_ = console_.state() + "/board.rec";

    // Replays a recording on the built plug-in.
    void expectNoDifference(const std::string& file) const {
        const Outcome replayed = console_.run({"replay", file});
        EXPECT_EQ(replayed.status, 0) << file << '\n' << replayed.out << replayed.error;
        EXPECT_NE(replayed.out.find(" calls replayed, 0 differences"), std::string::npos) << replayed.out;
        EXPECT_EQ(replayed.out.find("records are missing"), std::string::npos) << replayed.out;
    }
};

TEST_F(RecordedBoard, ReplaysWithoutADifference) {
    ASSERT_EQ(console_.run({"up", "--record", file_}).status, 0);
    EXPECT_EQ(console_.run({"set", "Device.WiFi.SSID.1.SSID=Attic"}).status, 0);
    EXPECT_EQ(console_.run({"scan", "1"}).status, 0);
    EXPECT_EQ(console_.run({"down"}).status, 0);
    const auto read = recorder::readRecordingFile(file_);
    ASSERT_TRUE(std::holds_alternative<Recording>(read));
    EXPECT_TRUE(std::get<Recording>(read).ended);
    expectNoDifference(file_);
    EXPECT_EQ(contents(file_).find("Attic"), std::string::npos);
    struct stat found {};
    ASSERT_EQ(stat(file_.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0600U);
}

TEST_F(RecordedBoard, RecordsInItsFolderToo) {
    const Outcome get = console_.run({"get", "Device.WiFi.", "--sandbox", "folder", "--record", file_});
    ASSERT_EQ(get.status, 0) << get.error;
    expectNoDifference(file_);
}

TEST_F(RecordedBoard, BeginsAFileWithEachLife) {
    ASSERT_EQ(console_.run({"up", "--record", file_}).status, 0);
    EXPECT_EQ(console_.run({"simulate", R"({"op": "fault", "fault": "none"})"}).status, 0);
    EXPECT_EQ(console_.run({"down"}).status, 0);
    ASSERT_EQ(console_.run({"up", "--record", file_}).status, 0);
    EXPECT_EQ(console_.run({"down"}).status, 0);
    expectNoDifference(file_);
    expectNoDifference(file_ + ".1");
}

TEST_F(RecordedBoard, ThatIsUpAlreadyIsNotRecorded) {
    ASSERT_EQ(console_.run({"up"}).status, 0);
    for (const char* const verb : {"up", "overview"}) {
        const Outcome again = console_.run({verb, "--record", file_});
        EXPECT_EQ(again.status, 1) << verb;
        EXPECT_NE(again.error.find("the board is up already, and a recording begins when a board is started; switch it "
                                   "off with quorvel-wifi down --state "),
                  std::string::npos)
            << again.error;
    }
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(RecordedBoard, DoesNotComeUpWhereNoRecordingCanBe) {
    const Outcome nowhere = console_.run({"up", "--record", "/nonexistent/folder/day.rec"});
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_NE(nowhere.error.find("cannot record into /nonexistent/folder/day.rec: No such file or directory"),
              std::string::npos)
        << nowhere.error;
    const Outcome folder = console_.run({"up", "--record", console_.state()});
    EXPECT_EQ(folder.status, 1);
    EXPECT_NE(folder.error.find("it is a link, a folder or a device; name a file"), std::string::npos) << folder.error;
    ASSERT_EQ(symlink("/dev/null", file_.c_str()), 0);
    EXPECT_EQ(console_.run({"get", "Device.WiFi.Radio.1.Channel", "--record", file_}).status, 1);
}

TEST_F(RecordedBoard, LeavesAReadableFileWheneverTheRecorderIsKilled) {
    ASSERT_EQ(console_.run({"up", "--record", file_}).status, 0);
    EXPECT_EQ(console_.run({"get", "Device.WiFi.Radio.1."}).status, 0);
    // The file at any moment is what a kill at that moment leaves; its last record may be cut off.
    const std::string bytes = contents(file_);
    ASSERT_GT(bytes.size(), 300U);
    for (size_t size = bytes.size(); size + 300 > bytes.size(); --size) {
        const auto read = recorder::readRecording(std::string_view(bytes).substr(0, size));
        ASSERT_TRUE(std::holds_alternative<Recording>(read)) << std::get<recorder::RecordingError>(read).reason;
    }
    EXPECT_EQ(console_.run({"recording", "show", file_}).status, 0);
}

TEST_F(RecordedBoard, IsRefusedWithPlaceAndReasonWhenItsFileIsDamaged) {
    std::ofstream(file_) << "QVLREC01 and then nothing that fits";
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"recording", "show", file_}, {"recording", "stats", file_}, {"replay", file_}}) {
        const Outcome outcome = console_.run(words);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_NE(outcome.error.find("board.rec, byte 8: the record's length is"), std::string::npos) << outcome.error;
    }
}

// Every shipped scenario.
std::vector<std::string> scenarios() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(QUORVEL_SCENARIOS))
        if (entry.path().extension() == ".json") names.push_back(entry.path().stem());
    std::ranges::sort(names);
    return names;
}

class RecordedScenario : public RecordedBoard, public testing::WithParamInterface<std::string> {};

TEST_P(RecordedScenario, ReplaysWithoutADifference) {
    const Outcome played = console_.run({"play", GetParam(), "--record", file_});
    ASSERT_EQ(played.status, 0) << played.out << played.error;
    expectNoDifference(file_);
    if (std::filesystem::exists(file_ + ".1")) expectNoDifference(file_ + ".1");
}

INSTANTIATE_TEST_SUITE_P(Shipped, RecordedScenario, testing::ValuesIn(scenarios()), [](const auto& name) {
    std::string word = name.param;
    std::ranges::replace(word, '-', '_');
    return word;
});

}  // namespace
}  // namespace quorvel::recorder_test
