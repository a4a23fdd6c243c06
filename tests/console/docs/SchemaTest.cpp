#include "tests/console/docs/Schema.h"

#include <fstream>

#include "tests/console/OnBoard.h"

namespace quorvel::console_test {
namespace {

using Json = nlohmann::json;

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    return text;
}

TEST(SchemaValidator, FindsWhatDoesNotFit) {
    EXPECT_EQ(violations("version", {{"version", "1"}}).size(), 0U);
    EXPECT_EQ(violations("version", Json::object()).size(), 1U);
    EXPECT_EQ(violations("version", {{"version", 1}}).size(), 1U);
    EXPECT_EQ(violations("version", {{"version", "1"}, {"more", 1}}).size(), 1U);
    EXPECT_EQ(violations("instances", {{"instances", {"a", 1}}}).size(), 1U);
    EXPECT_EQ(violations("faults", {{"faults", {{{"path", ""}, {"code", 1}, {"reason", ""}}}}}).size(), 1U);
    EXPECT_EQ(violations("no-such-schema", {}).size(), 1U);
}

struct Case {
    const char* name;
    const char* schema;
    std::vector<std::string> words;
    int status = 0;
};

class Output : public OnBoard, public testing::WithParamInterface<Case> {};

TEST_P(Output, FitsItsSchema) {
    // What diff compares.
    std::ofstream(console_.state() + "/a.json")
        << console_.run({"get", "Device.WiFi.SSID.1.", "--max-depth", "1", "--json"}).out;
    std::ofstream(console_.state() + "/b.json") << console_.run({"snapshot", "Device.WiFi.SSID.1.", "--json"}).out;
    std::vector<std::string> words = GetParam().words;
    for (std::string& word : words) {
        if (word == "A" || word == "B") word = console_.state() + (word == "A" ? "/a.json" : "/b.json");
    }
    words.emplace_back("--json");
    const Outcome outcome = console_.run(words);
    EXPECT_EQ(outcome.status, GetParam().status) << outcome.error;
    ASSERT_FALSE(outcome.json().is_discarded()) << outcome.out;
    EXPECT_EQ(joined(violations(GetParam().schema, outcome.json())), "");
}

const std::string kTraffic = "Device.WiFi.Radio.1.Stats.BytesSent";

INSTANTIATE_TEST_SUITE_P(
    Console, Output,
    testing::Values(Case{"Get", "get", {"get", "Device."}},
                    Case{"GetOfAMeasurement", "get", {"get", "Device.WiFi.Radio.1.DcsChannelMetrics"}},
                    Case{"GetOfNothing", "get", {"get", "Device.WiFi.Nowhere"}, 1},
                    Case{"Set", "set", {"set", "Device.WiFi.Radio.2.Channel=48"}},
                    Case{"SetRefused", "set", {"set", "Device.WiFi.Radio.2.Channel=high"}, 1},
                    Case{"Instances", "instances", {"instances"}},
                    Case{"InstancesOfNothing", "faults", {"instances", "Device.WiFi.Nowhere."}, 1},
                    Case{"Dump", "dump", {"dump", "datamodel"}}, Case{"Explain", "explain", {"explain", "Device."}},
                    Case{"ExplainNothing", "faults", {"explain", "Device.WiFi.Nowhere"}, 1},
                    Case{"Snapshot", "snapshot", {"snapshot", "Device.WiFi.Radio.1."}},
                    Case{"SnapshotInHex", "snapshot", {"snapshot", "Device.WiFi.SSID.1.", "--hex"}},
                    Case{"Security", "security", {"security", "1"}}, Case{"DiffOfTheSame", "diff", {"diff", "A", "B"}},
                    Case{"Watch", "watch", {"watch", kTraffic, "--count", "1"}}, Case{"Scan", "scan", {"scan", "1"}},
                    Case{"Channel", "channel", {"channel", "1", "36"}}, Case{"Stats", "stats", {"stats", "1"}},
                    Case{"Stations", "stations", {"stations"}},
                    Case{"Join", "station", {"station", "join", "02:00:00:00:00:77", "1"}},
                    Case{"Leave", "station", {"station", "leave", "02:5a:00:00:01:01"}},
                    Case{"StationList", "station-list", {"station", "list"}},
                    Case{"Simulate", "simulate", {"simulate", R"({"op":"neighbour.list"})"}},
                    Case{"Wps", "wps", {"wps", "1", "push"}}, Case{"Overview", "overview", {"overview"}},
                    Case{"Status", "status", {"status"}}, Case{"DownOfNothing", "down", {"down"}},
                    Case{"Version", "version", {"version"}}, Case{"Help", "help", {"help"}},
                    Case{"HelpOfAVerb", "help", {"help", "station", "join"}}, Case{"Demo", "demo", {"demo"}},
                    Case{"Scenarios", "scenarios", {"play"}}, Case{"Play", "play", {"play", "first-boot"}},
                    Case{"Fleet", "fleet", {"fleet", "run", "guest-network", "--own-boards", "1"}},
                    Case{"Selftest", "selftest", {"selftest"}},
                    Case{"SelftestOfNothing", "error", {"selftest", "--plugin", "/nowhere.so"}, 1},
                    Case{"SetReadBack", "set", {"set", "Device.WiFi.Radio.2.Channel=3"}},
                    Case{"StatsOfAnSsid", "stats", {"stats", "ssid.1"}},
                    Case{"StatsOfNothing", "faults", {"stats", "9"}, 1},
                    Case{"JoinRefused", "station", {"station", "join", "02:00:00:00:00:77", "5"}, 1},
                    Case{"NobodyForWps", "wps", {"wps", "1", "pin", "87654325"}, 1}, Case{"NoVerb", "error", {}, 2},
                    Case{"WrongVerb", "error", {"gte"}, 2}, Case{"WrongOption", "error", {"get", "--fast"}, 2},
                    Case{"BothOutputs", "error", {"version", "--plain"}, 2},
                    Case{"NoBoard", "error", {"--board", "no-such-board", "get", "Device.WiFi.Radio.1.Name"}, 1}),
    [](const auto& one) { return one.param.name; });

class OutputOfABoardThatIsUp : public OnBoard {};

TEST_F(OutputOfABoardThatIsUp, FitsItsSchema) {
    EXPECT_EQ(joined(violations("up", console_.run({"up", "--json"}).json())), "");
    EXPECT_EQ(joined(violations("status", console_.run({"status", "--json"}).json())), "");
    EXPECT_EQ(joined(violations("down", console_.run({"down", "--json"}).json())), "");
}

class OutputAboutARecording : public OnBoard {};

TEST_F(OutputAboutARecording, FitsItsSchema) {
    const std::string file = console_.state() + "/day.rec";
    const std::string earlier = file + ".1";
    for (int life = 0; life < 2; ++life)
        ASSERT_EQ(console_.run({"get", "Device.WiFi.Radio.1.", "--record", file}).status, 0);
    const auto show = console_.run({"recording", "show", file, "--json"}).json();
    EXPECT_EQ(joined(violations("recording", show)), "");
    EXPECT_GT(show.at("calls").size(), 10U);
    EXPECT_EQ(joined(violations("recording", console_.run({"recording", "stats", file, "--json"}).json())), "");
    const auto diff = console_.run({"recording", "diff", file, earlier, "--json"}).json();
    EXPECT_EQ(joined(violations("recording", diff)), "");
    EXPECT_TRUE(diff.contains("differing"));
    const auto replay = console_.run({"replay", file, "--json"}).json();
    EXPECT_EQ(joined(violations("replay", replay)), "");
    EXPECT_EQ(replay.at("differing"), 0);
}

}  // namespace
}  // namespace quorvel::console_test
