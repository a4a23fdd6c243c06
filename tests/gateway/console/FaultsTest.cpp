#include "OnBoard.h"

namespace quorvel::console_test {
namespace {

struct Case {
    const char* name;
    std::vector<std::string> words;
    int code;
    const char* says;
};

class Fault : public OnBoard, public testing::WithParamInterface<Case> {};

TEST_P(Fault, IsNamedWithCodePathAndReason) {
    const Outcome outcome = console_.run(GetParam().words);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.error.find("fault " + std::to_string(GetParam().code) + " Device.WiFi."), 0U) << outcome.error;
    EXPECT_NE(outcome.error.find(GetParam().says), std::string::npos) << outcome.error;
}

TEST_P(Fault, StandsInTheJson) {
    std::vector<std::string> words = GetParam().words;
    words.emplace_back("--json");
    const Outcome outcome = console_.run(words);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.json().at("faults").at(0).at("code"), GetParam().code) << outcome.out;
}

INSTANTIATE_TEST_SUITE_P(
    Console, Fault,
    testing::Values(
        Case{"NoSuchInstance", {"get", "Device.WiFi.Radio.9.Channel"}, 7016, "instances 1 to 3"},
        Case{"NoSuchInstanceOfAPartialPath", {"get", "Device.WiFi.Radio.9."}, 7016, "Device.WiFi.Radio.9."},
        Case{"NoSuchPath", {"get", "Device.WiFi.Radio.2.Chanel"}, 7026, "did you mean Device.WiFi.Radio.2.Channel"},
        Case{"NoSuchPathUnderAWildcard", {"get", "Device.WiFi.Radio.*.Chanel"}, 7026, "Device.WiFi.Radio.*.Channel"},
        Case{"NoSuchPathToSet", {"set", "Device.WiFi.Radio.2.Chanel=1"}, 7026, "Device.WiFi.Radio.2.Channel"},
        Case{"ReadOnly", {"set", "Device.WiFi.Radio.2.Status=Up"}, 7013, "read-only"},
        Case{"WrongType", {"set", "Device.WiFi.Radio.2.Channel=high"}, 7011, "\"high\" is no unsignedInt"},
        Case{"WrongTypeOfABoolean", {"set", "Device.WiFi.Radio.2.Enable=2"}, 7011, "boolean"},
        Case{"ValueRefused", {"set", "Device.WiFi.Radio.2.DcsDwelltime=51"}, 7012, "result 8: Value out of range"},
        Case{"ValueTooLarge", {"set", "Device.WiFi.Radio.2.Channel=4294967296"}, 7012, "does not fit"},
        Case{"SnapshotOfNothing", {"snapshot", "Device.WiFi.Radio.9."}, 7016, "instances 1 to 3"}),
    [](const auto& one) { return one.param.name; });

class Refusal : public OnBoard {};

TEST_F(Refusal, OfOneValueLeavesTheOthersUnset) {
    const std::string channel = "Device.WiFi.Radio.2.Channel";
    const Outcome outcome = console_.run(
        {"batch", "-"}, "set " + channel + "=48 Device.WiFi.Radio.2.DcsDwelltime=51\nget " + channel + "\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out, channel + " => 48\n");
    EXPECT_EQ(outcome.out.find(channel + " => "), 0U);
}

struct Usage {
    const char* name;
    std::vector<std::string> words;
    const char* says;
};

class WrongUsage : public testing::TestWithParam<Usage> {};

TEST_P(WrongUsage, ExitsWithTwoAndSaysWhatToTry) {
    const Console console;
    const Outcome outcome = console.run(GetParam().words);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.error.find(GetParam().says), std::string::npos) << outcome.error;
}

INSTANTIATE_TEST_SUITE_P(
    Console, WrongUsage,
    testing::Values(Usage{"NoVerb", {}, "--help"}, Usage{"MisspeltVerb", {"gte", "x"}, "did you mean \"get\"?"},
                    Usage{"UnknownOption", {"get", "--fast", "x"}, "--fast"}, Usage{"NoPath", {"get"}, "PATH"},
                    Usage{"NoValue", {"set", "Device.WiFi.Radio.1.Channel"}, "no PATH=VALUE"},
                    Usage{"NoValueFile", {"set", "Device.WiFi.SSID.1.SSID=@/nowhere"}, "/nowhere"},
                    Usage{"LogLevel", {"--log-level", "9", "status"}, "log-level"},
                    Usage{"WpsAction", {"wps", "1", "jump"}, "jump"}, Usage{"NoPin", {"wps", "1", "pin"}, "PIN"}),
    [](const auto& one) { return one.param.name; });

TEST(Help, ExitsWithZero) {
    const Console console;
    const Outcome outcome = console.run({"--help"});
    EXPECT_EQ(outcome.status, 0);
    for (const char* verb : {"get",      "set",      "instances", "dump",     "overview", "shell",  "demo",
                             "scan",     "channel",  "stats",     "stations", "station",  "events", "wps",
                             "snapshot", "security", "version",   "up",       "down",     "status", "batch"}) {
        EXPECT_NE(outcome.out.find(std::string("  ") + verb + " "), std::string::npos) << verb;
    }
    EXPECT_EQ(console.run({"get", "--help"}).status, 0);
}

TEST(Board, ThatDoesNotExistIsNamed) {
    const Console console;
    const Outcome outcome = console.run({"--board", "no-such-board", "get", "Device.WiFi.Radio.1.Name"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.error.find("no-such-board"), std::string::npos) << outcome.error;
}

}  // namespace
}  // namespace quorvel::console_test
