// Get, GetInstances, GetSupportedDM and GetSupportedProtocol.
#include <algorithm>
#include <set>

#include "tests/agent/conformance/Lab.h"

namespace quorvel::agent_test {
namespace {

const std::string kTable = kSubscriptions;

class Reading : public Tp469 {
  protected:
    static const auto& path(const usp::Msg& answer, int index = 0) {
        return answer.body().response().get_resp().req_path_results(index);
    }
    static const auto& object(const usp::Msg& answer, int index = 0) {
        return answer.body().response().get_supported_dm_resp().req_obj_results(index);
    }
    static std::set<std::string> objectsOf(const usp::Msg& answer) {
        std::set<std::string> paths;
        for (const auto& each : object(answer).supported_objs())
            paths.insert(each.supported_obj_path());
        return paths;
    }
    // The rows that a Get with this path behind the table finds.
    std::size_t found(const std::string& behind) {
        return static_cast<std::size_t>(path(ask(get({kTable + behind}))).resolved_path_results_size());
    }
};

TEST_F(Reading, T1_36_GetOneParameter) {
    const usp::Msg answer = ask(get({"Device.LocalAgent.EndpointID"}));
    ASSERT_EQ(path(answer).resolved_path_results_size(), 1) << answer.DebugString();
    EXPECT_EQ(path(answer).requested_path(), "Device.LocalAgent.EndpointID");
    EXPECT_EQ(path(answer).resolved_path_results(0).resolved_path(), "Device.LocalAgent.");
    EXPECT_EQ(path(answer).resolved_path_results(0).result_params().at("EndpointID"), kAgentId);
}

TEST_F(Reading, T1_37_GetTwoParametersOfOneObject) {
    const usp::Msg answer = ask(get({"Device.LocalAgent.EndpointID", "Device.LocalAgent.SoftwareVersion"}));
    ASSERT_EQ(answer.body().response().get_resp().req_path_results_size(), 2);
    EXPECT_EQ(path(answer, 1).resolved_path_results(0).result_params().count("SoftwareVersion"), 1U);
}

TEST_F(Reading, T1_38_GetAnUnknownParameter) {
    const usp::Msg answer = ask(get({"Device.LocalAgent.InvalidParameter"}));
    EXPECT_TRUE(path(answer).err_code() == 7026 || path(answer).err_code() == 7016) << answer.DebugString();
}

TEST_F(Reading, T1_39_GetAKnownAndAnUnknownParameter) {
    const usp::Msg answer = ask(get({"Device.LocalAgent.InvalidParameter", "Device.LocalAgent.EndpointID"}));
    EXPECT_NE(path(answer, 0).err_code(), 0U);
    EXPECT_EQ(path(answer, 1).err_code(), 0U);
    EXPECT_EQ(path(answer, 1).resolved_path_results_size(), 1);
}

TEST_F(Reading, T1_40_GetOneObject) {
    const usp::Msg answer = ask(get({"Device.LocalAgent."}));
    EXPECT_EQ(path(answer).err_code(), 0U);
    std::set<std::string> groups;
    for (const auto& group : path(answer).resolved_path_results())
        EXPECT_TRUE(groups.insert(group.resolved_path()).second) << group.resolved_path() << " came twice";
    EXPECT_TRUE(groups.contains("Device.LocalAgent."));
    EXPECT_TRUE(groups.contains(kOwnController));
}

TEST_F(Reading, T1_41_GetTwoObjects) {
    const usp::Msg answer = ask(get({"Device.DeviceInfo.", "Device.LocalAgent."}));
    EXPECT_EQ(path(answer, 0).resolved_path_results(0).resolved_path(), "Device.DeviceInfo.");
    EXPECT_GT(path(answer, 1).resolved_path_results_size(), 1);
}

TEST_F(Reading, T1_42_GetAnUnknownObject) {
    const usp::Msg answer = ask(get({"Device.LocalAgent.InvalidObject."}));
    EXPECT_TRUE(path(answer).err_code() == 7026 || path(answer).err_code() == 7016) << answer.DebugString();
}

TEST_F(Reading, T1_43_GetByUniqueKey) {
    const usp::Msg answer =
        ask(get({std::string("Device.LocalAgent.Controller.[EndpointID==\"") + kControllerId + "\"].Enable"}));
    ASSERT_EQ(path(answer).resolved_path_results_size(), 1) << answer.DebugString();
    EXPECT_EQ(path(answer).resolved_path_results(0).resolved_path(), kOwnController);
}

TEST_F(Reading, T1_44_GetByWildcard) {
    (void)subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    (void)subscribe("b", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    EXPECT_EQ(found("*.ID"), 2U);
}

class Operators : public Reading {
  protected:
    void SetUp() override {
        (void)subscribe("five", "ValueChange", "Device.DeviceInfo.ProvisioningCode", {{"NotifExpiration", "5"}});
        (void)subscribe("seven", "ValueChange", "Device.DeviceInfo.ProvisioningCode", {{"NotifExpiration", "7"}});
    }
};

TEST_F(Operators, T1_45_Equal) {
    EXPECT_EQ(found("[NotifExpiration==5].ID"), 1U);
    EXPECT_EQ(found("[ID==\"seven\"].ID"), 1U);
}

TEST_F(Operators, T1_46_NotEqual) {
    EXPECT_EQ(found("[NotifExpiration!=5].ID"), 1U);
}

TEST_F(Operators, T1_47_Less) {
    EXPECT_EQ(found("[NotifExpiration<7].ID"), 1U);
}

TEST_F(Operators, T1_48_Greater) {
    EXPECT_EQ(found("[NotifExpiration>5].ID"), 1U);
}

TEST_F(Operators, T1_49_LessOrEqual) {
    EXPECT_EQ(found("[NotifExpiration<=7].ID"), 2U);
}

TEST_F(Operators, T1_50_GreaterOrEqual) {
    EXPECT_EQ(found("[NotifExpiration>=7].ID"), 1U);
}

TEST_F(Operators, T1_51_SeveralConditions) {
    EXPECT_EQ(found("[NotifExpiration>=5&&ID==\"five\"].ID"), 1U);
    EXPECT_EQ(found("[NotifExpiration>=7&&ID==\"five\"].ID"), 0U);
}

TEST_F(Reading, T1_66_InstancesOfOneTable) {
    const std::string row = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const usp::Msg answer = ask(instances({kTable}, true));
    EXPECT_EQ(instancesOf(answer), std::vector<std::string>{row});
    const auto& keys = answer.body().response().get_instances_resp().req_path_results(0).curr_insts(0).unique_keys();
    EXPECT_EQ(keys.at("ID"), "a");
    EXPECT_EQ(keys.at("Recipient"), "Device.LocalAgent.Controller.1");
    EXPECT_EQ(keys.count("Alias"), 1U);
}

TEST_F(Reading, T1_67_InstancesOfTwoTables) {
    const usp::Msg answer = ask(instances({"Device.LocalAgent.Controller.", "Device.LocalAgent.MTP."}, true));
    EXPECT_EQ(instancesOf(answer, 0), std::vector<std::string>{kOwnController});
    EXPECT_EQ(instancesOf(answer, 1).size(), 2U);
}

TEST_F(Reading, T1_68_InstancesByKey) {
    const usp::Msg answer = ask(
        instances({std::string("Device.LocalAgent.Controller.[EndpointID==\"") + kControllerId + "\"].MTP."}, true));
    EXPECT_FALSE(instancesOf(answer).empty()) << answer.DebugString();
}

TEST_F(Reading, T1_69_InstancesByWildcard) {
    const usp::Msg answer = ask(instances({"Device.LocalAgent.Controller.*.MTP."}, true));
    EXPECT_FALSE(instancesOf(answer).empty()) << answer.DebugString();
}

TEST_F(Reading, T1_70_InstancesBySearch) {
    const usp::Msg answer = ask(instances({"Device.LocalAgent.Controller.[Enable==true].MTP."}, true));
    EXPECT_FALSE(instancesOf(answer).empty()) << answer.DebugString();
}

TEST_F(Reading, T1_71_InstancesOfAllLevels) {
    const std::vector<std::string> found = instancesOf(ask(instances({"Device.LocalAgent.Controller."}, false)));
    EXPECT_TRUE(std::any_of(found.begin(), found.end(), [](const std::string& path) {
        return path.starts_with("Device.LocalAgent.Controller.1.MTP.");
    }));
}

TEST_F(Reading, T1_72_SupportedModelOfOneObject) {
    const usp::Msg answer = ask(supported({"Device.LocalAgent."}));
    EXPECT_EQ(object(answer).err_code(), 0U);
    EXPECT_TRUE(objectsOf(answer).contains("Device.LocalAgent.Subscription.{i}."));
    EXPECT_EQ(object(answer).data_model_inst_uri(), "urn:broadband-forum-org:tr-181-2-19-0");
}

TEST_F(Reading, T1_73_SupportedModelOfTheFirstLevel) {
    const std::set<std::string> found = objectsOf(ask(supported({"Device.LocalAgent."}, true)));
    EXPECT_TRUE(found.contains("Device.LocalAgent.Controller.{i}."));
    EXPECT_FALSE(found.contains("Device.LocalAgent.Controller.{i}.MTP.{i}."));
}

TEST_F(Reading, T1_74_SupportedModelOfTwoObjects) {
    const usp::Msg answer = ask(supported({"Device.LocalAgent.", "Device.DeviceInfo."}));
    EXPECT_EQ(answer.body().response().get_supported_dm_resp().req_obj_results_size(), 2);
    EXPECT_EQ(object(answer, 1).supported_objs_size(), 1);
}

TEST_F(Reading, T1_75_SupportedModelOfTheRoot) {
    const std::set<std::string> found = objectsOf(ask(supported({"Device."})));
    for (const char* each : {"Device.", "Device.DeviceInfo.", "Device.LocalAgent.Controller.{i}.",
                             "Device.MQTT.Client.{i}.Subscription.{i}.", "Device.WiFi.Radio.{i}."})
        EXPECT_TRUE(found.contains(each)) << each;
}

TEST_F(Reading, T1_76_SupportedModelWithoutDetails) {
    const usp::Msg answer = ask(supported({"Device.LocalAgent."}, false, false));
    ASSERT_GT(object(answer).supported_objs_size(), 5);
    for (const auto& each : object(answer).supported_objs()) {
        EXPECT_EQ(each.supported_params_size(), 0);
        EXPECT_EQ(each.supported_commands_size(), 0);
        EXPECT_EQ(each.supported_events_size(), 0);
        EXPECT_EQ(each.unique_key_sets_size(), 0);
    }
}

TEST_F(Reading, T1_77_SupportedModelOfAnUnknownObject) {
    EXPECT_NE(object(ask(supported({"Device.LocalAgent.InvalidObject."}))).err_code(), 0U);
}

TEST_F(Reading, T1_97_SupportedModelNamesTheUniqueKeys) {
    const usp::Msg answer = ask(supported({"Device.LocalAgent.Subscription.{i}."}));
    std::set<std::set<std::string>> sets;
    for (const auto& keys : object(answer).supported_objs(0).unique_key_sets())
        sets.insert({keys.key_names().begin(), keys.key_names().end()});
    EXPECT_TRUE(sets.contains({"Alias"}));
    EXPECT_TRUE(sets.contains({"Recipient", "ID"}));
}

TEST_F(Reading, T1_98_SupportedModelOfAnInstance) {
    const usp::Msg answer = ask(supported({"Device.LocalAgent.Controller.1."}));
    EXPECT_EQ(object(answer).err_code(), 0U) << answer.DebugString();
    EXPECT_TRUE(objectsOf(answer).contains("Device.LocalAgent.Controller.{i}."));
}

TEST_F(Reading, T1_99_SupportedModelWithoutTheLastDot) {
    EXPECT_EQ(object(ask(supported({"Device.LocalAgent"}))).err_code(), 0U);
}

TEST_F(Reading, T1_105_SupportedModelOfOneCommand) {
    const usp::Msg answer = ask(supported({"Device.Reboot()"}, false, false));
    ASSERT_EQ(object(answer).supported_objs_size(), 1) << answer.DebugString();
    ASSERT_EQ(object(answer).supported_objs(0).supported_commands_size(), 1);
    EXPECT_EQ(object(answer).supported_objs(0).supported_commands(0).command_name(), "Reboot()");
    EXPECT_EQ(object(answer).supported_objs(0).supported_params_size(), 0);
}

TEST_F(Reading, T1_106_SupportedModelOfOneEvent) {
    const usp::Msg answer = ask(supported({"Device.Boot!"}, false, false));
    ASSERT_EQ(object(answer).supported_objs_size(), 1) << answer.DebugString();
    ASSERT_EQ(object(answer).supported_objs(0).supported_events_size(), 1);
    EXPECT_EQ(object(answer).supported_objs(0).supported_events(0).event_name(), "Boot!");
}

TEST_F(Reading, T1_107_SupportedModelOfOneParameter) {
    const usp::Msg answer = ask(supported({"Device.LocalAgent.EndpointID"}, false, false));
    ASSERT_EQ(object(answer).supported_objs_size(), 1) << answer.DebugString();
    ASSERT_EQ(object(answer).supported_objs(0).supported_params_size(), 1);
    EXPECT_EQ(object(answer).supported_objs(0).supported_params(0).param_name(), "EndpointID");
}

TEST_F(Reading, T1_80_SupportedProtocolVersions) {
    const usp::Msg answer = ask("get_supported_protocol { controller_supported_protocol_versions: '1.4' }");
    const std::string versions =
        answer.body().response().get_supported_protocol_resp().agent_supported_protocol_versions();
    EXPECT_NE(versions.find("1.4"), std::string::npos) << versions;
}

TEST_F(Reading, T1_82_GetByKeyThatNobodyHas) {
    const usp::Msg answer = ask(get({kTable + "[Alias==\"none\"].ID"}));
    EXPECT_EQ(path(answer).err_code(), 0U);
    EXPECT_EQ(path(answer).resolved_path_results_size(), 0);
}

TEST_F(Reading, T1_83_GetBySearchThatFindsNothing) {
    const usp::Msg answer = ask(get({kTable + "[NotifExpiration>9999].ID"}));
    EXPECT_EQ(path(answer).err_code(), 0U);
    EXPECT_EQ(path(answer).resolved_path_results_size(), 0);
}

TEST_F(Reading, T1_86_InstancesOfAnEmptyTable) {
    const usp::Msg answer = ask(instances({kTable}));
    EXPECT_EQ(answer.body().response().get_instances_resp().req_path_results(0).err_code(), 0U);
    EXPECT_TRUE(instancesOf(answer).empty());
}

TEST_F(Reading, T1_87_InstancesBySearchThatFindsNothing) {
    const usp::Msg answer = ask(instances({"Device.LocalAgent.Controller.[EndpointID==\"none\"].MTP."}));
    EXPECT_EQ(answer.body().response().get_instances_resp().req_path_results(0).err_code(), 0U);
    EXPECT_TRUE(instancesOf(answer).empty());
}

TEST_F(Reading, T1_89_DepthIsObeyed) {
    const auto deepest = [this](unsigned depth) {
        std::size_t dots = 0;
        for (const auto& [name, text] : valuesOf(ask(get({"Device.LocalAgent."}, depth))))
            dots = std::max(dots, static_cast<std::size_t>(std::count(name.begin(), name.end(), '.')));
        return dots;
    };
    EXPECT_EQ(deepest(1), 2U);  // Device.LocalAgent.X
    EXPECT_EQ(deepest(2), 4U);  // Device.LocalAgent.Controller.1.X
    EXPECT_GE(deepest(0), 7U);  // Device.LocalAgent.Controller.1.MTP.1.MQTT.X
}

TEST_F(Reading, T11_1_MqttProfilesAreInTheSupportedModel) {
    const auto parameters = [this](const std::string& path) {
        const usp::Msg answer = ask(supported({path}));
        std::set<std::string> names;
        for (const auto& each : object(answer).supported_objs()) {
            if (each.supported_obj_path() != path) continue;
            for (const auto& parameter : each.supported_params())
                names.insert(parameter.param_name());
        }
        return names;
    };
    const std::vector<std::pair<std::string, std::vector<std::string>>> profiles = {
        {"Device.MQTT.Capabilities.", {"ProtocolVersionsSupported", "TransportProtocolSupported"}},
        {"Device.MQTT.Client.{i}.",
         {"Alias", "Name", "Enable", "Status", "ProtocolVersion", "BrokerAddress", "BrokerPort", "TransportProtocol",
          "CleanSession", "CleanStart", "KeepAliveTime", "ClientID", "Username", "Password", "ConnectRetryTime",
          "ConnectRetryIntervalMultiplier", "ConnectRetryMaxInterval", "MessageRetryTime", "ResponseInformation"}},
        {"Device.MQTT.Client.{i}.Subscription.{i}.", {"Alias", "Enable", "Status", "Topic", "QoS"}},
        {"Device.LocalAgent.MTP.{i}.MQTT.",
         {"Reference", "ResponseTopicConfigured", "ResponseTopicDiscovered", "PublishQoS"}},
        {"Device.LocalAgent.Controller.{i}.MTP.{i}.MQTT.", {"Topic", "AgentMTPReference"}}};
    for (const auto& [path, names] : profiles) {
        const std::set<std::string> listed = parameters(path);
        for (const std::string& name : names)
            EXPECT_TRUE(listed.contains(name)) << path << name;
    }
}

}  // namespace
}  // namespace quorvel::agent_test
