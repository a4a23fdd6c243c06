#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/console/OnBoard.h"

namespace quorvel::console_test {
namespace {

using Json = nlohmann::json;

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
        Case{"WrongType",
             {"set", "Device.WiFi.Radio.2.Channel=high"},
             7011,
             "\"high\" is not an unsignedInt (a whole number from 0 to 4294967295)"},
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
    testing::Values(
        Usage{"NoVerb", {}, "Usage: quorvel-wifi"}, Usage{"MisspeltVerb", {"gte", "x"}, "did you mean \"get\"?"},
        Usage{"VerbLikeNone", {"!!"}, "there is no verb \"!!\"\n"},
        Usage{"UnknownOption", {"get", "--fast", "x"}, "there is no option \"--fast\""},
        Usage{"MisspeltOption", {"get", "--max-depht=1", "x"}, "did you mean \"--max-depth\"?"},
        Usage{"MisspeltGlobalOption", {"get", "x", "--jsno"}, "did you mean \"--json\"?"},
        Usage{"NoVerbOfAVerb", {"station"}, "station is followed by join, leave, list"},
        Usage{"MisspeltVerbOfAVerb", {"station", "jion"}, "did you mean \"join\"?"},
        Usage{"TooMuch", {"scan", "1", "2"}, "\"2\" is one argument too many"},
        Usage{"NoNumber", {"scan", "one"}, "RADIO: \"one\" is not a whole number"},
        Usage{"NoAccessPoint", {"stations", "one"}, "\"one\" must be a positive whole number"},
        Usage{"NoDepth", {"get", "x", "--max-depth", "0"}, "\"0\" must be a positive whole number"},
        Usage{"HelpOfNothing", {"help", "gte"}, "did you mean \"get\"?"},
        Usage{"BatchOfAFolder", {"batch", "/"}, "cannot read the file /"},
        Usage{"ScenarioThatIsNone", {"play", "first-boto"}, "did you mean \"first-boot\"?"},
        Usage{"NoPath", {"get"}, "PATH"}, Usage{"NoValue", {"set", "Device.WiFi.Radio.1.Channel"}, "write PATH=VALUE"},
        Usage{"NoValueFile", {"set", "Device.WiFi.SSID.1.SSID=@/nowhere"}, "/nowhere"},
        Usage{"LogLevel", {"--log-level", "9", "status"}, "log-level"},
        Usage{"WpsAction", {"wps", "1", "psuh"}, "did you mean \"push\"?"}, Usage{"NoPin", {"wps", "1", "pin"}, "PIN"}),
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
    EXPECT_EQ(console.run({"get", "--help"}).out, console.run({"help", "get"}).out);
    EXPECT_EQ(console.run({"--version"}).out, console.run({"version"}).out);
}

// Those that go on until somebody ends them, and what needs a plug-in of one's own.
bool canBeTried(const std::string& example) {
    for (const char* part : {"events", "log", "shell", "--watch", "--web", "--plugin", "--gdb"}) {
        if (example.find(part) != std::string::npos) return false;
    }
    if (example.starts_with("web")) return false;
    return !example.starts_with("watch ") || example.find("--count") != std::string::npos;
}

class Example : public OnBoard {};

TEST_F(Example, OfTheHelpDoesWhatItSays) {
    const Json program = console_.run({"help", "--json"}).json();
    const std::string place = console_.state();
    std::ofstream(place + "/passphrase.txt") << "a passphrase";
    std::ofstream(place + "/commands.txt") << "get Device.WiFi.Radio.1.Name\n";
    for (const char* file : {"/before.json", "/after.json"})
        std::ofstream(place + file) << R"({"values": {"Device.WiFi.Radio.1.Name": "wl0"}})";
    ASSERT_EQ(console_.run({"get", "Device.WiFi.Radio.1.Name", "--record", place + "/fault.rec"}).status, 0);
    for (const char* file : {"/before.rec", "/after.rec"})
        std::filesystem::copy_file(place + "/fault.rec", place + file);
    std::size_t tried = 0;
    for (const Json& verb : program.at("verbs")) {
        EXPECT_FALSE(verb.at("examples").empty()) << verb.at("name");
        for (const std::string example : verb.at("examples")) {
            EXPECT_TRUE(example.starts_with(verb.at("name").get<std::string>())) << example;
            if (!canBeTried(example)) continue;
            const std::string command = "cd '" + place + "' && HOME='" + place + "' XDG_STATE_HOME='" + place +
                                        "' '" QUORVEL_CONSOLE "' " + example + " > out 2>&1";
            EXPECT_EQ(std::system(command.c_str()), 0) << example;
            ++tried;
        }
    }
    EXPECT_GT(tried, 40U);
    (void)std::system(("XDG_STATE_HOME='" + place + "' '" QUORVEL_CONSOLE "' down > /dev/null 2>&1").c_str());
}

TEST(Output, ThatCannotBeWrittenIsAFailure) {
    const auto statusOf = [](const std::string& arguments) {
        return std::system(("'" QUORVEL_CONSOLE "' " + arguments + " 2> /dev/null").c_str());
    };
    EXPECT_EQ(statusOf("version > /dev/null"), 0);
    EXPECT_NE(statusOf("version > /dev/full"), 0);
    EXPECT_NE(statusOf("help --json > /dev/full"), 0);
    EXPECT_NE(statusOf("version >&-"), 0);
}

TEST(Board, ThatDoesNotExistIsNamed) {
    const Console console;
    const Outcome outcome = console.run({"--board", "no-such-board", "get", "Device.WiFi.Radio.1.Name"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.error.find("no-such-board"), std::string::npos) << outcome.error;
}

}  // namespace
}  // namespace quorvel::console_test
