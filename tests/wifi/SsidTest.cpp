#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/wifi/platform/FreshProcess.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Contexts.h"

// SSIDs: every parameter is a variable of the manager.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using scripted::PlatformTest;
using Texts = std::vector<std::string>;

class Ssid : public PlatformTest {
  protected:
    Ssid() {
        (void)WiFiSSIDInitContext(context.get());
        platform.forget();
    }
    GuardedBlock context{344};
};

TEST_F(Ssid, TextsComeFromTheManager) {
    const struct {
        std::uint32_t (*get)(std::uint32_t, char*, std::uint32_t);
        const char* variable;
        std::uint32_t length;
    } rows[] = {{WiFiSSIDStatusGet, "status", 32},
                {WiFiSSIDAliasGet, "sAlias", 64},
                {WiFiSSIDNameGet, "name", 64},
                {WiFiSSIDBSSIDGet, "wlBssid", 17},
                {WiFiSSIDSSIDGet, "wlSsid", 32}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.variable);
        platform.forget();
        platform.setVariable(1, 2, row.variable, "some text");
        GuardedBlock buffer(row.length);
        EXPECT_EQ(row.get(11, buffer.text(), row.length), 0U);
        EXPECT_STREQ(buffer.text(), "some text");
        EXPECT_TRUE(buffer.intact());
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get"}),
                  Texts{std::string("wlcsm_mngr_ext_get(1, 2, \"") + row.variable + "\")"});
        platform.removeVariable(1, 2, row.variable);
        GuardedBlock untouched(row.length);
        EXPECT_EQ(row.get(11, untouched.text(), row.length), 1U);
        EXPECT_EQ(untouched.bytes(0, row.length), std::string(row.length, '\xEE'));
    }
}

TEST_F(Ssid, EnableComesFromTheManager) {
    platform.setVariable(2, 7, "wlEnblSsid", "1");
    std::uint8_t enabled = 0;
    EXPECT_EQ(WiFiSSIDEnableGet(24, &enabled), 0U);
    EXPECT_EQ(enabled, 1);
    EXPECT_EQ(WiFiSSIDEnableGet(23, &enabled), 1U);
}

TEST_F(Ssid, InstancesBelongToTheRadiosInEights) {
    const struct {
        std::uint32_t instance;
        const char* place;
    } rows[] = {{1, "0, 0"}, {2, "0, 1"}, {8, "0, 7"}, {9, "1, 0"}, {16, "1, 7"}, {17, "2, 0"}, {24, "2, 7"}};
    for (const auto& row : rows) {
        platform.forget();
        char buffer[33] = {};
        (void)WiFiSSIDSSIDGet(row.instance, buffer, 32);
        EXPECT_EQ(platform.callTexts({"wlcsm_mngr_ext_get"}),
                  Texts{std::string("wlcsm_mngr_ext_get(") + row.place + ", \"wlSsid\")"});
    }
}

TEST_F(Ssid, FollowTheSlotTable) {
    // An instance that has moved to another radio keeps its index within the radio.
    EXPECT_TRUE(scripted::runFresh([] {
        auto& fresh = scripted::Platform::instance();
        EXPECT_EQ(WiFiSystemAccessPointDelete(3), 0U);
        EXPECT_EQ(WiFiSystemAccessPointCreate(1, 10), 0U);
        GuardedBlock staged(344);
        EXPECT_EQ(WiFiSSIDInitContext(staged.get()), 0U);
        EXPECT_EQ(WiFiSSIDEnableSet(staged.get(), 10, 1), 0U);
        char buffer[33] = {};
        (void)WiFiSSIDSSIDGet(10, buffer, 32);
        EXPECT_EQ(WiFiSSIDApplyContext(staged.get(), 10), 0U);
        EXPECT_EQ(WiFiSSIDSSIDGet(3, buffer, 32), 6U);  // no longer belongs to a radio
        EXPECT_EQ(fresh.callTexts({"wlcsm_mngr_ext_get", "wlcsm_mngr_set"}),
                  (Texts{"wlcsm_mngr_ext_get(0, 1, \"wlSsid\")", "wlcsm_mngr_set(0, 1, \"wlEnblSsid\", \"1\")"}));
    }));
}

TEST_F(Ssid, InstancesThatDoNotExistAreRefused) {
    char buffer[33] = {};
    for (const std::uint32_t instance : {0U, 25U}) {
        platform.forget();
        EXPECT_EQ(WiFiSSIDSSIDGet(instance, buffer, 32), 6U);
        EXPECT_EQ(WiFiSSIDApplyContext(context.get(), instance), 6U);
        EXPECT_EQ(platform.callCount("wlcsm_mngr_ext_get"), 0U);
        EXPECT_EQ(platform.callCount("wlcsm_mngr_set"), 0U);
    }
}

TEST_F(Ssid, NameOfThirtyTwoCharactersReachesTheManagerWhole) {
    const std::string name(33, 'n');
    EXPECT_EQ(WiFiSSIDSSIDSet(context.get(), 11, name.data(), 33), 8U);
    EXPECT_TRUE(platform.logged(0, "Value out of range"));
    EXPECT_EQ(WiFiSSIDCheckContextNodeSet(context.get(), 6), 0U);
    EXPECT_EQ(WiFiSSIDSSIDSet(context.get(), 11, name.data(), 32), 0U);
    EXPECT_TRUE(context.intact());
    platform.forget();
    EXPECT_EQ(WiFiSSIDApplyContext(context.get(), 11), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set"}),
              Texts{"wlcsm_mngr_set(1, 2, \"wlSsid\", \"" + std::string(32, 'n') + "\")"});
}

TEST_F(Ssid, ApplyWritesEveryStagedNodeInOrder) {
    EXPECT_EQ(WiFiSSIDSSIDSet(context.get(), 11, "home", 4), 0U);
    EXPECT_EQ(WiFiSSIDAliasSet(context.get(), 11, "attic", 5), 0U);
    EXPECT_EQ(WiFiSSIDEnableSet(context.get(), 11, 1), 0U);
    platform.forget();
    EXPECT_EQ(WiFiSSIDApplyContext(context.get(), 11), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get", "wlcsm_mngr_set"}),
              (Texts{"wlcsm_mngr_set(1, 2, \"wlEnblSsid\", \"1\")", "wlcsm_mngr_set(1, 2, \"sAlias\", \"attic\")",
                     "wlcsm_mngr_set(1, 2, \"wlSsid\", \"home\")"}));
    for (std::uint32_t node = 1; node <= 6; ++node) {
        EXPECT_EQ(WiFiSSIDCheckContextNodeSet(context.get(), node), 0U);
    }
}

TEST_F(Ssid, SettersHaveTheirLimits) {
    const std::string longer(65, 'x');
    EXPECT_EQ(WiFiSSIDAliasSet(context.get(), 1, longer.data(), 65), 8U);
    EXPECT_EQ(WiFiSSIDAliasSet(context.get(), 1, longer.data(), 64), 0U);
    EXPECT_EQ(WiFiSSIDEnableSet(context.get(), 1, 2), 8U);
    EXPECT_EQ(WiFiSSIDEnableSet(context.get(), 1, 0), 0U);
    EXPECT_EQ(WiFiSSIDEnableSet(context.get(), 1, 1), 0U);
    const auto& fields = *static_cast<const WiFiSSIDContext*>(context.get());
    EXPECT_EQ(std::string(fields.Alias, 64), std::string(64, 'x'));
    EXPECT_EQ(fields.Name[0], '\0');
    EXPECT_TRUE(context.intact());
}

TEST_F(Ssid, KnowsNodesUpToItsLast) {
    EXPECT_EQ(WiFiSSIDCheckContextNodeSet(context.get(), 6), 0U);
    EXPECT_FALSE(platform.logged(0, "Exceeded subnodes"));
    EXPECT_EQ(WiFiSSIDCheckContextNodeSet(context.get(), 7), 0U);
    EXPECT_TRUE(platform.logged(0, "Exceeded subnodes"));
}

}  // namespace

}  // namespace quorvel
