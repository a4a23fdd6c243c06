// A board description that is wrong at any level is refused with the file, the line and what was expected there.
#include <gtest/gtest.h>

#include <regex>

#include "gateway/description/Reader.h"

namespace quorvel::faults_test {
namespace {

using quorvel::description::Error;

// Each value has a line of its own; the wrong one replaces `@`.
struct Level {
    const char* name;
    const char* before;
    const char* good;
    const char* wrong;
    const char* after;
    const char* pointer;
};

constexpr const char* kHead = "{\"name\":\"b\",\"identifier\":\"0x0030\",\"chips\":[],\n";
constexpr const char* kBoard = "{\"name\":\"b\",\"identifier\":\"0x0030\",\n";
constexpr const char* kRadio =
    "{\"name\":\"b\",\"identifier\":\"0x0030\",\"chips\":[],\"radios\":[{\"index\":0,\"band\":\"5GHz\",\"channel\":36,"
    "\n";
constexpr const char* kBss =
    "{\"name\":\"b\",\"identifier\":\"0x0030\",\"chips\":[],\"radios\":[{\"index\":0,\"band\":\"5GHz\",\"channel\":36,"
    "\"bss\":[{\"index\":0,\"ssid\":\"a\",\"bssid\":\"02:00:00:00:00:01\",\n";
constexpr const char* kStation =
    "{\"name\":\"b\",\"identifier\":\"0x0030\",\"chips\":[],\"radios\":[{\"index\":0,\"band\":\"5GHz\",\"channel\":36}]"
    ","
    "\"stations\":[{\"mac\":\"02:00:00:00:00:01\",\"bss\":\"wl0\",\n";
constexpr const char* kNeighbour =
    "{\"name\":\"b\",\"identifier\":\"0x0030\",\"chips\":[],\"radios\":[],"
    "\"neighbours\":[{\"ssid\":\"n\",\"bssid\":\"02:00:00:00:00:02\",\"channel\":\"6\",\n";
constexpr const char* kFaults = "{\"name\":\"b\",\"identifier\":\"0x0030\",\"chips\":[],\"radios\":[],\"faults\":{\n";

std::string messageFor(const std::string& text) {
    const auto read = quorvel::description::parseBoard(text, "board.json");
    return std::holds_alternative<quorvel::description::Error>(read)
               ? std::get<quorvel::description::Error>(read).message
               : "";
}

class WrongBoard : public testing::TestWithParam<Level> {};

TEST_P(WrongBoard, IsNamedByFileLineAndExpectation) {
    const Level& level = GetParam();
    const std::string before = level.before;
    const std::string message = messageFor(before + level.wrong + level.after);
    EXPECT_EQ(message.rfind("board.json:2:", 0), 0U) << message;
    EXPECT_NE(message.find(std::string(": ") + level.pointer + ": "), std::string::npos) << message;
    EXPECT_NE(message.find("expected "), std::string::npos) << message;
    // A good value in its place is accepted.
    EXPECT_EQ(messageFor(before + level.good + level.after), "");
}

INSTANTIATE_TEST_SUITE_P(
    Levels, WrongBoard,
    testing::Values(
        Level{"Board", kHead, "\"radios\":[]", "\"radios\":7", "}", "/radios"},
        Level{"UnknownKey", kHead, "\"radios\":[]", "\"radioes\":[],\"radios\":[]", "}", "/radioes"},
        Level{"Radio", kRadio, "\"noise\":-91", "\"noise\":\"low\"", "}]}", "/radios/0/noise"},
        Level{"Bss", kBss, "\"maxStations\":5", "\"maxStations\":-5", "}]}]}", "/radios/0/bss/0/maxStations"},
        Level{"Station", kStation, "\"rssi\":-60", "\"rssi\":60", "}]}", "/stations/0/rssi"},
        Level{"Neighbour", kNeighbour, "\"security\":\"None\"", "\"security\":\"Much\"", "}]}",
              "/neighbours/0/security"},
        Level{"Faults", kFaults, "\"lspci\":\"fails\"", "\"lspci\":\"flies\"", "}}", "/faults/lspci"},
        // Further down.
        Level{"Chip", kBoard, "\"chips\":[\"43c5\"]", "\"chips\":[\"43c\"]", ",\"radios\":[]}", "/chips/0"},
        Level{"Channels", kRadio, "\"possibleChannels\":[36]", "\"possibleChannels\":[\"36\"]", "}]}",
              "/radios/0/possibleChannels/0"},
        Level{"FilterEntry", kBss, "\"filterList\":[\"02:00:00:00:00:09\"]", "\"filterList\":[\"02:00\"]", "}]}]}",
              "/radios/0/bss/0/filterList/0"},
        Level{"Secret", kBss, "\"security\":\"WPA2-Personal\",\"passphrase\":\"12345678\"",
              "\"security\":\"WPA2-Personal\",\"passphrase\":\"1234567\"", "}]}]}", "/radios/0/bss/0/passphrase"},
        Level{"Traffic", kStation, "\"traffic\":{\"downlink\":1}", "\"traffic\":{\"downlink\":-1}", "}]}",
              "/stations/0/traffic/downlink"},
        Level{"Rates", kStation, "\"rates\":{\"uplink\":1}", "\"rates\":{\"sideways\":1}", "}]}",
              "/stations/0/rates/sideways"},
        Level{"Step", kStation, "\"plan\":[{\"at\":1,\"do\":\"leave\"}]", "\"plan\":[{\"at\":1,\"do\":\"dance\"}]",
              "}]}", "/stations/0/plan/0/do"}),
    [](const auto& level) { return level.param.name; });

TEST(WrongBoard, WithoutAClosingBraceIsNamedByLine) {
    EXPECT_TRUE(std::regex_search(messageFor("{\n\"name\":\"b\",\n"), std::regex("^board\\.json:[23]:[0-9]+: ")));
}

}  // namespace
}  // namespace quorvel::faults_test
