// Fleets end to end: some gateways on this machine.
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <utility>

#include "tests/console/OnBoard.h"

namespace quorvel::fleet_test {
namespace {

namespace fs = std::filesystem;
using console_test::Console;
using console_test::Outcome;

class Fleet : public console_test::OnBoard {
  protected:
    ~Fleet() override {
        if (fs::exists(console_.state() + "/fleet.json")) (void)console_.run({"fleet", "down"});
    }

    Outcome up(const std::string& count, std::vector<std::string> more = {}) const {
        more.insert(more.begin(), {"fleet", "up", count});
        return console_.run(more);
    }
    [[nodiscard]] nlohmann::json status() const {
        return console_.run({"fleet", "status", "--json"}).json();
    }
    // Runs a command on one gateway of the fleet.
    [[nodiscard]] Outcome on(unsigned gateway, std::vector<std::string> words) const {
        return Console::runOn(console_.state() + "/" + std::to_string(gateway), std::move(words));
    }
    // Counts the processes that were started for the fleet's folder.
    [[nodiscard]] std::size_t processes() const {
        std::size_t count = 0;
        for (const auto& entry : fs::directory_iterator("/proc")) {
            std::ifstream file(entry.path() / "cmdline", std::ios::binary);
            const std::string text{std::istreambuf_iterator<char>(file), {}};
            if (text.find(console_.state() + "/") != std::string::npos) ++count;
        }
        return count;
    }
};

TEST_F(Fleet, ComesUpGrowsAndGoes) {
    const Outcome first = up("2");
    ASSERT_EQ(first.status, 0) << first.error;
    EXPECT_EQ(first.out.substr(0, 23), "2 of 2 gateways are up;");
    const Outcome grown = up("3", {"--json"});
    EXPECT_EQ(grown.status, 0) << grown.error;
    EXPECT_EQ(grown.json().at("up"), 3);
    const nlohmann::json seen = status();
    EXPECT_EQ(seen.at("up"), 3);
    EXPECT_EQ(seen.at("gateways"), 3);
    EXPECT_GT(seen.at("memoryKiB"), 0);
    EXPECT_GT(seen.at("slowestStart").at("seconds"), 0);
    EXPECT_EQ(console_.run({"fleet", "down"}).status, 0);
    EXPECT_EQ(processes(), 0U);
    EXPECT_FALSE(fs::exists(console_.state()));
}

TEST_F(Fleet, HasGatewaysWithAddressesOfTheirOwn) {
    ASSERT_EQ(up("3").status, 0);
    std::set<std::string> addresses;
    for (unsigned gateway = 1; gateway <= 3; ++gateway)
        addresses.insert(on(gateway, {"get", "Device.WiFi.SSID.1.BSSID"}).out);
    EXPECT_EQ(addresses.size(), 3U);
    EXPECT_EQ(on(2, {"set", "Device.WiFi.Radio.1.Channel=40"}).status, 0);
    EXPECT_EQ(on(3, {"get", "Device.WiFi.Radio.1.Channel"}).out, "Device.WiFi.Radio.1.Channel => 36\n");
}

TEST_F(Fleet, NamesAGatewayThatFailsAndGoesOn) {
    ASSERT_EQ(up("1").status, 0);
    std::ofstream(console_.state() + "/2") << "in the way";
    const Outcome grown = up("3");
    EXPECT_EQ(grown.status, 1);
    EXPECT_EQ(grown.out.substr(0, 23), "2 of 3 gateways are up;");
    EXPECT_EQ(grown.error.substr(0, 11), "gateway 2: ") << grown.error;
    const nlohmann::json failed = status().at("failed");
    ASSERT_EQ(failed.size(), 1U);
    EXPECT_EQ(failed[0].at("gateway"), 2);
    EXPECT_NE(failed[0].at("reason"), "");
    // With the obstacle gone, the same command brings it up.
    fs::remove(console_.state() + "/2");
    EXPECT_EQ(up("3").status, 0);
    EXPECT_EQ(status().at("up"), 3);
}

TEST_F(Fleet, LeavesNothingAfterTheCommandWasKilled) {
    const pid_t process = fork();
    if (process == 0) {
        (void)execl(QUORVEL_CONSOLE, QUORVEL_CONSOLE, "--state", console_.state().c_str(), "fleet", "up", "20",
                    static_cast<char*>(nullptr));
        _exit(127);
    }
    // Some are up, some are on their way.
    while (!fs::exists(console_.state() + "/3/console.socket") && waitpid(process, nullptr, WNOHANG) == 0)
        (void)poll(nullptr, 0, 1);
    ASSERT_EQ(kill(process, SIGKILL), 0);
    (void)waitpid(process, nullptr, 0);
    const Outcome down = console_.run({"fleet", "down"});
    EXPECT_EQ(down.status, 0) << down.error;
    EXPECT_EQ(processes(), 0U);
    EXPECT_FALSE(fs::exists(console_.state()));
}

TEST_F(Fleet, TellsOfAGatewayThatHasEnded) {
    ASSERT_EQ(up("2").status, 0);
    ASSERT_EQ(on(1, {"down"}).status, 0);
    const Outcome outcome = console_.run({"fleet", "status"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("gateway 1: it came up and has ended since"), std::string::npos) << outcome.out;
    EXPECT_EQ(up("2").status, 0);
    EXPECT_EQ(status().at("up"), 2);
}

TEST_F(Fleet, RefusesOtherSettingsForAFleetThatIsThere) {
    ASSERT_EQ(up("2").status, 0);
    const Outcome seed = up("2", {"--seed", "9"});
    EXPECT_EQ(seed.status, 1);
    EXPECT_NE(seed.error.find("has the seed 1, not 9"), std::string::npos) << seed.error;
    EXPECT_EQ(up("1").status, 1);
}

TEST_F(Fleet, DoesNotSettleInAFolderWithOtherThings) {
    std::ofstream(console_.state() + "/letter") << "dear";
    const Outcome outcome = up("1");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.error.find("\"letter\""), std::string::npos) << outcome.error;
    EXPECT_EQ(console_.run({"fleet", "down"}).status, 1);
    EXPECT_TRUE(fs::exists(console_.state() + "/letter"));
}

TEST_F(Fleet, PlaysAScenarioOnBoardsOfItsOwn) {
    const std::string report = console_.state() + "/report.xml";
    const Outcome outcome =
        console_.run({"fleet", "run", "guest-network", "--own-boards", "3", "--junit", report, "--json"});
    EXPECT_EQ(outcome.json().at("gateways"), 3) << outcome.error;
    std::ifstream file(report);
    const std::string xml{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NE(xml.find("tests=\"3\""), std::string::npos) << xml;
    EXPECT_NE(xml.find("name=\"gateway 3\""), std::string::npos) << xml;
}

TEST_F(Fleet, PlaysSharesOnTheGatewaysThatAreUp) {
    ASSERT_EQ(up("2").status, 0);
    const std::string scenario = console_.state() + ".json";
    std::ofstream(scenario) << R"({"name": "Visits", "timeline": [
        {"at": 0.5, "do": "station.join", "mac": "02:00:00:00:09:01", "bss": 1},
        {"at": 0.5, "do": "station.join", "mac": "02:00:00:00:09:02", "bss": 1}],
      "expectations": [
        {"by": 5, "event": "associated", "station": "02:00:00:00:09:01"},
        {"by": 5, "event": "associated", "station": "02:00:00:00:09:02"},
        {"by": 5, "event": "associated", "atMost": 1, "atLeast": 1}]})";
    const Outcome outcome = console_.run({"fleet", "run", scenario, "--shares"});
    fs::remove(scenario);
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.error;
    EXPECT_EQ(outcome.out, "Visits: 2 of 2 gateways passed\n");
    // They came to boards that stay up.
    for (const unsigned gateway : {1U, 2U}) {
        const std::string list = on(gateway, {"station", "list", "--plain"}).out;
        EXPECT_NE(list.find(gateway == 1 ? ":09:01" : ":09:02"), std::string::npos) << list;
    }
}

TEST_F(Fleet, Churns) {
    ASSERT_EQ(up("2").status, 0);
    const Outcome outcome = console_.run({"fleet", "churn", "--join", "20", "--leave", "10", "--for", "2", "--json"});
    const nlohmann::json result = outcome.json();
    EXPECT_EQ(outcome.status, 0) << outcome.out << outcome.error;
    EXPECT_GE(result.at("joins"), 20);
    EXPECT_GE(result.at("leaves"), 10);
    EXPECT_EQ(result.at("stations").get<int>(), result.at("joins").get<int>() - result.at("leaves").get<int>());
    EXPECT_EQ(console_.run({"fleet", "churn", "--reboot", "1", "--for", "1"}).status, 0);
}

}  // namespace
}  // namespace quorvel::fleet_test
