#include <algorithm>
#include <fstream>
#include <sstream>

#include "tests/console/OnBoard.h"

namespace quorvel::console_test {
namespace {

using Json = nlohmann::json;

const std::string kChannel = "Device.WiFi.Radio.2.Channel";

class Values : public OnBoard {};
class Objects : public OnBoard {};
class Air : public OnBoard {};
class Many : public OnBoard {};

TEST_F(Values, ThatAreSavedSurviveAPowerCycle) {
    const Outcome set = console_.run({"set", kChannel + "=44", "--save"});
    EXPECT_EQ(set.status, 0) << set.error;
    EXPECT_EQ(set.out, kChannel + " => 44\n");
    EXPECT_EQ(console_.run({"get", kChannel}).out, kChannel + " => 44\n");
}

TEST_F(Values, ThatAreNotSavedDoNot) {
    const std::string before = console_.run({"get", kChannel}).out;
    EXPECT_EQ(console_.run({"set", kChannel + "=44"}).status, 0);
    EXPECT_EQ(console_.run({"get", kChannel}).out, before);
    EXPECT_NE(before, kChannel + " => 44\n");
}

TEST_F(Values, ComeInTheirTypesInJson) {
    const Outcome outcome = console_.run({"get", "Device.WiFi.Radio.1.", "--json"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    const Json values = outcome.json().at("values");
    EXPECT_TRUE(values.at("Device.WiFi.Radio.1.Enable").is_boolean());
    EXPECT_TRUE(values.at("Device.WiFi.Radio.1.Channel").is_number_unsigned());
    EXPECT_TRUE(values.at("Device.WiFi.Radio.1.Status").is_string());
    EXPECT_LT(values.at("Device.WiFi.Radio.1.BandSteeringRSSIThreshold").get<int>(), 0);
    EXPECT_TRUE(values.contains("Device.WiFi.Radio.1.Stats.BytesSent"));
    EXPECT_FALSE(values.contains("Device.WiFi.Radio.1.DcsChannelMetrics"));
}

TEST_F(Values, ComeTabSeparatedWhenPlain) {
    EXPECT_EQ(console_.run({"get", "Device.WiFi.RadioNumberOfEntries", "--plain"}).out,
              "Device.WiFi.RadioNumberOfEntries\t3\n");
}

TEST_F(Values, OfAWildcardAreThoseOfItsInstances) {
    const Outcome outcome = console_.run({"get", "Device.WiFi.Radio.*.Name"});
    EXPECT_EQ(outcome.out,
              "Device.WiFi.Radio.1.Name => wl0\nDevice.WiFi.Radio.2.Name => wl1\nDevice.WiFi.Radio.3.Name => wl2\n");
}

TEST_F(Values, ThatCannotBeReadNowDoNotStopASearch) {
    // An access point without stations has no list of them.
    const Outcome lenient = console_.run({"get", "Device.WiFi.AccessPoint.24."});
    EXPECT_EQ(lenient.status, 0);
    EXPECT_NE(lenient.out.find("Device.WiFi.AccessPoint.24.ResetToFactory => "), std::string::npos) << lenient.out;
    EXPECT_NE(lenient.error.find("Device.WiFi.AccessPoint.24.AssociatedDeviceMacList"), std::string::npos);
    const Outcome strict = console_.run({"get", "Device.WiFi.AccessPoint.24.", "--strict"});
    EXPECT_EQ(strict.status, 1);
    EXPECT_EQ(strict.out, lenient.out);
}

TEST_F(Values, OfTheWholeTreeCanBeReadAtOnce) {
    const Outcome outcome = console_.run({"get", "Device.", "--json"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_GT(outcome.json().at("values").size(), 4000U);
}

TEST_F(Values, ThatAreSecretAreMasked) {
    const std::string path = "Device.WiFi.AccessPoint.1.Security.KeyPassphrase";
    EXPECT_EQ(console_.run({"get", path}).out, path + " => ********\n");
    EXPECT_TRUE(console_.run({"get", path, "--json"}).json().at("values").at(path).is_null());
    EXPECT_EQ(console_.run({"get", path, "--reveal"}).out, path + " => quorvel-home\n");
}

TEST_F(Values, ThatAreSecretNeedNotStandOnTheCommandLine) {
    const std::string path = "Device.WiFi.AccessPoint.1.Security.KeyPassphrase";
    const Outcome fromInput = console_.run({"set", path + "=-", "--save"}, "from standard input\n");
    EXPECT_EQ(fromInput.status, 0) << fromInput.error;
    EXPECT_EQ(fromInput.out, path + " => ********\n");
    EXPECT_EQ(console_.run({"get", path, "--reveal"}).out, path + " => from standard input\n");
    std::ofstream(console_.state() + "/passphrase") << "from a file";
    EXPECT_EQ(console_.run({"set", path + "=@" + console_.state() + "/passphrase", "--save"}).status, 0);
    EXPECT_EQ(console_.run({"get", path, "--reveal"}).out, path + " => from a file\n");
}

TEST_F(Values, OfASearchCanBeSet) {
    const Outcome outcome = console_.run({"set", "Device.WiFi.SSID.[SSID==\"Quorvel-Things\"].SSID=a=b"});
    EXPECT_EQ(outcome.out, "Device.WiFi.SSID.19.SSID => a=b\n") << outcome.error;
}

TEST_F(Values, AreExplainedWhateverTheirSearchSays) {
    for (const char* search : {"[Enable==true]", "[Alias==\"a.b\"]", "[Alias==\"a].b\"]"}) {
        const Outcome outcome = console_.run({"explain", std::string("Device.WiFi.SSID.") + search + ".SSID"});
        EXPECT_TRUE(outcome.out.starts_with("Device.WiFi.SSID.{i}.SSID\n")) << search << outcome.out << outcome.error;
    }
}

TEST_F(Values, AreNotTakenFromAmongTheCommands) {
    const Outcome outcome =
        console_.run({"batch", "-"}, "set Device.WiFi.SSID.1.SSID=-\nget Device.WiFi.SSID.1.SSID\n");
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "Device.WiFi.SSID.1.SSID => Quorvel-Home\n");
    EXPECT_NE(outcome.error.find("standard input holds the commands"), std::string::npos) << outcome.error;
}

TEST_F(Values, MayFillTheirFieldWhole) {
    const std::string path = "Device.WiFi.SSID.1.SSID";
    const std::string longest = "abcdefghijklmnopqrstuvwxyz012345";
    EXPECT_EQ(console_.run({"set", path + "=" + longest, "--save"}).status, 0);
    EXPECT_EQ(console_.run({"get", path}).out, path + " => " + longest + "\n");
}

TEST_F(Objects, ListTheirInstances) {
    EXPECT_EQ(console_.run({"instances", "Device.WiFi.Radio."}).out,
              "Device.WiFi.Radio.1.\nDevice.WiFi.Radio.2.\nDevice.WiFi.Radio.3.\n");
    EXPECT_EQ(console_.run({"instances", "--json"}).json().at("instances").at(0), "Device.WiFi.Radio.1.");
}

TEST_F(Objects, AreDescribedByTheDataModel) {
    const Json all = console_.run({"dump", "datamodel", "--json"}).json().at("parameters");
    EXPECT_EQ(all.size(), 245U);
    const Outcome one = console_.run({"dump", "datamodel", "Device.WiFi.Radio.2.Channel", "--plain"});
    EXPECT_EQ(one.out, "Device.WiFi.Radio.{i}.Channel\tunsignedInt\treadWrite\n");
}

TEST_F(Objects, AreTakenAsAWholeBySnapshot) {
    const Json taken = console_.run({"snapshot", "Device.WiFi.SSID.1.", "--json", "--hex"}).json().at("snapshot");
    EXPECT_EQ(taken.at("size"), 344);
    EXPECT_EQ(taken.at("hex").get<std::string>().size(), 688U);
    EXPECT_EQ(taken.at("fields").at(5).at("offset"), 310);
    EXPECT_EQ(taken.at("fields").at(5).at("value"), "Quorvel-Home");
}

TEST_F(Objects, OfARadioAreLaidOutToTheLastByte) {
    const Json taken = console_.run({"snapshot", "Device.WiFi.Radio.1.", "--json"}).json().at("snapshot");
    EXPECT_EQ(taken.at("size"), 9960);
    const Json fields = taken.at("fields");
    ASSERT_EQ(fields.size(), 65U);
    // The one place where nodes do not follow the order of the table.
    EXPECT_EQ(fields.at(57).at("path"), "Device.WiFi.Radio.1.BandUtilization");
    EXPECT_EQ(fields.at(64).at("offset").get<int>() + fields.at(64).at("size").get<int>(), 9958);
}

TEST_F(Objects, HideTheirSecretsInASnapshotToo) {
    const Outcome outcome = console_.run({"snapshot", "Device.WiFi.AccessPoint.1.Security.", "--hex"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.out.find("uorvel-home"), std::string::npos);
    EXPECT_EQ(console_.run({"security", "1", "--json"}).json().at("security").at("KeyPassphrase"), nullptr);
}

TEST_F(Air, IsScannedWithoutWaitingForRealTime) {
    const Json networks = console_.run({"scan", "1", "--json"}).json().at("networks");
    ASSERT_GT(networks.size(), 1U);
    EXPECT_TRUE(std::is_sorted(networks.begin(), networks.end(), [](const Json& a, const Json& b) {
        return a.at("SignalStrength").get<int>() > b.at("SignalStrength").get<int>();
    }));
}

TEST_F(Air, IsMeasuredOnAChannel) {
    const Json measured = console_.run({"channel", "1", "36", "--json"}).json();
    EXPECT_EQ(measured.at("metrics").at("channel"), 36);
    EXPECT_LT(measured.at("metrics").at("noise").get<int>(), -50);
    EXPECT_GT(measured.at("statistics").at("total").get<long>(), 0);
    EXPECT_GE(measured.at("statistics").at("total"), measured.at("statistics").at("busy"));
}

TEST_F(Air, CarriesTrafficThatCountersShow) {
    const Json statistics = console_.run({"stats", "1", "--json"}).json();
    EXPECT_EQ(statistics.at("path"), "Device.WiFi.Radio.1.Stats.");
    EXPECT_GT(statistics.at("perSecond").at("BytesSent").get<double>(), 0);
}

TEST_F(Air, HasStations) {
    const Json stations = console_.run({"stations", "1", "--json"}).json().at("stations");
    ASSERT_FALSE(stations.empty());
    for (const Json& station : stations)
        EXPECT_EQ(station.at("accessPoint"), 1);
    EXPECT_EQ(console_.run({"stations", "25"}).status, 1);
}

TEST_F(Air, LetsAStationInByPushButton) {
    const Json outcome = console_.run({"wps", "1", "push", "--json"}).json();
    EXPECT_EQ(outcome.at("accessPoint"), 1);
    EXPECT_EQ(outcome.at("state"), "a station was let in");
    EXPECT_EQ(console_.run({"wps", "1", "cancel"}).status, 0);
}

TEST_F(Many, CommandsRunInOneBatchOnOneBoard) {
    const Outcome outcome =
        console_.run({"batch", "-"}, "# a comment\n\nset " + kChannel + "=48\nget " + kChannel +
                                         "\nset 'Device.WiFi.SSID.1.SSID=two words'\nget Device.WiFi.SSID.1.SSID\n");
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.out, kChannel + " => 48\n" + kChannel +
                               " => 48\nDevice.WiFi.SSID.1.SSID => two words\nDevice.WiFi.SSID.1.SSID => two words\n");
}

TEST_F(Many, CommandsOfABatchGoOnPastAFailureWithTheWorstStatus) {
    const Outcome outcome = console_.run({"batch", "-"}, "get Device.WiFi.Nowhere\nget Device.WiFi.Radio.1.Name\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "Device.WiFi.Radio.1.Name => wl0\n");
    EXPECT_EQ(console_.run({"batch", "-"}, "dance\nget Device.WiFi.Nowhere\n").status, 2);
}

TEST_F(Many, CommandsRunInTheShell) {
    const Outcome outcome =
        console_.run({"shell"}, "get Device.WiFi.Radio.1.Name\nexit\nget Device.WiFi.Radio.2.Name\n");
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.out, "Device.WiFi.Radio.1.Name => wl0\n");
}

TEST_F(Many, ThingsStandInTheOverview) {
    const Outcome outcome = console_.run({"overview"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    for (const char* text : {"tri-band", "wlmngr2 running", "Quorvel-Home", "2.4 GHz"}) {
        EXPECT_NE(outcome.out.find(text), std::string::npos) << text;
    }
    EXPECT_TRUE(console_.run({"overview", "--json"}).json().at("board").is_object());
}

TEST_F(Many, ThingsHappenInTheDemonstrationAndNothingStaysChanged) {
    const std::string before = console_.run({"get", kChannel}).out;
    const Outcome outcome = console_.run({"demo"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_NE(outcome.out.find("--save"), std::string::npos);
    EXPECT_EQ(console_.run({"get", kChannel}).out, before);
}

}  // namespace
}  // namespace quorvel::console_test
