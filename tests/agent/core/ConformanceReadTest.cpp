// Get, GetInstances, GetSupportedDM and GetSupportedProtocol, by the numbers of TP-469.
#include <algorithm>

#include "tests/agent/core/AgentWorld.h"

namespace quorvel::agent_test {
namespace {

class ConformanceRead : public AgentWorld {
  protected:
    ConformanceRead() {
        start();
        connect();
        add(kSubscriptionTable, {{"Enable", "true"}, {"ID", "one"}, {"NotifExpiration", "5"}});
        add(kSubscriptionTable, {{"ID", "two"}, {"NotifExpiration", "10"}, {"ReferenceList", "Device.A.,Device.B."}});
    }

    // The rows that a search over the subscriptions finds.
    std::vector<std::string> found(const std::string& expression) {
        std::vector<std::string> rows;
        const usp::GetResp answer = get({"Device.LocalAgent.Subscription.[" + expression + "].ID"});
        EXPECT_EQ(answer.req_path_results(0).err_code(), 0U) << answer.req_path_results(0).err_msg();
        for (const auto& result : answer.req_path_results(0).resolved_path_results())
            rows.push_back(result.result_params().at("ID"));
        return rows;
    }

    std::uint32_t code(const std::string& path) {
        return get({path}).req_path_results(0).err_code();
    }
};

using Rows = std::vector<std::string>;

TEST_F(ConformanceRead, 1_36_GetOfAParameterNamesItsObject) {
    const usp::GetResp answer = get({"Device.LocalAgent.EndpointID"});
    ASSERT_EQ(answer.req_path_results_size(), 1);
    const auto& result = answer.req_path_results(0);
    EXPECT_EQ(result.requested_path(), "Device.LocalAgent.EndpointID");
    ASSERT_EQ(result.resolved_path_results_size(), 1);
    EXPECT_EQ(result.resolved_path_results(0).resolved_path(), "Device.LocalAgent.");
    EXPECT_EQ(result.resolved_path_results(0).result_params().at("EndpointID"), kAgent);
}

TEST_F(ConformanceRead, 1_37_GetOfSeveralParametersKeepsTheirOrder) {
    const usp::GetResp answer = get({"Device.DeviceInfo.SerialNumber", "Device.LocalAgent.EndpointID"});
    ASSERT_EQ(answer.req_path_results_size(), 2);
    EXPECT_EQ(answer.req_path_results(0).requested_path(), "Device.DeviceInfo.SerialNumber");
    EXPECT_EQ(answer.req_path_results(1).requested_path(), "Device.LocalAgent.EndpointID");
}

TEST_F(ConformanceRead, 1_38_GetOfAnUnknownParameterHasTheCodeInItsOwnResult) {
    const usp::GetResp answer = get({"Device.LocalAgent.InvalidParameter"});
    EXPECT_EQ(answer.req_path_results(0).err_code(), 7026U);
    EXPECT_FALSE(answer.req_path_results(0).err_msg().empty());
    EXPECT_EQ(answer.req_path_results(0).resolved_path_results_size(), 0);
}

TEST_F(ConformanceRead, 1_39_GetOfAKnownAndAnUnknownParameterAnswersBoth) {
    const usp::GetResp answer = get({"Device.LocalAgent.InvalidParameter", "Device.LocalAgent.EndpointID"});
    EXPECT_EQ(answer.req_path_results(0).err_code(), 7026U);
    EXPECT_EQ(answer.req_path_results(1).err_code(), 0U);
    EXPECT_EQ(answer.req_path_results(1).err_msg(), "");
    EXPECT_EQ(answer.req_path_results(1).resolved_path_results_size(), 1);
}

TEST_F(ConformanceRead, 1_40_GetOfAnObjectGroupsByItAndItsSubObjects) {
    const usp::GetResp answer = get({"Device.LocalAgent.Controller.1."});
    const auto& results = answer.req_path_results(0).resolved_path_results();
    ASSERT_GE(results.size(), 4);
    EXPECT_EQ(results[0].resolved_path(), "Device.LocalAgent.Controller.1.");
    EXPECT_EQ(results[0].result_params().at("EndpointID"), kController);
    EXPECT_EQ(results[1].resolved_path(), "Device.LocalAgent.Controller.1.MTP.1.");
    EXPECT_EQ(results[2].resolved_path(), "Device.LocalAgent.Controller.1.MTP.1.MQTT.");
    EXPECT_EQ(results[2].result_params().at("AgentMTPReference"), "Device.LocalAgent.MTP.1");
}

TEST_F(ConformanceRead, 1_41_GetOfAnObjectOfTheLibraryGroupsAlike) {
    const usp::GetResp answer = get({"Device.WiFi.Radio.1."});
    const auto& results = answer.req_path_results(0).resolved_path_results();
    ASSERT_EQ(results.size(), 2);
    EXPECT_EQ(results[0].resolved_path(), "Device.WiFi.Radio.1.");
    EXPECT_EQ(results[0].result_params().at("Channel"), "36");
    EXPECT_EQ(results[1].resolved_path(), "Device.WiFi.Radio.1.Stats.");
    // Measurements and what can only be written have no value here.
    EXPECT_FALSE(results[0].result_params().contains("DcsChannelMetrics"));
    EXPECT_FALSE(results[0].result_params().contains("pushRadioChannel2"));
}

TEST_F(ConformanceRead, 1_42_GetOfUnknownObjectsHasTheCodesInTheirOwnResults) {
    EXPECT_EQ(code("Device.LocalAgent.InvalidObject."), 7026U);
    EXPECT_EQ(code("Device.WiFi.Radio.9.Channel"), 7016U);
    EXPECT_EQ(code("Device.WiFi.Radio.9."), 7016U);
    EXPECT_EQ(code("Device.LocalAgent.Subscription.9."), 7016U);
}

TEST_F(ConformanceRead, 1_43_GetByUniqueKey) {
    EXPECT_EQ(value("Device.LocalAgent.Controller.[EndpointID==\"proto::ctl-1\"].Enable"), "true");
    EXPECT_EQ(value("Device.WiFi.SSID.[BSSID==\"02:00:00:00:00:02\"].SSID"), "net2");
}

TEST_F(ConformanceRead, 1_44_GetOfAllRows) {
    const usp::GetResp answer = get({"Device.LocalAgent.Subscription.*.ID", "Device.WiFi.SSID.*.SSID"});
    EXPECT_EQ(answer.req_path_results(0).resolved_path_results_size(), 2);
    EXPECT_EQ(answer.req_path_results(1).resolved_path_results_size(), 2);
    EXPECT_EQ(answer.req_path_results(1).resolved_path_results(1).result_params().at("SSID"), "net2");
}

TEST_F(ConformanceRead, 1_45_SearchByEqual) {
    EXPECT_EQ(found("Enable==true"), Rows{"one"});
    EXPECT_EQ(found(" ID == \"two\" "), Rows{"two"});
    EXPECT_EQ(value("Device.WiFi.SSID.[Enable==true].SSID"), "net1");
}

TEST_F(ConformanceRead, 1_46_SearchByUnequal) {
    EXPECT_EQ(found("Enable!=true"), Rows{"two"});
}

TEST_F(ConformanceRead, 1_47_SearchByLess) {
    EXPECT_EQ(found("NotifExpiration<10"), Rows{"one"});
}

TEST_F(ConformanceRead, 1_48_SearchByGreater) {
    EXPECT_EQ(found("NotifExpiration>5"), Rows{"two"});
    // As numbers, not as texts.
    EXPECT_EQ(found("NotifExpiration>9"), Rows{"two"});
}

TEST_F(ConformanceRead, 1_49_SearchByAtMost) {
    EXPECT_EQ(found("NotifExpiration<=5"), Rows{"one"});
}

TEST_F(ConformanceRead, 1_50_SearchByAtLeast) {
    EXPECT_EQ(found("NotifExpiration>=5"), (Rows{"one", "two"}));
}

TEST_F(ConformanceRead, 1_51_SearchByListAndBySeveralConditions) {
    EXPECT_EQ(found("ReferenceList~=\"Device.B.\""), Rows{"two"});
    EXPECT_EQ(found("Enable==false&&NotifExpiration>0"), Rows{"two"});
}

TEST_F(ConformanceRead, SearchesFollowReferencesAndChildren) {
    EXPECT_EQ(value("Device.WiFi.AccessPoint.[SSIDReference+.SSID==\"net2\"].SSIDReference"), "Device.WiFi.SSID.2");
    EXPECT_EQ(value("Device.WiFi.AccessPoint.1.SSIDReference+.SSID"), "net1");
    EXPECT_EQ(value("Device.WiFi.AccessPoint.[Security.ModeEnabled==\"WPA2-Personal\"&&SSIDReference==\"Device.WiFi."
                    "SSID.1\"].Enable"),
              "true");
    EXPECT_EQ(value("Device.LocalAgent.MTP.1.MQTT.Reference+.BrokerAddress"), "127.0.0.1");
    EXPECT_EQ(value("Device.LocalAgent.MTP.1.MQTT.Reference#1+.BrokerPort"), "1883");
    EXPECT_EQ(value("Device.LocalAgent.MTP.1.MQTT.Reference#*+.BrokerPort"), "1883");
    EXPECT_EQ(code("Device.LocalAgent.MTP.1.MQTT.Reference#2+.BrokerPort"), 7016U);
    EXPECT_EQ(code("Device.LocalAgent.MTP.1.MQTT.PublishQoS+.BrokerPort"), 7026U);
}

TEST_F(ConformanceRead, WrongSyntaxIs7008) {
    for (const char* const path :
         {"Device.LocalAgent.Subscription.[].ID", "Device.LocalAgent.Subscription.[ID=\"x\"].ID",
          "LocalAgent.EndpointID", "Device.LocalAgent.Subscription.[Enable==\"true\"].ID",
          "Device.LocalAgent.Subscription.[ID==one].ID", "Device.LocalAgent.Subscription.[ID<\"one\"].ID",
          "Device.LocalAgent.Subscription.[Enable~=true].ID", "Device.LocalAgent.Subscription.[NotifExpiration>x].ID",
          "Device.LocalAgent.Subscription.[ID==\"one].ID", "Device.WiFi.SSID.[Enable==\"true\"].SSID",
          "Device..EndpointID", ""}) {
        EXPECT_EQ(code(path), 7008U) << path;
    }
}

TEST_F(ConformanceRead, 1_66_GetInstancesOfATable) {
    const usp::GetInstancesResp answer = instances({kSubscriptionTable}, true);
    ASSERT_EQ(answer.req_path_results(0).curr_insts_size(), 2);
    const auto& row = answer.req_path_results(0).curr_insts(0);
    EXPECT_EQ(row.instantiated_obj_path(), "Device.LocalAgent.Subscription.1.");
    EXPECT_EQ(row.unique_keys().at("ID"), "one");
    EXPECT_EQ(row.unique_keys().size(), 3U);
}

TEST_F(ConformanceRead, 1_67_GetInstancesOfTheFirstLevelLeavesOutNestedTables) {
    EXPECT_EQ(instances({"Device.LocalAgent.Controller."}, true).req_path_results(0).curr_insts_size(), 1);
    EXPECT_EQ(instances({"Device.WiFi.AccessPoint."}, true).req_path_results(0).curr_insts_size(), 2);
}

TEST_F(ConformanceRead, 1_68_GetInstancesOfAllLevelsHasNestedTables) {
    const usp::GetInstancesResp answer = instances({"Device.LocalAgent.Controller."});
    ASSERT_EQ(answer.req_path_results(0).curr_insts_size(), 2);
    EXPECT_EQ(answer.req_path_results(0).curr_insts(1).instantiated_obj_path(),
              "Device.LocalAgent.Controller.1.MTP.1.");
    EXPECT_EQ(answer.req_path_results(0).curr_insts(1).unique_keys().at("Protocol"), "MQTT");
    // Two access points with two access categories each.
    EXPECT_EQ(instances({"Device.WiFi.AccessPoint."}).req_path_results(0).curr_insts_size(), 6);
}

TEST_F(ConformanceRead, 1_69_GetInstancesBelowASearch) {
    const usp::GetInstancesResp answer = instances({"Device.LocalAgent.Controller.[Enable==true].MTP."});
    EXPECT_EQ(answer.req_path_results(0).curr_insts_size(), 1);
}

TEST_F(ConformanceRead, 1_70_GetInstancesOfAnUnknownObjectHasTheCode) {
    EXPECT_EQ(instances({"Device.LocalAgent.InvalidObject."}).req_path_results(0).err_code(), 7026U);
    EXPECT_EQ(instances({"Device.LocalAgent."}).req_path_results(0).err_code(), 7018U);
    EXPECT_EQ(instances({"Device.LocalAgent.Controller.9.MTP."}).req_path_results(0).err_code(), 7016U);
    EXPECT_EQ(instances({"Device.WiFi.AccessPoint.9.AC."}).req_path_results(0).err_code(), 7016U);
}

TEST_F(ConformanceRead, 1_71_GetInstancesOfSeveralTables) {
    const usp::GetInstancesResp answer =
        instances({"Device.WiFi.SSID.", kSubscriptionTable, "Device.WiFi.Radio.1."}, true);
    ASSERT_EQ(answer.req_path_results_size(), 3);
    const auto& keys = answer.req_path_results(0).curr_insts(1).unique_keys();
    EXPECT_EQ(keys.at("BSSID"), "02:00:00:00:00:02");
    // The library has no Alias for it.
    EXPECT_EQ(keys.at("Alias"), "cpe-SSID-2");
    EXPECT_EQ(answer.req_path_results(2).curr_insts(0).instantiated_obj_path(), "Device.WiFi.Radio.1.");
}

const usp::GetSupportedDMResp::SupportedObjectResult* object(const usp::GetSupportedDMResp& answer,
                                                             const std::string& path) {
    for (const auto& each : answer.req_obj_results(0).supported_objs()) {
        if (each.supported_obj_path() == path) return &each;
    }
    return nullptr;
}

TEST_F(ConformanceRead, 1_72_GetSupportedDMOfAnObject) {
    const usp::GetSupportedDMResp answer = model({"Device.LocalAgent."});
    EXPECT_EQ(answer.req_obj_results(0).data_model_inst_uri(), "urn:broadband-forum-org:tr-181-2-19-0");
    const auto* const table = object(answer, "Device.LocalAgent.Subscription.{i}.");
    ASSERT_NE(table, nullptr);
    EXPECT_TRUE(table->is_multi_instance());
    EXPECT_EQ(table->access(), usp::GetSupportedDMResp::OBJ_ADD_DELETE);
    ASSERT_EQ(table->unique_key_sets_size(), 2);
    EXPECT_EQ(table->unique_key_sets(0).key_names_size(), 2);
    EXPECT_NE(object(answer, "Device.LocalAgent.Controller.{i}.MTP.{i}.WebSocket."), nullptr);
}

TEST_F(ConformanceRead, 1_73_GetSupportedDMOfTheFirstLevel) {
    const usp::GetSupportedDMResp answer = model({"Device.LocalAgent."}, true);
    const auto* const own = object(answer, "Device.LocalAgent.");
    ASSERT_NE(own, nullptr);
    EXPECT_GT(own->supported_params_size(), 5);
    const auto* const child = object(answer, "Device.LocalAgent.Subscription.{i}.");
    ASSERT_NE(child, nullptr);
    EXPECT_EQ(child->supported_params_size(), 0);
    EXPECT_EQ(object(answer, "Device.LocalAgent.Controller.{i}.MTP.{i}."), nullptr);
}

TEST_F(ConformanceRead, 1_74_GetSupportedDMObeysItsFlags) {
    const usp::GetSupportedDMResp answer = model({"Device."}, false, false);
    for (const auto& each : answer.req_obj_results(0).supported_objs()) {
        EXPECT_EQ(each.supported_params_size() + each.supported_commands_size() + each.supported_events_size() +
                      each.unique_key_sets_size(),
                  0)
            << each.supported_obj_path();
    }
}

TEST_F(ConformanceRead, 1_75_GetSupportedDMOfTheRootHasEverything) {
    const usp::GetSupportedDMResp answer = model({"Device."});
    const auto* const root = object(answer, "Device.");
    ASSERT_NE(root, nullptr);
    std::vector<std::string> commands;
    for (const auto& command : root->supported_commands())
        commands.push_back(command.command_name());
    EXPECT_EQ(commands, (Rows{"Reboot()", "FactoryReset()", "ScheduleTimer()"}));
    EXPECT_EQ(root->supported_commands(2).command_type(), usp::GetSupportedDMResp::CMD_ASYNC);
    EXPECT_EQ(root->supported_events(0).event_name(), "Boot!");
    const auto* const radio = object(answer, "Device.WiFi.Radio.{i}.");
    ASSERT_NE(radio, nullptr);
    EXPECT_EQ(radio->access(), usp::GetSupportedDMResp::OBJ_READ_ONLY);
    for (const auto& parameter : radio->supported_params()) {
        if (parameter.param_name() == "pushRadioChannel2") {
            EXPECT_EQ(parameter.access(), usp::GetSupportedDMResp::PARAM_WRITE_ONLY);
        }
        if (parameter.param_name() == "UpTime") {
            EXPECT_EQ(parameter.value_change(), usp::GetSupportedDMResp::VALUE_CHANGE_WILL_IGNORE);
            EXPECT_EQ(parameter.value_type(), usp::GetSupportedDMResp::PARAM_UNSIGNED_INT);
        }
        if (parameter.param_name() == "TransmitPower") {
            EXPECT_EQ(parameter.value_type(), usp::GetSupportedDMResp::PARAM_INT);
            EXPECT_EQ(parameter.value_change(), usp::GetSupportedDMResp::VALUE_CHANGE_ALLOWED);
        }
        EXPECT_NE(parameter.param_name(), "DcsChannelMetrics");
    }
    // No Alias-less key that the library does not tell apart.
    const auto* const category = object(answer, "Device.WiFi.AccessPoint.{i}.AC.{i}.");
    ASSERT_EQ(category->unique_key_sets_size(), 1);
    EXPECT_EQ(category->unique_key_sets(0).key_names(0), "Alias");
}

TEST_F(ConformanceRead, 1_76_GetSupportedDMOfAnUnknownObjectHasTheCode) {
    const usp::GetSupportedDMResp answer = model({"Device.LocalAgent.InvalidObject."});
    EXPECT_EQ(answer.req_obj_results(0).err_code(), 7026U);
    EXPECT_EQ(answer.req_obj_results(0).supported_objs_size(), 0);
}

TEST_F(ConformanceRead, 1_77_GetSupportedDMOfSeveralPathsAndForms) {
    const usp::GetSupportedDMResp answer = model(
        {"Device.WiFi.SSID.{i}.", "Device.WiFi.SSID.", "Device.WiFi.SSID.2.", "Device.WiFi.SSID", "Device.Invalid."});
    ASSERT_EQ(answer.req_obj_results_size(), 5);
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(answer.req_obj_results(i).supported_objs_size(), 1) << i;
        EXPECT_EQ(answer.req_obj_results(i).supported_objs(0).supported_obj_path(), "Device.WiFi.SSID.{i}.");
    }
    EXPECT_EQ(answer.req_obj_results(4).err_code(), 7026U);
}

TEST_F(ConformanceRead, 1_97_GetSupportedDMOfOneCommand) {
    const usp::GetSupportedDMResp answer = model({"Device.WiFi.NeighboringWiFiDiagnostic()"}, false, false);
    ASSERT_EQ(answer.req_obj_results(0).supported_objs_size(), 1);
    const auto& only = answer.req_obj_results(0).supported_objs(0);
    EXPECT_EQ(only.supported_obj_path(), "Device.WiFi.");
    ASSERT_EQ(only.supported_commands_size(), 1);
    EXPECT_EQ(only.supported_commands(0).output_arg_names(1), "Result.{i}.Radio");
    EXPECT_EQ(only.supported_params_size(), 0);
}

TEST_F(ConformanceRead, 1_98_GetSupportedDMOfOneEvent) {
    const usp::GetSupportedDMResp answer = model({"Device.LocalAgent.Periodic!"}, false, false);
    EXPECT_EQ(answer.req_obj_results(0).supported_objs(0).supported_events(0).event_name(), "Periodic!");
}

TEST_F(ConformanceRead, 1_99_GetSupportedDMOfOneParameter) {
    const usp::GetSupportedDMResp answer = model({"Device.LocalAgent.Controller.1.PeriodicNotifTime"}, false, false);
    const auto& only = answer.req_obj_results(0).supported_objs(0);
    EXPECT_EQ(only.supported_obj_path(), "Device.LocalAgent.Controller.{i}.");
    ASSERT_EQ(only.supported_params_size(), 1);
    EXPECT_EQ(only.supported_params(0).value_type(), usp::GetSupportedDMResp::PARAM_DATE_TIME);
}

TEST_F(ConformanceRead, 1_105_GetSupportedDMOfAnUnknownCommandHasTheCode) {
    EXPECT_EQ(model({"Device.Invalid()"}).req_obj_results(0).err_code(), 7026U);
}

TEST_F(ConformanceRead, 1_106_GetSupportedDMOfAnUnknownEventHasTheCode) {
    EXPECT_EQ(model({"Device.LocalAgent.Invalid!"}).req_obj_results(0).err_code(), 7026U);
}

TEST_F(ConformanceRead, 1_107_GetSupportedDMOfAnUnknownParameterHasTheCode) {
    EXPECT_EQ(model({"Device.LocalAgent.Invalid"}).req_obj_results(0).err_code(), 7026U);
}

TEST_F(ConformanceRead, 1_80_GetSupportedProtocolListsTheVersions) {
    usp::Msg message = request(usp::Header::GET_SUPPORTED_PROTO);
    message.mutable_body()
        ->mutable_request()
        ->mutable_get_supported_protocol()
        ->set_controller_supported_protocol_versions("1.4");
    EXPECT_EQ(ask(message).body().response().get_supported_protocol_resp().agent_supported_protocol_versions(),
              "1.3,1.4");
}

TEST_F(ConformanceRead, 1_82_GetOfASearchWithoutMatchIsEmptyWithoutError) {
    const usp::GetResp answer =
        get({"Device.LocalAgent.Subscription.[ID==\"nobody\"].Enable", "Device.WiFi.SSID.[SSID==\"nobody\"].Enable",
             "Device.LocalAgent.Controller.1.BootParameter.*.Enable"});
    for (const auto& result : answer.req_path_results()) {
        EXPECT_EQ(result.err_code(), 0U) << result.requested_path();
        EXPECT_EQ(result.resolved_path_results_size(), 0);
    }
}

TEST_F(ConformanceRead, 1_83_GetByAKeyThatNobodyHasIsEmptyWithoutError) {
    const usp::GetResp answer = get({"Device.LocalAgent.Controller.[EndpointID==\"proto::x\"].Enable"});
    EXPECT_EQ(answer.req_path_results(0).err_code(), 0U);
    EXPECT_EQ(answer.req_path_results(0).resolved_path_results_size(), 0);
}

TEST_F(ConformanceRead, 1_86_GetInstancesOfAnEmptyTableIsEmptyWithoutError) {
    const usp::GetInstancesResp answer =
        instances({"Device.LocalAgent.Controller.1.BootParameter.", "Device.WiFi.NeighboringWiFiDiagnostic.Result.",
                   "Device.WiFi.AccessPoint.1.AssociatedDevice."});
    for (const auto& result : answer.req_path_results()) {
        EXPECT_EQ(result.err_code(), 0U) << result.err_msg();
        EXPECT_EQ(result.curr_insts_size(), 0);
    }
}

TEST_F(ConformanceRead, 1_87_GetOfAnEmptyTableIsEmptyWithoutError) {
    const usp::GetResp answer = get({"Device.LocalAgent.Controller.1.BootParameter.", "Device.LocalAgent.Request."});
    EXPECT_EQ(answer.req_path_results(0).err_code(), 0U);
    EXPECT_EQ(answer.req_path_results(1).err_code(), 0U);
}

TEST_F(ConformanceRead, 1_89_MaxDepthIsObeyed) {
    const auto objects = [this](const std::string& path, unsigned depth) {
        Rows paths;
        const usp::GetResp answer = get({path}, depth);
        for (const auto& result : answer.req_path_results(0).resolved_path_results())
            paths.push_back(result.resolved_path());
        return paths;
    };
    EXPECT_EQ(objects("Device.LocalAgent.Controller.1.", 1), Rows{"Device.LocalAgent.Controller.1."});
    EXPECT_EQ(objects("Device.LocalAgent.Controller.1.", 2),
              (Rows{"Device.LocalAgent.Controller.1.", "Device.LocalAgent.Controller.1.MTP.1."}));
    EXPECT_EQ(objects("Device.LocalAgent.Controller.1.", 0).size(), 4U);
    EXPECT_EQ(objects(kSubscriptionTable, 1).size(), 2U);
    EXPECT_EQ(objects("Device.WiFi.Radio.1.", 1), Rows{"Device.WiFi.Radio.1."});
    EXPECT_EQ(objects("Device.", 1), Rows{"Device."});
    const Rows second = objects("Device.", 2);
    EXPECT_NE(std::find(second.begin(), second.end(), "Device.WiFi."), second.end());
    EXPECT_EQ(std::find(second.begin(), second.end(), "Device.WiFi.Radio.1."), second.end());
    const Rows all = objects("Device.", 0);
    EXPECT_NE(std::find(all.begin(), all.end(), "Device.WiFi.Radio.1.Stats."), all.end());
}

TEST_F(ConformanceRead, 11_1_TheProfilesOfMqttAreSupported) {
    const usp::GetSupportedDMResp answer = model({"Device."});
    const auto has = [&answer](const std::string& path, const std::vector<std::string>& names) {
        const auto* const found = object(answer, path);
        ASSERT_NE(found, nullptr) << path;
        for (const std::string& name : names) {
            const auto& parameters = found->supported_params();
            EXPECT_TRUE(std::any_of(parameters.begin(), parameters.end(),
                                    [&name](const auto& each) { return each.param_name() == name; }))
                << path << name;
        }
    };
    has("Device.MQTT.", {"ClientNumberOfEntries"});
    has("Device.MQTT.Capabilities.", {"ProtocolVersionsSupported", "TransportProtocolSupported"});
    has("Device.MQTT.Client.{i}.", {"Alias",
                                    "Name",
                                    "Enable",
                                    "Status",
                                    "ProtocolVersion",
                                    "BrokerAddress",
                                    "BrokerPort",
                                    "TransportProtocol",
                                    "CleanSession",
                                    "CleanStart",
                                    "KeepAliveTime",
                                    "ClientID",
                                    "Username",
                                    "Password",
                                    "MessageRetryTime",
                                    "ConnectRetryTime",
                                    "ConnectRetryIntervalMultiplier",
                                    "ConnectRetryMaxInterval",
                                    "ResponseInformation",
                                    "SubscriptionNumberOfEntries"});
    has("Device.MQTT.Client.{i}.Subscription.{i}.", {"Alias", "Enable", "Status", "Topic", "QoS"});
    has("Device.LocalAgent.MTP.{i}.MQTT.",
        {"Reference", "ResponseTopicConfigured", "ResponseTopicDiscovered", "PublishQoS"});
    has("Device.LocalAgent.Controller.{i}.MTP.{i}.MQTT.", {"Topic", "AgentMTPReference"});
}

}  // namespace
}  // namespace quorvel::agent_test
