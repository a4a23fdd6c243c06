// Add, Set and Delete.
#include <algorithm>
#include <set>

#include "tests/agent/conformance/Lab.h"

namespace quorvel::agent_test {
namespace {

const std::string kTable = kSubscriptions;

class Writing : public Tp469 {
  protected:
    std::size_t rows() {
        return instancesOf(ask(instances({kTable}))).size();
    }
    static const auto& created(const usp::Msg& answer, int index = 0) {
        return answer.body().response().add_resp().created_obj_results(index).oper_status();
    }
    static const auto& updated(const usp::Msg& answer, int index = 0) {
        return answer.body().response().set_resp().updated_obj_results(index).oper_status();
    }
    static const auto& deleted(const usp::Msg& answer, int index = 0) {
        return answer.body().response().delete_resp().deleted_obj_results(index).oper_status();
    }
    // Expects an Error with exactly one parameter error, of this path.
    static void expectError(const usp::Msg& answer, const std::string& path) {
        ASSERT_TRUE(answer.body().has_error()) << answer.DebugString();
        ASSERT_EQ(answer.body().error().param_errs_size(), 1) << answer.DebugString();
        EXPECT_EQ(answer.body().error().param_errs(0).param_path(), path);
    }
    static Change bad(const std::string& id) {
        Change change = subscription(id, "ValueChange", "Device.DeviceInfo.ProvisioningCode");
        change.params.at(0).value = "maybe";
        return change;
    }
    static Change good(const std::string& id) {
        return subscription(id, "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    }
    void expectKeys(const google::protobuf::Map<std::string, std::string>& keys) {
        std::set<std::string> names;
        for (const auto& [name, value] : keys)
            names.insert(name);
        EXPECT_EQ(names, (std::set<std::string>{"Alias", "Recipient", "ID"}));
    }
};

TEST_F(Writing, T1_1_AddOneObject) {
    const usp::Msg answer = ask(add(false, {good("a")}));
    ASSERT_TRUE(created(answer).has_oper_success()) << answer.DebugString();
    EXPECT_EQ(created(answer).oper_success().param_errs_size(), 0);
    expectKeys(created(answer).oper_success().unique_keys());
}

TEST_F(Writing, T1_2_AddOneObjectWithAllowPartial) {
    const usp::Msg answer = ask(add(true, {good("a")}));
    ASSERT_TRUE(created(answer).has_oper_success()) << answer.DebugString();
    EXPECT_EQ(created(answer).oper_success().param_errs_size(), 0);
    expectKeys(created(answer).oper_success().unique_keys());
}

TEST_F(Writing, T1_3_AddWithABadRequiredParameter) {
    const std::size_t before = rows();
    const usp::Msg answer = ask(add(false, {bad("a")}));
    ASSERT_TRUE(answer.body().has_error()) << answer.DebugString();
    ASSERT_EQ(answer.body().error().param_errs_size(), 1);
    const std::string path = answer.body().error().param_errs(0).param_path();
    EXPECT_TRUE(path.starts_with(kTable) && path.ends_with("Enable")) << path;
    EXPECT_EQ(rows(), before);
}

TEST_F(Writing, T1_4_AddToAnUnknownTable) {
    expectError(ask(add(false, {{"Device.LocalAgent.InvalidObject.", {}}})), "Device.LocalAgent.InvalidObject.");
}

TEST_F(Writing, T1_5_AddTwoObjects) {
    const usp::Msg answer = ask(add(false, {good("a"), good("b")}));
    for (int index = 0; index < 2; ++index) {
        ASSERT_TRUE(created(answer, index).has_oper_success()) << answer.DebugString();
        EXPECT_EQ(created(answer, index).oper_success().param_errs_size(), 0);
        expectKeys(created(answer, index).oper_success().unique_keys());
    }
}

TEST_F(Writing, T1_6_AddTwoOneToAnUnknownTable) {
    const std::size_t before = rows();
    expectError(ask(add(false, {good("a"), {"Device.LocalAgent.InvalidObject.", {}}})),
                "Device.LocalAgent.InvalidObject.");
    EXPECT_EQ(rows(), before);
}

TEST_F(Writing, T1_7_AddTwoOneWithABadRequiredParameter) {
    const std::size_t before = rows();
    const usp::Msg answer = ask(add(false, {good("a"), bad("b")}));
    ASSERT_TRUE(answer.body().has_error()) << answer.DebugString();
    ASSERT_EQ(answer.body().error().param_errs_size(), 1);
    EXPECT_TRUE(answer.body().error().param_errs(0).param_path().ends_with("Enable"));
    EXPECT_EQ(rows(), before);
}

TEST_F(Writing, T1_8_AddABadOneWithAllowPartial) {
    EXPECT_TRUE(created(ask(add(true, {bad("a")}))).has_oper_failure());
}

TEST_F(Writing, T1_9_AddABadOneBesideAGoodOneWithAllowPartial) {
    const usp::Msg answer = ask(add(true, {bad("a"), good("b")}));
    EXPECT_TRUE(created(answer, 0).has_oper_failure());
    EXPECT_TRUE(created(answer, 1).has_oper_success());
}

TEST_F(Writing, T1_10_AddBelowAnObjectAddressedByKey) {
    const std::string table =
        std::string("Device.LocalAgent.Controller.[EndpointID==\"") + kControllerId + "\"].BootParameter.";
    const usp::Msg answer =
        ask(add(false, {{table, {{"Enable", "true"}, {"ParameterName", "Device.DeviceInfo.UpTime"}}}}));
    ASSERT_TRUE(created(answer).has_oper_success()) << answer.DebugString();
    const auto& success = created(answer).oper_success();
    EXPECT_TRUE(success.unique_keys().contains("Alias"));
    EXPECT_TRUE(success.unique_keys().contains("ParameterName"));
    (void)ask(del(false, {success.instantiated_path()}));
}

TEST_F(Writing, T1_95_AddBelowASearchedObject) {
    const usp::Msg answer =
        ask(add(false, {{"Device.LocalAgent.Controller.[Enable==true].BootParameter.",
                         {{"Enable", "true"}, {"ParameterName", "Device.DeviceInfo.SoftwareVersion"}}}}));
    ASSERT_TRUE(created(answer).has_oper_success()) << answer.DebugString();
    const auto& success = created(answer).oper_success();
    EXPECT_TRUE(success.unique_keys().contains("Alias"));
    EXPECT_TRUE(success.unique_keys().contains("ParameterName"));
    (void)ask(del(false, {success.instantiated_path()}));
}

TEST_F(Writing, T1_11_SetOneParameter) {
    const std::string row = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const usp::Msg answer = ask(set(false, {{row, {{"NotifRetry", "true"}}}}));
    ASSERT_TRUE(updated(answer).has_oper_success()) << answer.DebugString();
    const auto& instance = updated(answer).oper_success().updated_inst_results(0);
    EXPECT_EQ(instance.affected_path(), row);
    ASSERT_EQ(instance.updated_params().size(), 1U);
    EXPECT_EQ(instance.updated_params().at("NotifRetry"), "true");
    EXPECT_EQ(value(row + "NotifRetry"), "true");
}

TEST_F(Writing, T1_12_SetByUniqueKey) {
    const std::string row = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const std::string alias = value(row + "Alias");
    const usp::Msg answer = ask(set(false, {{kTable + "[Alias==\"" + alias + "\"].", {{"NotifRetry", "true"}}}}));
    ASSERT_TRUE(updated(answer).has_oper_success()) << answer.DebugString();
    EXPECT_EQ(updated(answer).oper_success().updated_inst_results(0).affected_path(), row);
}

TEST_F(Writing, T1_13_SetTwoObjects) {
    const std::string first = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const std::string second = subscribe("b", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const usp::Msg answer = ask(set(false, {{first, {{"NotifRetry", "true"}}}, {second, {{"NotifRetry", "true"}}}}));
    EXPECT_TRUE(updated(answer, 0).has_oper_success()) << answer.DebugString();
    EXPECT_TRUE(updated(answer, 1).has_oper_success()) << answer.DebugString();
}

TEST_F(Writing, T1_14_SetAnUnknownRequiredParameter) {
    const std::string row = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    expectError(ask(set(false, {{row, {{"InvalidParameter", "1"}}}})), row + "InvalidParameter");
}

TEST_F(Writing, T1_15_SetAnUnknownRequiredParameterWithAllowPartial) {
    const std::string row = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const usp::Msg answer = ask(set(true, {{row, {{"InvalidParameter", "1"}}}}));
    ASSERT_EQ(answer.body().response().set_resp().updated_obj_results_size(), 1) << answer.DebugString();
    EXPECT_TRUE(updated(answer).has_oper_failure());
}

TEST_F(Writing, T1_16_SetAnUnknownOptionalParameterBesideAGoodOne) {
    const std::string row = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const usp::Msg answer = ask(set(true, {{row, {{"InvalidParameter", "1", false}, {"NotifRetry", "true"}}}}));
    ASSERT_TRUE(updated(answer).has_oper_success()) << answer.DebugString();
    EXPECT_EQ(updated(answer).oper_success().updated_inst_results(0).param_errs_size(), 1);
}

TEST_F(Writing, T1_17_SetTwoObjectsOneWithAnUnknownParameter) {
    const std::string first = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const std::string second = subscribe("b", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    expectError(ask(set(false, {{first, {{"NotifRetry", "true"}}}, {second, {{"InvalidParameter", "1"}}}})),
                second + "InvalidParameter");
    EXPECT_EQ(value(first + "NotifRetry"), "false");
}

TEST_F(Writing, T1_18_SetByASearch) {
    const std::string row =
        subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode", {{"NotifExpiration", "5"}});
    (void)subscribe("b", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const usp::Msg answer = ask(set(false, {{kTable + "[NotifExpiration>0].", {{"NotifRetry", "true"}}}}));
    ASSERT_TRUE(updated(answer).has_oper_success()) << answer.DebugString();
    ASSERT_EQ(updated(answer).oper_success().updated_inst_results_size(), 1);
    EXPECT_EQ(updated(answer).oper_success().updated_inst_results(0).affected_path(), row);
}

TEST_F(Writing, T1_19_SetAllByWildcard) {
    (void)subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    (void)subscribe("b", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const usp::Msg answer = ask(set(false, {{kTable + "*.", {{"NotifRetry", "true"}}}}));
    ASSERT_TRUE(updated(answer).has_oper_success()) << answer.DebugString();
    EXPECT_GE(updated(answer).oper_success().updated_inst_results_size(), 2);
}

TEST_F(Writing, T1_20_SetAllByWildcardWithABadValue) {
    (void)subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    (void)subscribe("b", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    EXPECT_TRUE(ask(set(false, {{kTable + "*.", {{"NotifRetry", "maybe"}}}})).body().has_error());
}

TEST_F(Writing, T1_21_SetAllByWildcardWithABadValueAndAllowPartial) {
    const std::string row = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    (void)subscribe("b", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const usp::Msg answer = ask(set(true, {{kTable + "*.", {{"NotifExpiration", "7"}, {"NotifRetry", "maybe"}}}}));
    EXPECT_TRUE(updated(answer).has_oper_failure()) << answer.DebugString();
    EXPECT_EQ(value(row + "NotifExpiration"), "0");
}

TEST_F(Writing, T1_22_SetByASearchInAllObjects) {
    (void)subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode", {{"NotifExpiration", "5"}});
    const usp::Msg answer = ask(set(false, {{kTable + "[NotifExpiration>0].", {{"NotifExpiration", "6"}}}}));
    ASSERT_TRUE(updated(answer).has_oper_success()) << answer.DebugString();
    EXPECT_EQ(updated(answer).oper_success().updated_inst_results(0).updated_params().at("NotifExpiration"), "6");
}

TEST_F(Writing, T1_23_SetByASearchThatFindsNothing) {
    const usp::Msg answer = ask(set(false, {{kTable + "[NotifExpiration>9999].", {{"NotifRetry", "true"}}}}));
    ASSERT_TRUE(updated(answer).has_oper_success()) << answer.DebugString();
    EXPECT_EQ(updated(answer).oper_success().updated_inst_results_size(), 0);
}

TEST_F(Writing, T1_24_DeleteOneObject) {
    const std::string row = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const std::string other = subscribe("b", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const usp::Msg answer = ask(del(false, {row}));
    ASSERT_TRUE(deleted(answer).has_oper_success()) << answer.DebugString();
    ASSERT_EQ(deleted(answer).oper_success().affected_paths_size(), 1);
    EXPECT_EQ(deleted(answer).oper_success().affected_paths(0), row);
    EXPECT_EQ(instancesOf(ask(instances({kTable}))), std::vector<std::string>{other});
}

TEST_F(Writing, T1_25_DeleteAMissingObject) {
    const usp::Msg answer = ask(del(false, {kTable + "99999."}));
    ASSERT_TRUE(deleted(answer).has_oper_success()) << answer.DebugString();
    EXPECT_EQ(deleted(answer).oper_success().affected_paths_size(), 0);
}

TEST_F(Writing, T1_26_DeleteAnUnknownObject) {
    expectError(ask(del(false, {"Device.LocalAgent.InvalidObject.1."})), "Device.LocalAgent.InvalidObject.1.");
}

TEST_F(Writing, T1_27_DeleteTwoObjects) {
    const std::string first = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const std::string second = subscribe("b", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const usp::Msg answer = ask(del(false, {first, second}));
    EXPECT_EQ(deleted(answer, 0).oper_success().affected_paths(0), first);
    EXPECT_EQ(deleted(answer, 1).oper_success().affected_paths(0), second);
}

TEST_F(Writing, T1_28_DeleteTwoOneUnknown) {
    const std::string row = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    expectError(ask(del(false, {row, "Device.LocalAgent.InvalidObject.1."})), "Device.LocalAgent.InvalidObject.1.");
    EXPECT_EQ(instancesOf(ask(instances({kTable}))), std::vector<std::string>{row});
}

TEST_F(Writing, T1_29_DeleteTwoMissingObjects) {
    const usp::Msg answer = ask(del(true, {kTable + "99998.", kTable + "99999."}));
    EXPECT_TRUE(deleted(answer, 0).has_oper_success()) << answer.DebugString();
    EXPECT_TRUE(deleted(answer, 1).has_oper_success());
}

TEST_F(Writing, T1_30_DeleteAnUnknownObjectWithAllowPartial) {
    EXPECT_TRUE(deleted(ask(del(true, {"Device.LocalAgent.InvalidObject.1."}))).has_oper_failure());
}

TEST_F(Writing, T1_31_DeleteTwoOneUnknownWithAllowPartial) {
    const std::string row = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const usp::Msg answer = ask(del(true, {"Device.LocalAgent.InvalidObject.1.", row}));
    EXPECT_TRUE(deleted(answer, 0).has_oper_failure()) << answer.DebugString();
    EXPECT_EQ(deleted(answer, 1).oper_success().affected_paths(0), row);
}

TEST_F(Writing, T1_32_DeleteBySearchThatFindsNothing) {
    const usp::Msg answer = ask(del(false, {kTable + "[NotifExpiration>9999]."}));
    ASSERT_TRUE(deleted(answer).has_oper_success()) << answer.DebugString();
    EXPECT_EQ(deleted(answer).oper_success().affected_paths_size(), 0);
}

TEST_F(Writing, T1_33_DeleteByUniqueKey) {
    const usp::Msg made = ask(add(false, {{std::string(kOwnController) + "BootParameter.",
                                           {{"ParameterName", "Device.DeviceInfo.HardwareVersion"}}}}));
    const std::string row = createdRow(made);
    ASSERT_NE(row, "") << made.DebugString();
    const usp::Msg answer = ask(del(false, {std::string(kOwnController) +
                                            "BootParameter.[ParameterName==\"Device.DeviceInfo.HardwareVersion\"]."}));
    ASSERT_EQ(deleted(answer).oper_success().affected_paths_size(), 1) << answer.DebugString();
    EXPECT_EQ(deleted(answer).oper_success().affected_paths(0), row);
}

TEST_F(Writing, T1_34_DeleteAllByWildcard) {
    (void)subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    (void)subscribe("b", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    const usp::Msg answer = ask(del(false, {kTable + "*."}));
    EXPECT_GE(deleted(answer).oper_success().affected_paths_size(), 2) << answer.DebugString();
    EXPECT_EQ(rows(), 0U);
}

TEST_F(Writing, T1_35_DeleteBySearch) {
    const usp::Msg made = ask(add(false, {{std::string(kOwnController) + "BootParameter.",
                                           {{"Enable", "false"}, {"ParameterName", "Device.DeviceInfo.ModelName"}}}}));
    const std::string row = createdRow(made);
    ASSERT_NE(row, "") << made.DebugString();
    const usp::Msg answer = ask(del(false, {std::string(kOwnController) + "BootParameter.[Enable==false]."}));
    ASSERT_EQ(deleted(answer).oper_success().affected_paths_size(), 1) << answer.DebugString();
    EXPECT_EQ(deleted(answer).oper_success().affected_paths(0), row);
}

TEST_F(Writing, T1_78_DeletedControllerTakesItsSubscriptionsAlong) {
    const std::string row = createdRow(ask(
        add(false, {{"Device.LocalAgent.Controller.", {{"EndpointID", "proto::short-lived"}, {"Enable", "true"}}}})));
    ASSERT_NE(row, "");
    Controller other(mqttCarrier(lab_.broker.port(), "/usp/endpoint", "/usp/short-lived"),
                     {"proto::short-lived", kAgentId});
    const std::string theirs = createdRow(other.ask(add(false, {good("theirs")})));
    ASSERT_NE(theirs, "");
    (void)ask(del(false, {row}));
    const std::vector<std::string> left = instancesOf(ask(instances({kTable})));
    EXPECT_EQ(std::count(left.begin(), left.end(), theirs), 0);
}

TEST_F(Writing, T1_81_TwoAddsWithoutAnIdDiffer) {
    const Change nameless{kTable,
                          {{"NotifType", "ValueChange"}, {"ReferenceList", "Device.DeviceInfo.ProvisioningCode"}}};
    const usp::Msg answer = ask(add(false, {nameless, nameless}));
    ASSERT_TRUE(created(answer, 0).has_oper_success() && created(answer, 1).has_oper_success()) << answer.DebugString();
    const auto& first = created(answer, 0).oper_success().unique_keys();
    const auto& second = created(answer, 1).oper_success().unique_keys();
    EXPECT_NE(first.at("ID"), second.at("ID"));
    EXPECT_NE(first.at("Alias"), second.at("Alias"));
}

TEST_F(Writing, T1_88_AliasThatStartsWithADigitIsRefused) {
    EXPECT_TRUE(
        ask(add(false, {subscription("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode", {{"Alias", "1st"}})}))
            .body()
            .has_error());
}

TEST_F(Writing, T1_90_SetAMissingObjectByKey) {
    const usp::Msg answer = ask(set(false, {{kTable + "[Alias==\"none\"].", {{"NotifRetry", "true"}}}}));
    ASSERT_TRUE(updated(answer).has_oper_success()) << answer.DebugString();
    EXPECT_EQ(updated(answer).oper_success().updated_inst_results_size(), 0);
}

TEST_F(Writing, T1_96_KeyThatMayNotChangeIsRefused) {
    const std::string row = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode");
    EXPECT_TRUE(ask(set(false, {{row, {{"ID", "b"}}}})).body().has_error());
    EXPECT_EQ(value(row + "ID"), "a");
}

TEST_F(Writing, T1_104_AliasMayBeWrittenOnceOnly) {
    const std::string row = subscribe("a", "ValueChange", "Device.DeviceInfo.ProvisioningCode", {{"Alias", "mine"}});
    EXPECT_TRUE(ask(set(false, {{row, {{"Alias", "other"}}}})).body().has_error());
    EXPECT_EQ(value(row + "Alias"), "mine");
}

}  // namespace
}  // namespace quorvel::agent_test
