#include "gateway/hostd/Service.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/gateway/hostd/fake/FakePlugin.h"

namespace quorvel::hostd {
namespace {

using Json = nlohmann::ordered_json;

struct Collected {
    Json values = Json::object();
    std::vector<Fault> faults;
    std::vector<protocol::Part> parts;

    // Returns the elements of one list member of all parts.
    template <typename Item>
    [[nodiscard]] std::vector<Item> all(std::vector<Item> protocol::Part::*member) const {
        std::vector<Item> items;
        for (const protocol::Part& part : parts)
            items.insert(items.end(), (part.*member).begin(), (part.*member).end());
        return items;
    }
};

unsigned codeOf(const Fault& fault) {
    return static_cast<unsigned>(fault.code);
}

std::vector<std::string> textOf(const std::vector<protocol::PathValue>& values) {
    std::vector<std::string> texts;
    for (const protocol::PathValue& each : values)
        texts.push_back(each.path + "=" + each.value.dump());
    return texts;
}

class Collector : public Reply {
  public:
    void part(const protocol::Part& part) override {
        for (const protocol::PathValue& each : part.values)
            collected.values[each.path] = each.value;
        collected.faults.insert(collected.faults.end(), part.faults.begin(), part.faults.end());
        collected.parts.push_back(part);
    }

    Collected collected;
};

class Requests : public testing::Test {
  protected:
    Requests() {
        fake::reset();
    }

    template <typename Request>
    Collected ask(const Request& request) {
        Collector reply;
        service_.answer(request, reply);
        return reply.collected;
    }

    Collected get(const std::string& path) {
        return ask(protocol::Get{{path}, 0, 0});
    }

    static protocol::Set setting(const std::vector<std::pair<std::string, std::string>>& settings) {
        protocol::Set request;
        for (const auto& [path, value] : settings)
            request.settings.push_back({path, value});
        return request;
    }

    Collected set(const std::vector<std::pair<std::string, std::string>>& settings, bool save = false) {
        protocol::Set request = setting(settings);
        request.save = save;
        return ask(request);
    }

    static std::vector<std::string> callsSince(std::size_t first) {
        const auto& calls = fake::state().calls;
        return {calls.begin() + static_cast<std::ptrdiff_t>(first), calls.end()};
    }

    static bool wasCalled(const std::string& call) {
        const auto& calls = fake::state().calls;
        return std::find(calls.begin(), calls.end(), call) != calls.end();
    }

    Plugin plugin_{QUORVEL_FAKE_PLUGIN};
    Heartbeat heartbeat_;
    std::vector<protocol::Change> changes_;
    Service service_{
        plugin_, heartbeat_, {{}, [this](protocol::Change change) { changes_.push_back(std::move(change)); }}};
};

TEST_F(Requests, ReadEveryTypeAtEveryDepth) {
    fake::state().stations = {"00:00:00:00:00:01"};
    const std::pair<const char*, Json> expected[] = {
        {"Device.WiFi.Bridge", "br0"},
        {"Device.WiFi.RadioNumberOfEntries", 2},
        {"Device.WiFi.Radio.2.Enable", true},
        {"Device.WiFi.Radio.2.Channel", 37},
        {"Device.WiFi.Radio.2.Power", -3},
        {"Device.WiFi.Radio.2.Alias", "first"},
        {"Device.WiFi.AccessPoint.1.AssociatedDevice.1.MACAddress", "00:00:00:00:00:01"},
        {"Device.WiFi.AccessPoint.1.AssociatedDevice.1.Signal", -11},
        {"Device.WiFi.AccessPoint.1.AC.2.Policy", true},
    };
    for (const auto& [path, value] : expected) {
        const Collected reply = get(path);
        EXPECT_TRUE(reply.faults.empty()) << path;
        EXPECT_EQ(reply.values.value(path, Json(nullptr)), value) << path;
    }
}

TEST_F(Requests, ShowBytesThatNoTerminalTakesAsEscapes) {
    fake::state().alias = "a\x01\xff\xc3\xa9";
    EXPECT_EQ(get("Device.WiFi.Radio.1.Alias").values.at("Device.WiFi.Radio.1.Alias"), "a\\x01\\xff\xc3\xa9");
}

TEST_F(Requests, GoOnPastAParameterThatCannotBeRead) {
    fake::state().failGet = 1;
    const Collected reply = get("Device.WiFi.Radio.1.");
    ASSERT_EQ(reply.faults.size(), 1U);
    EXPECT_EQ(reply.faults[0].path, "Device.WiFi.Radio.1.Alias");
    EXPECT_EQ(codeOf(reply.faults[0]), 7003U);
    EXPECT_EQ(reply.faults[0].result, 1U);
    EXPECT_EQ(reply.faults[0].log, "Impl call failed, result 1");
    EXPECT_TRUE(reply.values.contains("Device.WiFi.Radio.1.Stats.NeighboringResultNumberOfEntries"));
}

TEST_F(Requests, LeaveWriteOnlyParametersOutOfASearchAndFaultThemByName) {
    EXPECT_FALSE(get("Device.WiFi.Radio.1.").values.contains("Device.WiFi.Radio.1.Push"));
    const Collected reply = get("Device.WiFi.Radio.1.Push");
    ASSERT_EQ(reply.faults.size(), 1U);
    EXPECT_EQ(reply.faults[0].reason, "the parameter can only be written");
}

TEST_F(Requests, MeasureAChannelOnlyWhenAskedByName) {
    EXPECT_FALSE(get("Device.WiFi.Radio.2.").values.contains("Device.WiFi.Radio.2.DcsChannelMetrics"));
    EXPECT_EQ(fake::state().measured, 0U);
    const Collected reply = get("Device.WiFi.Radio.2.DcsChannelMetrics");
    EXPECT_EQ(fake::state().measured, 37U);
    const Json record = reply.values.at("Device.WiFi.Radio.2.DcsChannelMetrics");
    EXPECT_EQ(record.at("noise"), -91);
    EXPECT_EQ(record.at("accessPoints"), Json::array({{{"bssid", "02:00:00:00:00:09"}, {"width", 0}, {"rssi", -40}}}));
}

TEST_F(Requests, MeasureTheChannelThatIsGiven) {
    (void)ask(protocol::Measure{{"Device.WiFi.Radio.1.DcsChannelMetrics"}, 44});
    EXPECT_EQ(fake::state().measured, 44U);
}

TEST_F(Requests, ReadPerStationValuesForEachStation) {
    fake::state().stations = {"00:00:00:00:00:01", "00:00:00:00:00:02"};
    const Collected reply = get("Device.WiFi.AccessPoint.1.AssociatedDeviceRSSI");
    EXPECT_EQ(reply.values, (Json{{"Device.WiFi.AccessPoint.1.AssociatedDeviceRSSI[00:00:00:00:00:01]", -50},
                                  {"Device.WiFi.AccessPoint.1.AssociatedDeviceRSSI[00:00:00:00:00:02]", -50}}));
    const Collected one = get("Device.WiFi.AccessPoint.1.AssociatedDeviceRSSI[ff:00:00:00:00:09]");
    ASSERT_EQ(one.faults.size(), 1U);
    EXPECT_EQ(one.faults[0].log, "no such station");
}

TEST_F(Requests, StageAllAndApplyOncePerInstance) {
    const Collected reply = set({{"Device.WiFi.Radio.2.Channel", "44"},
                                 {"Device.WiFi.Radio.1.Channel", "40"},
                                 {"Device.WiFi.Radio.2.Alias", "second"},
                                 {"Device.WiFi.Bridge", "br1"}});
    EXPECT_TRUE(reply.faults.empty());
    std::vector<std::string> applied;
    for (const std::string& call : callsSince(0)) {
        if (call.starts_with("apply")) applied.push_back(call);
    }
    EXPECT_EQ(applied, (std::vector<std::string>{"apply radio 2 third 1", "apply radio 1 third 1", "apply top"}));
    EXPECT_EQ(fake::state().alias, "second");
}

TEST_F(Requests, TellWhatReadsDifferentlyOnceItIsApplied) {
    // The second radio is always a channel above the first.
    const Collected reply = set({{"Device.WiFi.Radio.2.Channel", "44"}, {"Device.WiFi.Radio.2.Alias", "second"}});
    EXPECT_TRUE(reply.faults.empty());
    EXPECT_EQ(reply.values.at("Device.WiFi.Radio.2.Channel"), 44);
    EXPECT_EQ(textOf(reply.all(&protocol::Part::readBack)),
              (std::vector<std::string>{"Device.WiFi.Radio.2.Channel=45"}));
    EXPECT_TRUE(set({{"Device.WiFi.Radio.1.Channel", "44"}}).all(&protocol::Part::readBack).empty());
}

TEST_F(Requests, ApplyNothingWhenOneValueIsRefused) {
    const Collected reply = set({{"Device.WiFi.Radio.1.Channel", "40"}, {"Device.WiFi.Radio.2.Channel", "201"}}, true);
    ASSERT_EQ(reply.faults.size(), 1U);
    EXPECT_EQ(codeOf(reply.faults[0]), 7012U);
    EXPECT_EQ(reply.faults[0].path, "Device.WiFi.Radio.2.Channel");
    EXPECT_EQ(reply.faults[0].result, 8U);
    EXPECT_EQ(reply.faults[0].log, "Value out of range");
    EXPECT_FALSE(wasCalled("apply radio 1 third 1"));
    EXPECT_FALSE(wasCalled("save"));
    EXPECT_EQ(fake::state().channel, 36U);
}

TEST_F(Requests, StageNothingWhenOneSettingMakesNoSense) {
    const Collected reply = set({{"Device.WiFi.Radio.1.Channel", "40"},
                                 {"Device.WiFi.RadioNumberOfEntries", "3"},
                                 {"Device.WiFi.Radio.1.Channel", "x"},
                                 {"Device.WiFi.Radio.1.Channel", "4294967296"},
                                 {"Device.WiFi.Radio.1.Channel", "-1"},
                                 {"Device.WiFi.Radio.1.Power", "2147483648"},
                                 {"Device.WiFi.Radio.1.Enable", "maybe"},
                                 {"Device.WiFi.Radio.9.Channel", "1"},
                                 {"Device.WiFi.Radio.1.Chanel", "1"},
                                 {"Device.WiFi.Radio.1.", "1"}});
    std::vector<unsigned> codes;
    for (const Fault& fault : reply.faults)
        codes.push_back(codeOf(fault));
    EXPECT_EQ(codes, (std::vector<unsigned>{7013, 7011, 7012, 7011, 7012, 7011, 7016, 7026, 7026}));
    EXPECT_FALSE(wasCalled("stage Channel 1 40"));
}

TEST_F(Requests, WriteAtOnceOnlyAfterEverythingElseIsStaged) {
    (void)set({{"Device.WiFi.AccessPoint.1.AC.2.Limit", "3"}, {"Device.WiFi.Radio.1.Channel", "201"}});
    EXPECT_TRUE(fake::state().immediate.empty());
    (void)set({{"Device.WiFi.AccessPoint.1.AC.2.Limit", "3"}, {"Device.WiFi.AccessPoint.1.AC.2.Name", "voice"}});
    EXPECT_EQ(fake::state().immediate, std::vector<std::string>{"2=3"});
    EXPECT_TRUE(wasCalled("stage Name voice"));
    EXPECT_TRUE(wasCalled("apply category 1 2"));
}

TEST_F(Requests, ReachTheIrregularSettersOfDepthTwo) {
    const Collected reply =
        set({{"Device.WiFi.AccessPoint.1.AC.1.Policy", "false"}, {"Device.WiFi.AccessPoint.1.AC.1.Order", "5"}});
    EXPECT_TRUE(reply.faults.empty());
    EXPECT_TRUE(wasCalled("stage Policy 0"));
    EXPECT_TRUE(wasCalled("stage Order 5"));
}

TEST_F(Requests, SetEveryInstanceOfAWildcard) {
    EXPECT_TRUE(set({{"Device.WiFi.Radio.*.Channel", "48"}}).faults.empty());
    EXPECT_TRUE(wasCalled("apply radio 1 third 1"));
    EXPECT_TRUE(wasCalled("apply radio 2 third 1"));
}

TEST_F(Requests, SaveOnlyWhatWasApplied) {
    EXPECT_TRUE(set({{"Device.WiFi.Radio.1.Channel", "40"}}).faults.empty());
    EXPECT_FALSE(wasCalled("save"));
    EXPECT_TRUE(set({{"Device.WiFi.Radio.1.Channel", "40"}}, true).faults.empty());
    EXPECT_EQ(fake::state().calls.back(), "save");
    fake::reset().failApply = 1;
    const Collected reply = set({{"Device.WiFi.Radio.1.Channel", "40"}}, true);
    ASSERT_EQ(reply.faults.size(), 1U);
    EXPECT_EQ(codeOf(reply.faults[0]), 7012U);
    EXPECT_EQ(reply.faults[0].log, "Impl call failed");
    EXPECT_FALSE(wasCalled("save"));
}

TEST_F(Requests, TellThatSavingFailed) {
    fake::state().failSave = 1;
    const Collected reply = set({{"Device.WiFi.Radio.1.Channel", "40"}}, true);
    EXPECT_EQ(reply.values.at("Device.WiFi.Radio.1.Channel"), 40);
    ASSERT_EQ(reply.faults.size(), 1U);
    EXPECT_EQ(codeOf(reply.faults[0]), 7003U);
}

TEST_F(Requests, ListInstances) {
    fake::state().categories = 1;
    const Collected reply = ask(protocol::Instances{{"Device.WiFi."}});
    EXPECT_EQ(reply.all(&protocol::Part::instances),
              (std::vector<std::string>{"Device.WiFi.Radio.1.", "Device.WiFi.Radio.2.", "Device.WiFi.AccessPoint.1.",
                                        "Device.WiFi.AccessPoint.1.AC.1."}));
}

TEST_F(Requests, TellAParameterFromAnObject) {
    const Collected reply = ask(protocol::Instances{{"Device.WiFi.Radio.1.Channel"}});
    ASSERT_EQ(reply.faults.size(), 1U);
    EXPECT_EQ(reply.faults.front().path, "Device.WiFi.Radio.1.Channel");
    EXPECT_EQ(reply.faults.front().reason, "this is a parameter, not an object");
}

TEST_F(Requests, DescribeTheDataModel) {
    const auto describe = [this](const char* path) {
        Collector reply;
        service_.describe(protocol::Describe{{path}}, reply);
        return reply.collected;
    };
    const std::vector<protocol::ParameterDescription> one =
        describe("Device.WiFi.Radio.7.Push").all(&protocol::Part::parameters);
    ASSERT_EQ(one.size(), 1U);
    EXPECT_EQ(one[0].path, "Device.WiFi.Radio.{i}.Push");
    EXPECT_EQ(one[0].type, protocol::ParameterType::kText);
    EXPECT_EQ(one[0].access, protocol::Access::kWriteOnly);
    EXPECT_EQ(describe("Device.").all(&protocol::Part::parameters).size(), 19U);
    EXPECT_EQ(describe("Device.WiFi.Radio.1.DcsChannelMetrics").all(&protocol::Part::parameters).at(0).kind,
              protocol::ParameterKind::kMeasurement);
    EXPECT_TRUE(describe("Device.WiFi.AccessPoint.1.AC.1.Limit").all(&protocol::Part::parameters).at(0).atOnce);
    const Collected none = describe("Device.WiFi.Radio.1.Chanel");
    ASSERT_EQ(none.faults.size(), 1U);
    EXPECT_EQ(none.faults[0].suggestion, "Device.WiFi.Radio.1.Channel");
    EXPECT_TRUE(fake::state().calls.empty());
}

TEST_F(Requests, CompletePathsWithLiveInstances) {
    const auto complete = [this](const char* path) {
        return ask(protocol::Complete{path}).all(&protocol::Part::completions);
    };
    using Texts = std::vector<std::string>;
    EXPECT_EQ(complete("Dev"), Texts{"Device."});
    EXPECT_EQ(complete("Device.WiFi.Radio."),
              (Texts{"Device.WiFi.Radio.1.", "Device.WiFi.Radio.2.", "Device.WiFi.Radio.*."}));
    EXPECT_EQ(complete("Device.WiFi.Radio.1.Ch"), Texts{"Device.WiFi.Radio.1.Channel"});
    EXPECT_EQ(complete("Device.Nowhere.x"), Texts{});
}

TEST_F(Requests, TakeASnapshotLaidOutAsTheContext) {
    const Collected reply = ask(protocol::TakeSnapshot{"Device.WiFi.Radio.2."});
    ASSERT_EQ(reply.parts.size(), 1U);
    ASSERT_TRUE(reply.parts[0].snapshot);
    const protocol::Snapshot& taken = *reply.parts[0].snapshot;
    EXPECT_EQ(taken.size, 152U);
    // The context ends before Push and the measurement, so there is no layout to show.
    EXPECT_TRUE(taken.fields.empty());
    EXPECT_EQ(taken.hex.substr(2 * 132, 2), "01");
    EXPECT_EQ(taken.hex.substr(2 * 144, 10), "6669727374");
}

TEST_F(Requests, SayToWhichPathValuesAndFaultsBelong) {
    const Collected reply = ask(protocol::Get{{"Device.WiFi.Radio.1.Channel", "Device.WiFi.Radio.9.Channel",
                                               "Device.WiFi.Radio.[Channel==99].Channel", "Device.WiFi.Bridge"},
                                              0,
                                              0});
    ASSERT_EQ(reply.parts.size(), 3U);
    EXPECT_EQ(reply.parts[0].of, 0U);
    EXPECT_EQ(textOf(reply.parts[0].values), (std::vector<std::string>{"Device.WiFi.Radio.1.Channel=36"}));
    EXPECT_EQ(reply.parts[1].of, 1U);
    EXPECT_EQ(codeOf(reply.parts[1].faults.at(0)), 7016U);
    EXPECT_EQ(reply.parts[2].of, 3U);
}

TEST_F(Requests, ReadAgainUnlessOlderValuesWillDo) {
    const auto channel = [this](double maxAge) {
        return ask(protocol::Get{{"Device.WiFi.Radio.1.Channel"}, 0, maxAge}).values.begin()->get<unsigned>();
    };
    EXPECT_EQ(channel(1000), 36U);
    fake::state().channel = 40;
    EXPECT_EQ(channel(1000), 36U);
    EXPECT_EQ(channel(0), 40U);
    Collector reply;
    EXPECT_TRUE(service_.answerFromRecent(protocol::Get{{"Device.WiFi.Radio.1.Channel"}, 0, 1000}, reply));
    EXPECT_EQ(reply.collected.values, (Json{{"Device.WiFi.Radio.1.Channel", 36}}));
    EXPECT_FALSE(service_.answerFromRecent(protocol::Get{{"Device.WiFi.Radio.2.Channel"}, 0, 1000}, reply));
    EXPECT_FALSE(service_.answerFromRecent(protocol::Get{{"Device.WiFi.Radio.1.Channel"}, 1, 1000}, reply));
    // A value that is written is not an older one any more.
    EXPECT_TRUE(set({{"Device.WiFi.Radio.1.Channel", "44"}}).faults.empty());
    EXPECT_EQ(channel(1000), 44U);
}

TEST_F(Requests, CheckSettingsWithoutApplyingThem) {
    protocol::Set request = setting({{"Device.WiFi.Radio.1.Channel", "40"}, {"Device.WiFi.Radio.2.Channel", "201"}});
    request.checkOnly = true;
    EXPECT_EQ(ask(request).faults.size(), 1U);
    request.settings[1].value = "44";
    EXPECT_TRUE(ask(request).faults.empty());
    request.settings.push_back({"Device.WiFi.AccessPoint.1.AC.2.Limit", "3"});
    EXPECT_TRUE(ask(request).faults.empty());
    EXPECT_TRUE(fake::state().immediate.empty());
    EXPECT_FALSE(wasCalled("apply radio 1 third 1"));
    EXPECT_EQ(fake::state().channel, 36U);
    EXPECT_TRUE(changes_.empty());
}

TEST_F(Requests, SetTheOthersWhenASettingThatIsNotNeededIsRefused) {
    protocol::Set request = setting({{"Device.WiFi.Radio.1.Channel", "201"},
                                     {"Device.WiFi.Radio.1.Alias", "second"},
                                     {"Device.WiFi.Radio.1.Chanel", "1"},
                                     {"Device.WiFi.Radio.2.Channel", "201"}});
    for (protocol::Setting& each : request.settings)
        each.needed = each.path.ends_with("Alias");
    const Collected reply = ask(request);
    std::vector<unsigned> codes;
    for (const Fault& fault : reply.faults)
        codes.push_back(codeOf(fault));
    EXPECT_EQ(codes, (std::vector<unsigned>{7026, 7012, 7012}));
    EXPECT_EQ(fake::state().alias, "second");
    EXPECT_EQ(reply.values, (Json{{"Device.WiFi.Radio.1.Alias", "second"}}));
    // An object of which nothing was staged is left alone.
    EXPECT_EQ(reply.all(&protocol::Part::applied), std::vector<std::string>{"Device.WiFi.Radio.1."});
    EXPECT_FALSE(wasCalled("apply radio 2 third 1"));
}

TEST_F(Requests, ReportEveryRefusalWhenAskedTo) {
    protocol::Set request = setting({{"Device.WiFi.Radio.1.Channel", "201"}, {"Device.WiFi.Radio.2.Channel", "202"}});
    EXPECT_EQ(ask(request).faults.size(), 1U);
    request.everyFault = true;
    const Collected reply = ask(request);
    ASSERT_EQ(reply.faults.size(), 2U);
    EXPECT_EQ(reply.faults[1].path, "Device.WiFi.Radio.2.Channel");
    EXPECT_FALSE(wasCalled("apply radio 1 third 1"));
}

TEST_F(Requests, WriteBackTheValuesBeforeWhenAnObjectCannotBeApplied) {
    protocol::Set request = setting({{"Device.WiFi.AccessPoint.1.AC.2.Limit", "3"},
                                     {"Device.WiFi.Bridge", "br1"},
                                     {"Device.WiFi.Radio.1.Channel", "44"}});
    request.undo = true;
    fake::state().failApply = 1;
    const Collected reply = ask(request);
    ASSERT_FALSE(reply.faults.empty());
    EXPECT_EQ(reply.faults[0].path, "Device.WiFi.Radio.1.Channel");
    // The bridge was applied before the radio; its value is staged and applied once more.
    std::size_t applied = 0;
    for (const std::string& call : callsSince(0))
        applied += call == "apply top" ? 1 : 0;
    EXPECT_EQ(applied, 2U);
    const auto& immediate = fake::state().immediate;
    ASSERT_EQ(immediate.size(), 2U);
    EXPECT_EQ(immediate[0], "2=3");
    EXPECT_NE(immediate[1], "2=3");
}

TEST_F(Requests, TellWhatHasChanged) {
    (void)set({{"Device.WiFi.Radio.1.Channel", "44"}, {"Device.WiFi.Bridge", "br1"}}, true);
    ASSERT_EQ(changes_.size(), 2U);
    EXPECT_EQ(changes_[0].kind, protocol::ChangeKind::kValues);
    EXPECT_EQ(changes_[0].paths, (std::vector<std::string>{"Device.WiFi.Radio.1.Channel", "Device.WiFi.Bridge"}));
    EXPECT_EQ(changes_[1].kind, protocol::ChangeKind::kSaved);
}

TEST_F(Requests, SaveTheRunningConfiguration) {
    EXPECT_TRUE(ask(protocol::Save{}).faults.empty());
    EXPECT_EQ(fake::state().calls.back(), "save");
    fake::state().failSave = 1;
    EXPECT_EQ(ask(protocol::Save{}).faults.size(), 1U);
}

TEST_F(Requests, TellWhichWatchedValuesHaveChanged) {
    Watched watched;
    watched.request.paths = {"Device.WiFi.Radio.1.Channel", "Device.WiFi.AccessPoint.1.AssociatedDevice."};
    const auto look = [&] {
        Collector reply;
        service_.look(watched, reply);
        return reply.collected;
    };
    const Collected first = look();
    EXPECT_TRUE(first.values.empty());
    ASSERT_EQ(first.parts.size(), 1U);
    EXPECT_EQ(first.parts[0].listening, true);
    EXPECT_TRUE(look().parts.empty());
    fake::state().channel = 40;
    fake::state().stations = {"00:00:00:00:00:01"};
    const Collected second = look();
    EXPECT_EQ(second.values.value("Device.WiFi.Radio.1.Channel", 0), 40);
    EXPECT_EQ(second.values.value("Device.WiFi.AccessPoint.1.AssociatedDevice.1.MACAddress", ""), "00:00:00:00:00:01");
    fake::state().stations.clear();
    const Collected third = look();
    EXPECT_TRUE(third.values.empty());
    const std::vector<std::string> gone = third.all(&protocol::Part::gone);
    EXPECT_NE(std::find(gone.begin(), gone.end(), "Device.WiFi.AccessPoint.1.AssociatedDevice.1.MACAddress"),
              gone.end());
}

}  // namespace
}  // namespace quorvel::hostd
