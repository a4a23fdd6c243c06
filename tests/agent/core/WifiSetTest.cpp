// Set below Device.WiFi.: staging, applying once, saving, taking back.
#include "tests/agent/core/AgentWorld.h"

namespace quorvel::agent_test {
namespace {

class WifiSet : public AgentWorld {
  protected:
    WifiSet() {
        start();
        connect();
        gateway.calls.clear();
    }

    usp::Msg setTwo(const std::pair<std::string, std::string>& one, const std::pair<std::string, std::string>& other,
                    bool partial) {
        usp::Msg message = request(usp::Header::SET);
        auto& asked = *message.mutable_body()->mutable_request()->mutable_set();
        asked.set_allow_partial(partial);
        for (const auto& [path, value] : {one, other}) {
            auto& update = *asked.add_update_objs();
            const std::size_t dot = path.rfind('.') + 1;
            update.set_obj_path(path.substr(0, dot));
            auto& setting = *update.add_param_settings();
            setting.set_param(path.substr(dot));
            setting.set_value(value);
            setting.set_required(true);
        }
        return ask(message);
    }
};

using Calls = std::vector<std::string>;

TEST_F(WifiSet, IsStagedAppliedOnceAndSaved) {
    const usp::Msg answer = set("Device.WiFi.SSID.1.", {{"SSID", "lab"}, {"Enable", "0"}});
    const auto& result = answer.body().response().set_resp().updated_obj_results(0).oper_status().oper_success();
    EXPECT_EQ(result.updated_inst_results(0).affected_path(), "Device.WiFi.SSID.1.");
    EXPECT_EQ(result.updated_inst_results(0).updated_params().at("SSID"), "lab");
    EXPECT_EQ(result.updated_inst_results(0).updated_params().at("Enable"), "false");
    EXPECT_EQ(gateway.calls, (Calls{"check", "get", "set SSID.1.SSID=lab SSID.1.Enable=false", "save"}));
}

TEST_F(WifiSet, AppliesNothingWhenARequiredPartIsRefused) {
    gateway.refused["Device.WiFi.SSID.2.SSID"] = "too long";
    const usp::Msg answer = setTwo({"Device.WiFi.SSID.1.SSID", "lab"}, {"Device.WiFi.SSID.2.SSID", "x"}, false);
    ASSERT_EQ(answer.body().error().param_errs_size(), 1);
    EXPECT_EQ(answer.body().error().param_errs(0).param_path(), "Device.WiFi.SSID.2.SSID");
    EXPECT_EQ(answer.body().error().param_errs(0).err_code(), 7012U);
    EXPECT_EQ(gateway.count("set"), 0U);
    EXPECT_EQ(gateway.count("save"), 0U);
}

TEST_F(WifiSet, AppliesTheGoodObjectWhenPartsAreAllowed) {
    gateway.refused["Device.WiFi.SSID.2.SSID"] = "too long";
    const usp::Msg answer = setTwo({"Device.WiFi.SSID.1.SSID", "lab"}, {"Device.WiFi.SSID.2.SSID", "x"}, true);
    const auto& results = answer.body().response().set_resp();
    EXPECT_TRUE(results.updated_obj_results(0).oper_status().has_oper_success());
    EXPECT_EQ(results.updated_obj_results(1).oper_status().oper_failure().err_code(), 7021U);
    EXPECT_EQ(gateway.values["Device.WiFi.SSID.1.SSID"], "lab");
    EXPECT_EQ(gateway.values["Device.WiFi.SSID.2.SSID"], "net2");
}

TEST_F(WifiSet, LeavesOutAnOptionalParameterThatIsRefused) {
    gateway.refused["Device.WiFi.SSID.1.Alias"] = "no";
    const usp::Msg answer = set("Device.WiFi.SSID.1.", {{"SSID", "lab"}, {"Alias", "x"}}, false, false);
    const auto& result =
        answer.body().response().set_resp().updated_obj_results(0).oper_status().oper_success().updated_inst_results(0);
    ASSERT_EQ(result.param_errs_size(), 1);
    EXPECT_EQ(result.param_errs(0).param(), "Alias");
    EXPECT_EQ(gateway.calls.at(2), "set SSID.1.SSID=lab");
}

TEST_F(WifiSet, TakesBackWhatWasAppliedWhenAnotherObjectFails) {
    gateway.unapplied["Device.WiFi.SSID.2."] = "the manager refuses";
    const usp::Msg answer = setTwo({"Device.WiFi.SSID.1.SSID", "lab"}, {"Device.WiFi.SSID.2.SSID", "x"}, false);
    ASSERT_GE(answer.body().error().param_errs_size(), 1);
    EXPECT_EQ(answer.body().error().param_errs(0).param_path(), "Device.WiFi.SSID.2.");
    EXPECT_EQ(answer.body().error().param_errs(0).err_code(), 7020U);
    EXPECT_EQ(gateway.values["Device.WiFi.SSID.1.SSID"], "net1");
    EXPECT_EQ(gateway.count("save"), 0U);
}

TEST_F(WifiSet, AppliesEachObjectForItselfWhenTheyFailTogetherAndPartsAreAllowed) {
    gateway.unapplied["Device.WiFi.SSID.2."] = "the manager refuses";
    const usp::Msg answer = setTwo({"Device.WiFi.SSID.1.SSID", "lab"}, {"Device.WiFi.SSID.2.SSID", "x"}, true);
    const auto& results = answer.body().response().set_resp();
    EXPECT_TRUE(results.updated_obj_results(0).oper_status().has_oper_success());
    EXPECT_TRUE(results.updated_obj_results(1).oper_status().has_oper_failure());
    EXPECT_EQ(gateway.values["Device.WiFi.SSID.1.SSID"], "lab");
    EXPECT_EQ(gateway.count("save"), 1U);
}

TEST_F(WifiSet, OfASearchIsAllOrNothing) {
    gateway.unapplied["Device.WiFi.SSID.2."] = "the manager refuses";
    const usp::Msg answer = set("Device.WiFi.SSID.*.", {{"SSID", "same"}}, true);
    const auto& failure = answer.body().response().set_resp().updated_obj_results(0).oper_status().oper_failure();
    ASSERT_GE(failure.updated_inst_failures_size(), 1);
    EXPECT_EQ(failure.updated_inst_failures(0).affected_path(), "Device.WiFi.SSID.2.");
    EXPECT_EQ(gateway.values["Device.WiFi.SSID.1.SSID"], "net1");
}

TEST_F(WifiSet, OfASearchRefusesWhatCannotBeTakenBack) {
    for (const char* const name : {"Restart", "pushRadioChannel2"}) {
        const usp::Msg answer = set("Device.WiFi.Radio.*.", {{name, "1"}}, false, false);
        EXPECT_EQ(answer.body().error().param_errs(0).err_code(), 7020U) << name;
    }
    EXPECT_EQ(gateway.count("set"), 0U);
    // Named, it is done.
    EXPECT_TRUE(set("Device.WiFi.Radio.1.", {{"Restart", "true"}}).body().has_response());
    EXPECT_TRUE(set("Device.WiFi.Radio.1.", {{"pushRadioChannel2", "36/80"}}).body().has_response());
}

TEST_F(WifiSet, PutsActionsLast) {
    setTwo({"Device.WiFi.Radio.1.Restart", "true"}, {"Device.WiFi.SSID.1.SSID", "lab"}, false);
    EXPECT_EQ(gateway.calls.at(2), "set SSID.1.SSID=lab Radio.1.Restart=true");
}

TEST_F(WifiSet, ChecksTheRangeOfWhatActsAtOnce) {
    const usp::Msg answer = set("Device.WiFi.AccessPoint.1.AC.1.", {{"AIFSN", "16"}});
    EXPECT_EQ(answer.body().error().param_errs(0).err_code(), 7012U);
    EXPECT_EQ(set("Device.WiFi.AccessPoint.1.AC.1.", {{"AIFSN", "x"}}).body().error().param_errs(0).err_code(), 7011U);
    EXPECT_EQ(gateway.count("check"), 0U);
}

TEST_F(WifiSet, SaysWhenValuesAreLiveButNotSaved) {
    gateway.saveFails = "the disk is full";
    const usp::Msg answer = set("Device.WiFi.SSID.1.", {{"SSID", "lab"}});
    const auto& result =
        answer.body().response().set_resp().updated_obj_results(0).oper_status().oper_success().updated_inst_results(0);
    EXPECT_EQ(result.updated_params().at("SSID"), "lab");
    ASSERT_EQ(result.param_errs_size(), 1);
    EXPECT_EQ(result.param_errs(0).err_code(), 7003U);
    EXPECT_NE(result.param_errs(0).err_msg().find("live but not saved"), std::string::npos);
}

TEST_F(WifiSet, RefusesWhatTheModelForbids) {
    const auto code = [this](const std::string& object, const std::string& name, const std::string& value) {
        const usp::Msg answer = set(object, {{name, value}});
        return answer.body().error().param_errs(0).err_code();
    };
    EXPECT_EQ(code("Device.WiFi.SSID.1.", "BSSID", "x"), 7013U);
    EXPECT_EQ(code("Device.WiFi.SSID.1.", "Nothing", "x"), 7010U);
    EXPECT_EQ(code("Device.WiFi.SSID.1.", "Enable", "yes"), 7011U);
    EXPECT_EQ(code("Device.WiFi.Radio.1.", "Channel", "-1"), 7012U);
    EXPECT_EQ(code("Device.WiFi.SSID.9.", "SSID", "x"), 7016U);
    EXPECT_EQ(code("Device.WiFi.SSID.", "SSID", "x"), 7026U);
    EXPECT_EQ(code("Device.WiFi.SSID.1.SSID", "SSID", "x"), 7026U);
    EXPECT_EQ(gateway.count("set"), 0U);
}

TEST_F(WifiSet, RowsOfTheLibraryAreFixed) {
    const usp::Msg added = add("Device.WiFi.SSID.", {});
    EXPECT_EQ(added.body().error().param_errs(0).err_code(), 7019U);
    const usp::Msg removed = remove({"Device.WiFi.SSID.1."});
    EXPECT_EQ(removed.body().error().param_errs(0).err_code(), 7024U);
    const usp::Msg partly = remove({"Device.WiFi.SSID.1.", "Device.WiFi.SSID."}, true);
    EXPECT_EQ(partly.body().response().delete_resp().deleted_obj_results(0).oper_status().oper_failure().err_code(),
              7024U);
}

TEST_F(WifiSet, SecretsAreWrittenAndReadAsEmpty) {
    const usp::Msg answer = set("Device.WiFi.AccessPoint.1.Security.", {{"KeyPassphrase", "open sesame"}});
    EXPECT_EQ(answer.body()
                  .response()
                  .set_resp()
                  .updated_obj_results(0)
                  .oper_status()
                  .oper_success()
                  .updated_inst_results(0)
                  .updated_params()
                  .at("KeyPassphrase"),
              "");
    EXPECT_EQ(gateway.values["Device.WiFi.AccessPoint.1.Security.KeyPassphrase"], "open sesame");
    EXPECT_EQ(value("Device.WiFi.AccessPoint.1.Security.KeyPassphrase"), "");
    // Undone with the value itself, not with what a controller reads.
    gateway.unapplied["Device.WiFi.SSID.1."] = "no";
    setTwo({"Device.WiFi.AccessPoint.1.Security.KeyPassphrase", "other"}, {"Device.WiFi.SSID.1.SSID", "x"}, false);
    EXPECT_EQ(gateway.values["Device.WiFi.AccessPoint.1.Security.KeyPassphrase"], "open sesame");
}

TEST_F(WifiSet, AndTheAgentsOwnObjectsShareOneMessage) {
    setTwo({"Device.WiFi.SSID.1.SSID", "lab"}, {"Device.DeviceInfo.FriendlyName", "box"}, false);
    EXPECT_EQ(value("Device.DeviceInfo.FriendlyName"), "box");
    EXPECT_EQ(gateway.values["Device.WiFi.SSID.1.SSID"], "lab");
    gateway.unapplied["Device.WiFi.SSID.1."] = "no";
    const usp::Msg refused = setTwo({"Device.WiFi.SSID.1.SSID", "x"}, {"Device.DeviceInfo.FriendlyName", "y"}, false);
    EXPECT_TRUE(refused.body().has_error());
    EXPECT_EQ(value("Device.DeviceInfo.FriendlyName"), "box");
}

TEST_F(WifiSet, WaitsForItsTurnWhileReadsOfTheAgentsOwnObjectsGoOn) {
    gateway.holding = true;
    EXPECT_FALSE(set("Device.WiFi.SSID.1.", {{"SSID", "one"}}).has_body());
    EXPECT_FALSE(set("Device.WiFi.SSID.1.", {{"SSID", "two"}}).has_body());
    EXPECT_EQ(value("Device.LocalAgent.EndpointID"), kAgent);
    EXPECT_TRUE(set("Device.DeviceInfo.", {{"FriendlyName", "box"}}).has_body());
    gateway.release();
    EXPECT_EQ(gateway.values["Device.WiFi.SSID.1.SSID"], "two");
    EXPECT_EQ(gateway.count("set"), 2U);
}

TEST_F(WifiSet, OfALostGatewayFails) {
    gateway.lost = true;
    EXPECT_EQ(get({"Device.WiFi.SSID.1.SSID"}).req_path_results(0).err_code(), 7003U);
    EXPECT_EQ(get({"Device.WiFi.SSID.*.SSID"}).req_path_results(0).err_code(), 7003U);
    EXPECT_EQ(instances({"Device.WiFi.SSID."}).req_path_results(0).err_code(), 7003U);
    gateway.lost = false;
    gateway.unreadable.insert("Device.WiFi.SSID.1.SSID");
    EXPECT_EQ(get({"Device.WiFi.SSID.1.SSID"}).req_path_results(0).err_code(), 7003U);
    EXPECT_EQ(get({"Device.WiFi.SSID.1."}).req_path_results(0).err_code(), 0U);
}

}  // namespace
}  // namespace quorvel::agent_test
