// Add, Set and Delete, by the numbers of TP-469.
#include "tests/agent/core/AgentWorld.h"

namespace quorvel::agent_test {
namespace {

class ConformanceWrite : public AgentWorld {
  protected:
    ConformanceWrite() {
        start();
        connect();
        // The tests take their own steps from here.
        transports.sent.clear();
    }

    std::string plain(const std::string& id, std::vector<std::pair<std::string, std::string>> more = {}) {
        std::vector<std::pair<std::string, std::string>> settings{{"Enable", "true"}, {"ID", id}};
        settings.insert(settings.end(), more.begin(), more.end());
        const usp::Msg answer = add(kSubscriptionTable, settings);
        return answer.body()
            .response()
            .add_resp()
            .created_obj_results(0)
            .oper_status()
            .oper_success()
            .instantiated_path();
    }

    [[nodiscard]] std::size_t rows() {
        return static_cast<std::size_t>(instances({kSubscriptionTable}).req_path_results(0).curr_insts_size());
    }
};

using Settings = std::vector<std::pair<std::string, std::string>>;

void fill(usp::Add& add, const std::string& path, const Settings& settings, bool required = true) {
    auto& object = *add.add_create_objs();
    object.set_obj_path(path);
    for (const auto& [name, value] : settings) {
        auto& setting = *object.add_param_settings();
        setting.set_param(name);
        setting.set_value(value);
        setting.set_required(required);
    }
}

TEST_F(ConformanceWrite, 1_1_AddGivesTheRowAndItsKeys) {
    const usp::Msg answer = add(kSubscriptionTable, {{"Enable", "true"}, {"ID", "add1"}, {"NotifType", "ValueChange"}});
    ASSERT_EQ(answer.body().response().add_resp().created_obj_results_size(), 1);
    EXPECT_EQ(answer.header().msg_type(), usp::Header::ADD_RESP);
    const auto& success = answer.body().response().add_resp().created_obj_results(0).oper_status().oper_success();
    EXPECT_EQ(success.instantiated_path(), "Device.LocalAgent.Subscription.1.");
    EXPECT_EQ(success.param_errs_size(), 0);
    ASSERT_EQ(success.unique_keys().size(), 3U);
    EXPECT_EQ(success.unique_keys().at("ID"), "add1");
    EXPECT_EQ(success.unique_keys().at("Recipient"), "Device.LocalAgent.Controller.1");
    EXPECT_EQ(success.unique_keys().at("Alias"), "cpe-1");
}

TEST_F(ConformanceWrite, 1_2_AddWithAllowPartialGivesTheSame) {
    const usp::Msg answer = add(kSubscriptionTable, {{"ID", "add2"}}, true);
    const auto& success = answer.body().response().add_resp().created_obj_results(0).oper_status().oper_success();
    EXPECT_EQ(success.param_errs_size(), 0);
    EXPECT_EQ(success.unique_keys().size(), 3U);
}

TEST_F(ConformanceWrite, 1_3_AddWithABadRequiredParameterIsAnErrorAndAddsNothing) {
    const usp::Msg answer = add(kSubscriptionTable, {{"ID", "add3"}, {"Enable", "InvalidValue"}});
    const auto& error = answer.body().error();
    EXPECT_EQ(answer.header().msg_type(), usp::Header::ERROR);
    ASSERT_EQ(error.param_errs_size(), 1);
    EXPECT_EQ(error.param_errs(0).param_path(), "Device.LocalAgent.Subscription.Enable");
    EXPECT_EQ(error.param_errs(0).err_code(), 7011U);
    EXPECT_FALSE(error.err_msg().empty());
    EXPECT_EQ(rows(), 0U);
}

TEST_F(ConformanceWrite, 1_4_AddToAnUnknownTableIsAnErrorThatNamesIt) {
    const usp::Msg answer = add("Device.LocalAgent.InvalidObject.", {{"Enable", "true"}});
    ASSERT_EQ(answer.body().error().param_errs_size(), 1);
    EXPECT_EQ(answer.body().error().param_errs(0).param_path(), "Device.LocalAgent.InvalidObject.");
    EXPECT_EQ(answer.body().error().param_errs(0).err_code(), 7026U);
}

TEST_F(ConformanceWrite, 1_5_AddOfTwoObjectsGivesTwoRows) {
    usp::Msg message = request(usp::Header::ADD);
    auto& asked = *message.mutable_body()->mutable_request()->mutable_add();
    fill(asked, kSubscriptionTable, {{"ID", "a"}});
    fill(asked, kSubscriptionTable, {{"ID", "b"}});
    const usp::AddResp answer = ask(message).body().response().add_resp();
    ASSERT_EQ(answer.created_obj_results_size(), 2);
    EXPECT_EQ(answer.created_obj_results(1).oper_status().oper_success().instantiated_path(),
              "Device.LocalAgent.Subscription.2.");
    EXPECT_EQ(rows(), 2U);
}

TEST_F(ConformanceWrite, 1_6_AddOfTwoWithAnUnknownTableAddsNeither) {
    usp::Msg message = request(usp::Header::ADD);
    auto& asked = *message.mutable_body()->mutable_request()->mutable_add();
    fill(asked, kSubscriptionTable, {{"ID", "a"}});
    fill(asked, "Device.LocalAgent.InvalidObject.", {{"Enable", "true"}});
    const usp::Msg answer = ask(message);
    ASSERT_EQ(answer.body().error().param_errs_size(), 1);
    EXPECT_EQ(answer.body().error().param_errs(0).param_path(), "Device.LocalAgent.InvalidObject.");
    EXPECT_EQ(rows(), 0U);
}

TEST_F(ConformanceWrite, 1_7_AddOfTwoWithABadParameterAddsNeither) {
    usp::Msg message = request(usp::Header::ADD);
    auto& asked = *message.mutable_body()->mutable_request()->mutable_add();
    fill(asked, kSubscriptionTable, {{"ID", "a"}});
    fill(asked, kSubscriptionTable, {{"ID", "b"}, {"Enable", "bad"}});
    const usp::Msg answer = ask(message);
    ASSERT_EQ(answer.body().error().param_errs_size(), 1);
    EXPECT_TRUE(answer.body().error().param_errs(0).param_path().ends_with(".Enable"));
    EXPECT_EQ(rows(), 0U);
}

TEST_F(ConformanceWrite, 1_8_AddWithABadRequiredParameterAndAllowPartialFailsThere) {
    const usp::Msg answer = add(kSubscriptionTable, {{"ID", "x"}, {"Enable", "bad"}}, true);
    const auto& status = answer.body().response().add_resp().created_obj_results(0).oper_status();
    ASSERT_TRUE(status.has_oper_failure());
    EXPECT_EQ(status.oper_failure().err_code(), 7021U);
    EXPECT_NE(status.oper_failure().err_msg().find("Enable"), std::string::npos);
    EXPECT_EQ(rows(), 0U);
}

TEST_F(ConformanceWrite, 1_9_AddOfAGoodAndABadObjectWithAllowPartialAddsTheGoodOne) {
    usp::Msg message = request(usp::Header::ADD);
    auto& asked = *message.mutable_body()->mutable_request()->mutable_add();
    asked.set_allow_partial(true);
    fill(asked, kSubscriptionTable, {{"ID", "a"}, {"Enable", "bad"}});
    fill(asked, kSubscriptionTable, {{"ID", "b"}});
    const usp::AddResp answer = ask(message).body().response().add_resp();
    ASSERT_EQ(answer.created_obj_results_size(), 2);
    EXPECT_TRUE(answer.created_obj_results(0).oper_status().has_oper_failure());
    EXPECT_TRUE(answer.created_obj_results(1).oper_status().has_oper_success());
    EXPECT_EQ(rows(), 1U);
}

TEST_F(ConformanceWrite, 1_10_AddBelowAControllerThatIsAddressedByItsKey) {
    const usp::Msg answer = add("Device.LocalAgent.Controller.[EndpointID==\"proto::ctl-1\"].BootParameter.",
                                {{"Enable", "true"}, {"ParameterName", "Device.DeviceInfo.SerialNumber"}});
    const auto& success = answer.body().response().add_resp().created_obj_results(0).oper_status().oper_success();
    EXPECT_EQ(success.instantiated_path(), "Device.LocalAgent.Controller.1.BootParameter.1.");
    ASSERT_EQ(success.unique_keys().size(), 2U);
    EXPECT_EQ(success.unique_keys().at("ParameterName"), "Device.DeviceInfo.SerialNumber");
    EXPECT_EQ(success.unique_keys().at("Alias"), "cpe-1");
}

TEST_F(ConformanceWrite, 1_95_AddBelowASearchedController) {
    const usp::Msg answer = add("Device.LocalAgent.Controller.*.BootParameter.",
                                {{"Enable", "true"}, {"ParameterName", "Device.DeviceInfo.*"}});
    const auto& success = answer.body().response().add_resp().created_obj_results(0).oper_status().oper_success();
    EXPECT_EQ(success.instantiated_path(), "Device.LocalAgent.Controller.1.BootParameter.1.");
}

TEST_F(ConformanceWrite, 1_11_SetReportsTheRowAndJustTheParameter) {
    plain("s");
    const usp::SetResp answer =
        set("Device.LocalAgent.Subscription.1.", {{"NotifRetry", "true"}}).body().response().set_resp();
    const auto& result = answer.updated_obj_results(0).oper_status().oper_success().updated_inst_results(0);
    EXPECT_EQ(result.affected_path(), "Device.LocalAgent.Subscription.1.");
    ASSERT_EQ(result.updated_params().size(), 1U);
    EXPECT_EQ(result.updated_params().at("NotifRetry"), "true");
    EXPECT_EQ(value("Device.LocalAgent.Subscription.1.NotifRetry"), "true");
}

TEST_F(ConformanceWrite, 1_12_SetWithAnUnchangedValueReportsItToo) {
    plain("s");
    const usp::SetResp answer =
        set("Device.LocalAgent.Subscription.1.", {{"NotifRetry", "false"}}, true).body().response().set_resp();
    EXPECT_EQ(answer.updated_obj_results(0).oper_status().oper_success().updated_inst_results(0).updated_params().at(
                  "NotifRetry"),
              "false");
}

TEST_F(ConformanceWrite, 1_13_SetByUniqueKey) {
    plain("s");
    const usp::SetResp answer =
        set("Device.LocalAgent.Subscription.[Recipient==\"Device.LocalAgent.Controller.1\"&&ID==\"s\"].",
            {{"NotifRetry", "1"}})
            .body()
            .response()
            .set_resp();
    const auto& result = answer.updated_obj_results(0).oper_status().oper_success().updated_inst_results(0);
    EXPECT_EQ(result.affected_path(), "Device.LocalAgent.Subscription.1.");
    EXPECT_EQ(result.updated_params().at("NotifRetry"), "true");
}

TEST_F(ConformanceWrite, 1_14_SetOfAnUnknownRequiredParameterIsAnErrorAndSetsNothing) {
    plain("s");
    const usp::Msg answer =
        set("Device.LocalAgent.Subscription.1.", {{"NotifRetry", "true"}, {"InvalidParameter", "x"}});
    ASSERT_EQ(answer.body().error().param_errs_size(), 1);
    EXPECT_EQ(answer.body().error().param_errs(0).param_path(), "Device.LocalAgent.Subscription.1.InvalidParameter");
    EXPECT_EQ(answer.body().error().param_errs(0).err_code(), 7010U);
    EXPECT_EQ(value("Device.LocalAgent.Subscription.1.NotifRetry"), "false");
}

TEST_F(ConformanceWrite, 1_15_SetOfAnUnknownRequiredParameterWithAllowPartialFailsThere) {
    plain("s");
    const usp::SetResp answer =
        set("Device.LocalAgent.Subscription.1.", {{"NotifRetry", "true"}, {"InvalidParameter", "x"}}, true)
            .body()
            .response()
            .set_resp();
    const auto& failure = answer.updated_obj_results(0).oper_status().oper_failure();
    EXPECT_EQ(failure.err_code(), 7021U);
    ASSERT_EQ(failure.updated_inst_failures_size(), 1);
    ASSERT_EQ(failure.updated_inst_failures(0).param_errs_size(), 1);
    EXPECT_EQ(failure.updated_inst_failures(0).param_errs(0).param(), "InvalidParameter");
    EXPECT_EQ(value("Device.LocalAgent.Subscription.1.NotifRetry"), "false");
}

TEST_F(ConformanceWrite, 1_16_SetOfAnUnknownOptionalParameterSetsTheOthers) {
    plain("s");
    usp::Msg message = request(usp::Header::SET);
    auto& update = *message.mutable_body()->mutable_request()->mutable_set()->add_update_objs();
    update.set_obj_path("Device.LocalAgent.Subscription.1.");
    auto& good = *update.add_param_settings();
    good.set_param("NotifRetry");
    good.set_value("true");
    good.set_required(true);
    auto& bad = *update.add_param_settings();
    bad.set_param("InvalidParameter");
    bad.set_value("x");
    const usp::SetResp answer = ask(message).body().response().set_resp();
    const auto& result = answer.updated_obj_results(0).oper_status().oper_success().updated_inst_results(0);
    ASSERT_EQ(result.param_errs_size(), 1);
    EXPECT_EQ(result.param_errs(0).param(), "InvalidParameter");
    EXPECT_EQ(result.updated_params().size(), 1U);
    EXPECT_EQ(value("Device.LocalAgent.Subscription.1.NotifRetry"), "true");
}

TEST_F(ConformanceWrite, 1_17_SetOfAnUnknownObjectIsAnErrorThatNamesIt) {
    const usp::Msg answer = set("Device.LocalAgent.InvalidObject.", {{"Enable", "true"}});
    ASSERT_EQ(answer.body().error().param_errs_size(), 1);
    EXPECT_EQ(answer.body().error().param_errs(0).param_path(), "Device.LocalAgent.InvalidObject.");
}

TEST_F(ConformanceWrite, 1_18_SetBySearch) {
    plain("a", {{"NotifExpiration", "5"}});
    plain("b");
    const usp::SetResp answer = set("Device.LocalAgent.Subscription.[NotifExpiration>0].", {{"NotifRetry", "true"}})
                                    .body()
                                    .response()
                                    .set_resp();
    const auto& success = answer.updated_obj_results(0).oper_status().oper_success();
    ASSERT_EQ(success.updated_inst_results_size(), 1);
    EXPECT_EQ(success.updated_inst_results(0).affected_path(), "Device.LocalAgent.Subscription.1.");
}

TEST_F(ConformanceWrite, 1_19_SetOfAllRows) {
    plain("a");
    plain("b");
    const usp::SetResp answer =
        set("Device.LocalAgent.Subscription.*.", {{"NotifRetry", "true"}}).body().response().set_resp();
    EXPECT_EQ(answer.updated_obj_results(0).oper_status().oper_success().updated_inst_results_size(), 2);
}

TEST_F(ConformanceWrite, 1_20_SetOfAllRowsWithABadValueIsAnError) {
    plain("a");
    plain("b");
    const usp::Msg answer = set("Device.LocalAgent.Subscription.*.", {{"NotifRetry", "bad"}});
    EXPECT_EQ(answer.body().error().param_errs_size(), 2);
    EXPECT_EQ(value("Device.LocalAgent.Subscription.1.NotifRetry"), "false");
}

TEST_F(ConformanceWrite, 1_21_SetOfAllRowsWithABadValueAndAllowPartialSetsNone) {
    plain("a");
    plain("b");
    const usp::SetResp answer =
        set("Device.LocalAgent.Subscription.*.", {{"NotifRetry", "bad"}}, true).body().response().set_resp();
    EXPECT_TRUE(answer.updated_obj_results(0).oper_status().has_oper_failure());
    EXPECT_EQ(answer.updated_obj_results(0).oper_status().oper_failure().updated_inst_failures_size(), 2);
}

TEST_F(ConformanceWrite, 1_22_SetOfTwoObjects) {
    plain("a");
    plain("b");
    usp::Msg message = request(usp::Header::SET);
    for (const char* const row : {"Device.LocalAgent.Subscription.1.", "Device.LocalAgent.Subscription.2."}) {
        auto& update = *message.mutable_body()->mutable_request()->mutable_set()->add_update_objs();
        update.set_obj_path(row);
        auto& setting = *update.add_param_settings();
        setting.set_param("NotifRetry");
        setting.set_value("true");
    }
    EXPECT_EQ(ask(message).body().response().set_resp().updated_obj_results_size(), 2);
}

TEST_F(ConformanceWrite, 1_23_SetOfASearchWithoutMatchSucceedsEmpty) {
    const usp::SetResp answer =
        set("Device.LocalAgent.Subscription.[ID==\"nobody\"].", {{"NotifRetry", "true"}}).body().response().set_resp();
    ASSERT_TRUE(answer.updated_obj_results(0).oper_status().has_oper_success());
    EXPECT_EQ(answer.updated_obj_results(0).oper_status().oper_success().updated_inst_results_size(), 0);
}

TEST_F(ConformanceWrite, 1_24_DeleteReportsTheRowAndKeepsTheOthers) {
    plain("a");
    plain("b");
    const usp::DeleteResp answer = remove({"Device.LocalAgent.Subscription.1."}).body().response().delete_resp();
    const auto& success = answer.deleted_obj_results(0).oper_status().oper_success();
    ASSERT_EQ(success.affected_paths_size(), 1);
    EXPECT_EQ(success.affected_paths(0), "Device.LocalAgent.Subscription.1.");
    EXPECT_EQ(rows(), 1U);
}

TEST_F(ConformanceWrite, 1_25_DeleteOfARowThatIsNotThereSucceedsEmpty) {
    const usp::DeleteResp answer = remove({"Device.LocalAgent.Subscription.9."}).body().response().delete_resp();
    ASSERT_TRUE(answer.deleted_obj_results(0).oper_status().has_oper_success());
    EXPECT_EQ(answer.deleted_obj_results(0).oper_status().oper_success().affected_paths_size(), 0);
}

TEST_F(ConformanceWrite, 1_26_DeleteOfAnUnknownObjectIsAnError) {
    const usp::Msg answer = remove({"Device.LocalAgent.InvalidObject."});
    ASSERT_EQ(answer.body().error().param_errs_size(), 1);
    EXPECT_EQ(answer.body().error().param_errs(0).err_code(), 7026U);
}

TEST_F(ConformanceWrite, 1_27_DeleteOfTwoRows) {
    plain("a");
    plain("b");
    const usp::DeleteResp answer = remove({"Device.LocalAgent.Subscription.1.", "Device.LocalAgent.Subscription.2."})
                                       .body()
                                       .response()
                                       .delete_resp();
    EXPECT_EQ(answer.deleted_obj_results_size(), 2);
    EXPECT_EQ(rows(), 0U);
}

TEST_F(ConformanceWrite, 1_28_DeleteOfTwoWithAnUnknownObjectDeletesNeither) {
    plain("a");
    const usp::Msg answer = remove({"Device.LocalAgent.Subscription.1.", "Device.LocalAgent.InvalidObject."});
    EXPECT_EQ(answer.body().error().param_errs_size(), 1);
    EXPECT_EQ(rows(), 1U);
}

TEST_F(ConformanceWrite, 1_29_DeleteOfARowThatIsNotThereWithAllowPartialSucceedsEmpty) {
    const usp::DeleteResp answer = remove({"Device.LocalAgent.Subscription.9."}, true).body().response().delete_resp();
    EXPECT_TRUE(answer.deleted_obj_results(0).oper_status().has_oper_success());
}

TEST_F(ConformanceWrite, 1_30_DeleteOfAnUnknownObjectWithAllowPartialFailsThere) {
    const usp::DeleteResp answer = remove({"Device.LocalAgent.InvalidObject."}, true).body().response().delete_resp();
    EXPECT_EQ(answer.deleted_obj_results(0).oper_status().oper_failure().err_code(), 7026U);
}

TEST_F(ConformanceWrite, 1_31_DeleteOfAGoodAndAnUnknownObjectWithAllowPartialDeletesTheGoodOne) {
    plain("a");
    const usp::DeleteResp answer =
        remove({"Device.LocalAgent.InvalidObject.", "Device.LocalAgent.Subscription.1."}, true)
            .body()
            .response()
            .delete_resp();
    EXPECT_TRUE(answer.deleted_obj_results(0).oper_status().has_oper_failure());
    EXPECT_TRUE(answer.deleted_obj_results(1).oper_status().has_oper_success());
    EXPECT_EQ(rows(), 0U);
}

TEST_F(ConformanceWrite, 1_33_DeleteBelowAControllerThatIsAddressedByItsKey) {
    add("Device.LocalAgent.Controller.1.BootParameter.", {{"ParameterName", "Device.DeviceInfo.SerialNumber"}});
    const usp::DeleteResp answer =
        remove({"Device.LocalAgent.Controller.[EndpointID==\"proto::ctl-1\"].BootParameter.1."})
            .body()
            .response()
            .delete_resp();
    EXPECT_EQ(answer.deleted_obj_results(0).oper_status().oper_success().affected_paths(0),
              "Device.LocalAgent.Controller.1.BootParameter.1.");
}

TEST_F(ConformanceWrite, 1_34_DeleteOfAllRows) {
    plain("a");
    plain("b");
    const usp::DeleteResp answer = remove({"Device.LocalAgent.Subscription.*."}).body().response().delete_resp();
    EXPECT_EQ(answer.deleted_obj_results(0).oper_status().oper_success().affected_paths_size(), 2);
    EXPECT_EQ(rows(), 0U);
}

TEST_F(ConformanceWrite, 1_35_DeleteBySearchBelowAController) {
    add("Device.LocalAgent.Controller.1.BootParameter.", {{"ParameterName", "Device.DeviceInfo.SerialNumber"}});
    const usp::DeleteResp answer =
        remove({"Device.LocalAgent.Controller.*.BootParameter.[Enable==false]."}).body().response().delete_resp();
    EXPECT_EQ(answer.deleted_obj_results(0).oper_status().oper_success().affected_paths_size(), 1);
}

TEST_F(ConformanceWrite, 1_81_TwoAddsWithoutAnIdGetDifferentOnes) {
    const usp::Msg one = add(kSubscriptionTable, {{"Enable", "true"}});
    const usp::Msg other = add(kSubscriptionTable, {{"Enable", "true"}});
    const auto& keys =
        one.body().response().add_resp().created_obj_results(0).oper_status().oper_success().unique_keys();
    const auto& others =
        other.body().response().add_resp().created_obj_results(0).oper_status().oper_success().unique_keys();
    EXPECT_NE(keys.at("ID"), others.at("ID"));
    EXPECT_NE(keys.at("Alias"), others.at("Alias"));
}

TEST_F(ConformanceWrite, 1_88_AnAliasThatBeginsWithADigitIsAnError) {
    const usp::Msg answer = add(kSubscriptionTable, {{"Alias", "1abc"}});
    ASSERT_EQ(answer.body().error().param_errs_size(), 1);
    EXPECT_TRUE(answer.body().error().param_errs(0).param_path().ends_with(".Alias"));
    EXPECT_EQ(rows(), 0U);
}

TEST_F(ConformanceWrite, 1_90_DeleteOfASearchWithoutMatchSucceedsEmpty) {
    const usp::DeleteResp answer =
        remove({"Device.LocalAgent.Subscription.[ID==\"x\"]."}).body().response().delete_resp();
    EXPECT_EQ(answer.deleted_obj_results(0).oper_status().oper_success().affected_paths_size(), 0);
}

TEST_F(ConformanceWrite, 1_96_AnIdThatIsSetStays) {
    plain("keep");
    const usp::Msg answer = set("Device.LocalAgent.Subscription.1.", {{"ID", "other"}});
    EXPECT_EQ(answer.body().error().param_errs(0).err_code(), 7013U);
    EXPECT_EQ(value("Device.LocalAgent.Subscription.1.ID"), "keep");
}

TEST_F(ConformanceWrite, 1_104_AnAliasThatIsSetStays) {
    plain("keep");
    EXPECT_TRUE(set("Device.LocalAgent.Subscription.1.", {{"Alias", "other"}}).body().has_error());
    EXPECT_EQ(value("Device.LocalAgent.Subscription.1.Alias"), "cpe-1");
}

}  // namespace
}  // namespace quorvel::agent_test
