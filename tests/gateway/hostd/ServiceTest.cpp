#include "gateway/hostd/Service.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/gateway/hostd/fake/FakePlugin.h"

namespace quorvel::hostd {
namespace {

using Json = nlohmann::ordered_json;

struct Collected {
    Json values = Json::object();
    std::vector<Json> faults;
    Json others;
};

class Collector : public Reply {
  public:
    void part(const Json& members) override {
        for (const auto& [name, value] : members.items()) {
            if (name == "values") {
                for (const Json& item : value)
                    collected.values[item.at("path").get<std::string>()] = item.at("value");
            } else if (name == "faults") {
                for (const Json& item : value)
                    collected.faults.push_back(item);
            } else {
                collected.others[name] = value;
            }
        }
    }

    Collected collected;
};

class Requests : public testing::Test {
  protected:
    Requests() {
        fake::reset();
    }

    Collected ask(const Json& request) {
        Collector reply;
        service_.handle(request, reply);
        return reply.collected;
    }

    Collected get(const std::string& path) {
        return ask({{"do", "get"}, {"paths", {path}}});
    }

    Collected set(const std::vector<std::pair<std::string, std::string>>& settings, bool save = false) {
        Json list = Json::array();
        for (const auto& [path, value] : settings)
            list.push_back({{"path", path}, {"value", value}});
        return ask({{"do", "set"}, {"settings", list}, {"save", save}});
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
    Service service_{
        plugin_, heartbeat_, {[](const std::string& text) { return text; }, [] { return Json::object(); }}};
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
    EXPECT_EQ(reply.faults[0].at("path"), "Device.WiFi.Radio.1.Alias");
    EXPECT_EQ(reply.faults[0].at("code"), 7003);
    EXPECT_EQ(reply.faults[0].at("result"), 1);
    EXPECT_EQ(reply.faults[0].at("log"), "Impl call failed, result 1");
    EXPECT_TRUE(reply.values.contains("Device.WiFi.Radio.1.Stats.NeighboringResultNumberOfEntries"));
}

TEST_F(Requests, LeaveWriteOnlyParametersOutOfASearchAndFaultThemByName) {
    EXPECT_FALSE(get("Device.WiFi.Radio.1.").values.contains("Device.WiFi.Radio.1.Push"));
    const Collected reply = get("Device.WiFi.Radio.1.Push");
    ASSERT_EQ(reply.faults.size(), 1U);
    EXPECT_EQ(reply.faults[0].at("reason"), "the parameter can only be written");
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
    (void)ask({{"do", "measure"}, {"paths", {"Device.WiFi.Radio.1.DcsChannelMetrics"}}, {"channel", 44}});
    EXPECT_EQ(fake::state().measured, 44U);
}

TEST_F(Requests, ReadPerStationValuesForEachStation) {
    fake::state().stations = {"00:00:00:00:00:01", "00:00:00:00:00:02"};
    const Collected reply = get("Device.WiFi.AccessPoint.1.AssociatedDeviceRSSI");
    EXPECT_EQ(reply.values, (Json{{"Device.WiFi.AccessPoint.1.AssociatedDeviceRSSI[00:00:00:00:00:01]", -50},
                                  {"Device.WiFi.AccessPoint.1.AssociatedDeviceRSSI[00:00:00:00:00:02]", -50}}));
    const Collected one = get("Device.WiFi.AccessPoint.1.AssociatedDeviceRSSI[ff:00:00:00:00:09]");
    ASSERT_EQ(one.faults.size(), 1U);
    EXPECT_EQ(one.faults[0].at("log"), "no such station");
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
    EXPECT_EQ(reply.others.at("readBack"), Json::parse(R"([{"path": "Device.WiFi.Radio.2.Channel", "value": 45}])"));
    EXPECT_FALSE(set({{"Device.WiFi.Radio.1.Channel", "44"}}).others.contains("readBack"));
}

TEST_F(Requests, ApplyNothingWhenOneValueIsRefused) {
    const Collected reply = set({{"Device.WiFi.Radio.1.Channel", "40"}, {"Device.WiFi.Radio.2.Channel", "201"}}, true);
    ASSERT_EQ(reply.faults.size(), 1U);
    EXPECT_EQ(reply.faults[0].at("code"), 7012);
    EXPECT_EQ(reply.faults[0].at("path"), "Device.WiFi.Radio.2.Channel");
    EXPECT_EQ(reply.faults[0].at("result"), 8);
    EXPECT_EQ(reply.faults[0].at("log"), "Value out of range");
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
    for (const Json& fault : reply.faults)
        codes.push_back(fault.at("code").get<unsigned>());
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
    EXPECT_EQ(reply.faults[0].at("code"), 7012);
    EXPECT_EQ(reply.faults[0].at("log"), "Impl call failed");
    EXPECT_FALSE(wasCalled("save"));
}

TEST_F(Requests, TellThatSavingFailed) {
    fake::state().failSave = 1;
    const Collected reply = set({{"Device.WiFi.Radio.1.Channel", "40"}}, true);
    EXPECT_EQ(reply.values.at("Device.WiFi.Radio.1.Channel"), 40);
    ASSERT_EQ(reply.faults.size(), 1U);
    EXPECT_EQ(reply.faults[0].at("code"), 7003);
}

TEST_F(Requests, ListInstances) {
    fake::state().categories = 1;
    const Collected reply = ask({{"do", "instances"}, {"paths", {"Device.WiFi."}}});
    EXPECT_EQ(reply.others.at("instances"), (Json{"Device.WiFi.Radio.1.", "Device.WiFi.Radio.2.",
                                                  "Device.WiFi.AccessPoint.1.", "Device.WiFi.AccessPoint.1.AC.1."}));
}

TEST_F(Requests, TellAParameterFromAnObject) {
    const Collected reply = ask({{"do", "instances"}, {"paths", {"Device.WiFi.Radio.1.Channel"}}});
    ASSERT_EQ(reply.faults.size(), 1U);
    EXPECT_EQ(reply.faults.front().at("path"), "Device.WiFi.Radio.1.Channel");
    EXPECT_EQ(reply.faults.front().at("reason"), "this is a parameter, not an object");
}

TEST_F(Requests, DescribeTheDataModel) {
    const Collected reply = ask({{"do", "datamodel"}, {"paths", {"Device.WiFi.Radio.7.Push"}}});
    EXPECT_EQ(reply.others.at("parameters"),
              Json::array({{{"path", "Device.WiFi.Radio.{i}.Push"}, {"type", "string"}, {"access", "writeOnly"}}}));
    EXPECT_EQ(ask({{"do", "datamodel"}, {"paths", {"Device."}}}).others.at("parameters").size(), 19U);
}

TEST_F(Requests, CompletePathsWithLiveInstances) {
    const auto complete = [this](const char* path) {
        return ask({{"do", "complete"}, {"path", path}}).others.at("completions");
    };
    EXPECT_EQ(complete("Dev"), Json::array({"Device."}));
    EXPECT_EQ(complete("Device.WiFi.Radio."),
              (Json{"Device.WiFi.Radio.1.", "Device.WiFi.Radio.2.", "Device.WiFi.Radio.*."}));
    EXPECT_EQ(complete("Device.WiFi.Radio.1.Ch"), Json::array({"Device.WiFi.Radio.1.Channel"}));
    EXPECT_EQ(complete("Device.Nowhere.x"), Json::array());
}

TEST_F(Requests, TakeASnapshotLaidOutAsTheContext) {
    const Json taken = ask({{"do", "snapshot"}, {"path", "Device.WiFi.Radio.2."}}).others.at("snapshot");
    EXPECT_EQ(taken.at("size"), 152);
    const Json& fields = taken.at("fields");
    // The context ends before Push and the measurement, so there is no layout to show.
    EXPECT_TRUE(fields.empty());
    EXPECT_EQ(taken.at("hex").get<std::string>().substr(2 * 132, 2), "01");
    EXPECT_EQ(taken.at("hex").get<std::string>().substr(2 * 144, 10), "6669727374");
}

TEST_F(Requests, FaultARequestThatIsUnknown) {
    const Collected reply = ask({{"do", "dance"}});
    ASSERT_EQ(reply.faults.size(), 1U);
    EXPECT_EQ(reply.faults[0].at("code"), 7003);
}

}  // namespace
}  // namespace quorvel::hostd
