#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "tests/console/OnBoard.h"

namespace quorvel::console_test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

const fs::path kSources = QUORVEL_SOURCES;

std::string contents(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> shippedScenarios() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(kSources / "gateway/scenarios"))
        names.push_back(entry.path().stem());
    // A build without the agent's libraries has no agent.
    if (!fs::exists(fs::path(QUORVEL_CONSOLE).parent_path() / "quorvel-wifi-agent"))
        std::erase_if(names, [](const std::string& name) { return name.starts_with("usp-"); });
    std::sort(names.begin(), names.end());
    return names;
}

class Scenario : public OnBoard {
  protected:
    // Writes a scenario for the test and returns its path.
    std::string write(const std::string& text) const {
        const std::string path = console_.state() + "/scenario.json";
        std::ofstream(path) << text;
        return path;
    }
    [[nodiscard]] std::string place(const std::string& name) const {
        return console_.state() + "/" + name;
    }
};

class Shipped : public Scenario, public testing::WithParamInterface<std::string> {};

TEST_P(Shipped, ScenarioPlaysAsItSays) {
    const Outcome outcome = console_.run({"play", GetParam()});
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.error;
    EXPECT_NE(outcome.out.find(" expectations held; board time "), std::string::npos) << outcome.out;
}

TEST_P(Shipped, ScenarioGivesTheSameEventLogInBothSandboxes) {
    for (const char* sandbox : {"namespaces", "folder"}) {
        const Outcome outcome = console_.run({"play", GetParam(), "--sandbox", sandbox, "--events", place(sandbox)});
        ASSERT_EQ(outcome.status, 0) << sandbox << ": " << outcome.out << outcome.error;
    }
    EXPECT_GT(contents(place("folder")).size(), 200U);
    EXPECT_EQ(contents(place("folder")), contents(place("namespaces")));
}

INSTANTIATE_TEST_SUITE_P(Each, Shipped, testing::ValuesIn(shippedScenarios()), [](const auto& instance) {
    std::string name = instance.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
});

TEST_F(Scenario, GivesTheSameEventLogForTheSameSeed) {
    for (const char* name : {"band-steering", "neighbour-scan", "power-cut"}) {
        ASSERT_EQ(console_.run({"play", name, "--seed", "77", "--events", place("one")}).status, 0) << name;
        ASSERT_EQ(console_.run({"play", name, "--seed", "77", "--events", place("two")}).status, 0) << name;
        EXPECT_GT(contents(place("one")).size(), 200U) << name;
        EXPECT_EQ(contents(place("one")), contents(place("two"))) << name;
    }
}

TEST_F(Scenario, GivesTheSameEventLogWhenItsCourseIsDrawn) {
    for (const char* name : {"band-steering", "daemon-crash"}) {
        ASSERT_EQ(console_.run({"play", name, "--events", place("plain")}).status, 0) << name;
        ASSERT_EQ(console_.run({"play", name, "--events", place("drawn"), "--html", place("page")}).status, 0) << name;
        EXPECT_GT(contents(place("plain")).size(), 200U) << name;
        EXPECT_EQ(contents(place("plain")), contents(place("drawn"))) << name;
        EXPECT_GT(contents(place("page")).size(), 10'000U) << name;
    }
}

TEST_F(Scenario, TakesItsChancesFromTheSeed) {
    const std::string file = write(R"({"name": "T", "expectations": [
        {"at": 30, "parameter": "Device.WiFi.Radio.1.Stats.BytesSent", "equals": 0}]})");
    const Json one = console_.run({"play", file, "--seed", "1", "--json"}).json();
    const Json again = console_.run({"play", file, "--seed", "1", "--json"}).json();
    const Json two = console_.run({"play", file, "--seed", "2", "--json"}).json();
    EXPECT_EQ(one.at("entries"), again.at("entries"));
    EXPECT_NE(one.at("entries"), two.at("entries"));
}

TEST_F(Scenario, FailsWithWhatWasSeenInstead) {
    const std::string file = write(R"({"name": "T", "timeline": [
        {"at": 2, "do": "set", "values": {"Device.WiFi.Nowhere": 1}}], "expectations": [
        {"by": 3, "parameter": "Device.WiFi.RadioNumberOfEntries", "equals": 4},
        {"by": 3, "parameter": "Device.WiFi.RadioNumberOfEntries", "equals": 3}]})");
    const Outcome outcome = console_.run({"play", file, "--plain", "--junit", place("junit.xml")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("3.000\tfailed\tDevice.WiFi.RadioNumberOfEntries = 4 by 3 s\t3\n"), std::string::npos)
        << outcome.out;
    EXPECT_NE(outcome.out.find("2.000\tstep failed\tset Device.WiFi.Nowhere = 1\tfault 7026 "), std::string::npos)
        << outcome.out;
    EXPECT_NE(contents(place("junit.xml")).find("tests=\"3\" failures=\"2\""), std::string::npos);
}

TEST_F(Scenario, ThatIsMalformedIsWrongUsage) {
    const Outcome outcome = console_.run({"play", write("{\"name\": \"T\",\n\"expectations\": 3}")});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.error,
              "quorvel-wifi: " + place("scenario.json") + ":2:17: /expectations: expected an array, found 3\n");
    EXPECT_EQ(console_.run({"play", "no-such-scenario"}).status, 2);
}

TEST_F(Scenario, LastsAnHourOfBoardTime) {
    const Outcome outcome = console_.run({"play", write(R"({"name": "T", "expectations": [
        {"at": 3600, "parameter": "Device.WiFi.AccessPoint.1.AssociatedDeviceNumberOfEntries", "equals": 2}]})"),
                                          "--json"});
    EXPECT_EQ(outcome.status, 0) << outcome.out;
    EXPECT_EQ(outcome.json().at("time"), 3600.0);
}

TEST_F(Scenario, OfTheDocumentPrintsWhatTheDocumentSays) {
    const std::string document = contents(kSources / "docs/scenarios.md");
    const auto block = [&document](const std::string& fence) {
        const std::size_t start = document.find(fence);
        if (start == std::string::npos) return std::string();
        const std::size_t first = start + fence.size();
        return document.substr(first, document.find("```\n", first) - first);
    };
    const std::string scenario = block("```json example\n");
    const std::string report = block("```text example\n");
    ASSERT_FALSE(scenario.empty());
    ASSERT_FALSE(report.empty());
    ASSERT_EQ(setenv("LC_ALL", "C.UTF-8", 1), 0);
    const Outcome outcome = console_.run({"play", write(scenario)});
    EXPECT_EQ(outcome.out, report);
    EXPECT_EQ(outcome.status, 0);
}

class WithController : public Scenario {
  protected:
    void SetUp() override {
        Scenario::SetUp();
        if (!fs::exists(fs::path(QUORVEL_CONSOLE).parent_path() / "quorvel-wifi-agent"))
            GTEST_SKIP() << "this build has no USP agent";
    }
};

TEST_F(WithController, SaysWhatTheControllerGotInstead) {
    const Outcome outcome = console_.run({"play", write(R"({"name": "T", "board": "dual-band", "timeline": [
        {"at": 2, "do": "usp.request", "id": "read", "get": ["Device.WiFi.RadioNumberOfEntries", "Device.WiFi.None"]},
        {"at": 3, "do": "usp.request", "id": "s", "subscribe": {"id": "v", "type": "ValueChange", "references": ["Device.WiFi.SSID.1.SSID"]}},
        {"at": 4, "do": "set", "values": {"Device.WiFi.SSID.1.SSID": "New"}}],
        "expectations": [
        {"by": 3, "answer": "read", "path": "Device.WiFi.RadioNumberOfEntries", "equals": 7},
        {"by": 3, "answer": "read", "path": "Device.WiFi.RadioNumberOfEntries", "equals": 2},
        {"by": 3, "answer": "read", "path": "Device.WiFi.None", "code": 7026},
        {"by": 3, "answer": "read", "code": 0},
        {"by": 5, "notification": "ValueChange", "path": "Device.WiFi.SSID.2.SSID"},
        {"by": 5, "notification": "ValueChange", "path": "Device.WiFi.SSID.*.SSID", "equals": "New", "atLeast": 1, "atMost": 1},
        {"by": 5, "notification": "ValueChange", "atMost": 0}]})"),
                                          "--plain", "--html", place("page.html")});
    EXPECT_EQ(outcome.status, 1) << outcome.error;
    const auto says = [&outcome](const std::string& text) { return outcome.out.find(text) != std::string::npos; };
    EXPECT_TRUE(
        says("3.000\tfailed\tanswer to read Device.WiFi.RadioNumberOfEntries = 7 by 3 s\tnone; but answer read "
             "GET_RESP Device.WiFi.RadioNumberOfEntries = 2; fault 7026 Device.WiFi.None\n"))
        << outcome.out;
    EXPECT_TRUE(says("held\tanswer to read Device.WiFi.RadioNumberOfEntries = 2 by 3 s")) << outcome.out;
    EXPECT_TRUE(says("held\tanswer to read Device.WiFi.None with fault 7026 by 3 s")) << outcome.out;
    EXPECT_TRUE(says("failed\tanswer to read without a fault by 3 s")) << outcome.out;
    EXPECT_TRUE(says("failed\tnotification ValueChange Device.WiFi.SSID.2.SSID by 5 s")) << outcome.out;
    EXPECT_TRUE(says("held\tnotification ValueChange Device.WiFi.SSID.*.SSID = New, at most 1 times by 5 s"))
        << outcome.out;
    EXPECT_TRUE(says("failed\tnotification ValueChange, never by 5 s")) << outcome.out;
    EXPECT_NE(contents(place("page.html")).find("USP controller"), std::string::npos);
}

TEST_F(WithController, IsServedAgainAfterAPowerCycle) {
    const Outcome outcome = console_.run({"play", write(R"({"name": "T", "board": "dual-band", "timeline": [
        {"at": 1, "do": "usp.request", "id": "s", "subscribe": {"id": "boot", "type": "Event", "references": ["Device.Boot!"], "persistent": true}},
        {"at": 2, "do": "usp.broker", "how": "slow", "delay": 1},
        {"at": 5, "do": "power.cycle"},
        {"at": 10, "do": "power.cut"},
        {"at": 11, "do": "usp.request", "id": "dark", "get": ["Device.WiFi."]},
        {"at": 12, "do": "power.on"},
        {"at": 13, "do": "usp.request", "id": "wrong", "request": {"get": {"param_path": "Device."}}}],
        "expectations": [{"by": 1, "answer": "s", "code": 0}, {"step": "dark", "fault": 7003}, {"step": "wrong", "fault": 7003},
        {"after": 6, "by": 7, "notification": "Event", "path": "Device.Boot!", "member": "Cause", "equals": "LocalReboot"},
        {"after": 12, "by": 20, "notification": "Event", "subscription": "boot", "atMost": 1, "atLeast": 1}]})")});
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.error;
}

}  // namespace
}  // namespace quorvel::console_test
