#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/wifi/MappedParameters.h"
#include "tests/wifi/platform/FreshProcess.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Contexts.h"

// The station filter's list of addresses and their count.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using Texts = std::vector<std::string>;

const MappedText kList = {"WiFiAccessPointAccessPointControlFilterTableMacAddress", "wlFltMacList"};

constexpr char kThree[] = "00:11:22:33:44:51 00:11:22:33:44:52 00:11:22:33:44:53";

class FilterTable : public MappedParameters {
  protected:
    FilterTable() {
        EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableInitContext(context.get()), 0U);
        platform.forget();
    }
    std::uint32_t count() {
        GuardedBlock out(4);
        EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableNumberOfMacAddressGet(
                      kAccessPoint, static_cast<std::uint32_t*>(out.get())),
                  0U);
        EXPECT_TRUE(out.intact());
        return out.at<std::uint32_t>(0);
    }
    void setList(const std::string& list) {
        platform.setVariable(kRadioIndex, kSubIndex, "wlFltMacList", list);
    }
    GuardedBlock context{712};
};

TEST_F(FilterTable, IsReadWhole) {
    expectRead(kList);
}

TEST_F(FilterTable, IsReplacedWhole) {
    expectWritten(kList, WiFiAccessPointAccessPointControlFilterTableApplyContext);
}

TEST_F(FilterTable, CountsEighteenCharactersAnAddress) {
    const std::pair<std::size_t, std::uint32_t> counts[] = {{0, 0},    {1, 0},    {16, 0},   {17, 1},   {18, 1},
                                                            {34, 1},   {35, 2},   {36, 2},   {53, 3},   {71, 4},
                                                            {575, 32}, {576, 32}, {593, 32}, {1023, 32}};
    for (const auto& [length, number] : counts) {
        setList(std::string(length, 'm'));
        EXPECT_EQ(count(), number) << length;
    }
    setList(kThree);
    EXPECT_EQ(count(), 3U);
    EXPECT_TRUE(platform.logged(3, "WiFiAccessPointAccessPointControlFilterTableNumberOfMacAddressGet DONE"));
}

TEST_F(FilterTable, IsEmptyWhenTheManagerHasNone) {
    GuardedBlock buffer(576);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableMacAddressGet(kAccessPoint, buffer.text(), 576), 0U);
    EXPECT_STREQ(buffer.text(), "");
    EXPECT_EQ(count(), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{});
}

TEST_F(FilterTable, CountIsClearedAndFailsForAnAccessPointThatDoesNotExist) {
    for (const std::uint32_t ap : {0U, 25U}) {
        std::uint32_t number = 99;
        EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableNumberOfMacAddressGet(ap, &number), 6U);
        EXPECT_EQ(number, 0U);
        EXPECT_TRUE(platform.logged(0, "Invalid radioIdx[4294967295] or ssidIdx[" + std::to_string(ap) + "]"));
    }
}

TEST_F(FilterTable, RefusesABufferBelowItsLengthBeforeLocking) {
    GuardedBlock buffer(576);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableMacAddressGet(1, buffer.text(), 575), 8U);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableMacAddressGet(1, nullptr, 576), 6U);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableMacAddressGet(1, nullptr, 575), 6U);
    EXPECT_EQ(platform.callTexts(), Texts{});
    EXPECT_EQ(platform.logTexts(0), (Texts{"Value out of range", "Invalid input params", "Invalid input params"}));
}

TEST_F(FilterTable, OfItsFullLengthEndsOneBeyondTheBuffer) {
    setList(std::string(576, 'm'));
    GuardedBlock buffer(578);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableMacAddressGet(kAccessPoint, buffer.text(), 576), 0U);
    EXPECT_EQ(buffer.bytes(0, 578), std::string(576, 'm').append("\0\xEE", 2));
}

TEST_F(FilterTable, TakesATextOfItsLengthAndNoLonger) {
    const std::string list(577, 'm');
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableMacAddressSet(context.get(), 1, list.c_str(), 577), 8U);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableCheckContextNodeSet(context.get(), 1), 0U);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableMacAddressSet(context.get(), 1, list.c_str(), 576), 0U);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableCheckContextNodeSet(context.get(), 1), 1U);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableCheckContextNodeSet(context.get(), 2), 0U);
    EXPECT_EQ(context.bytes(132, 576), std::string(576, 'm'));
    EXPECT_TRUE(context.intact());
}

TEST_F(FilterTable, RefusesNodesAboveTheCount) {
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableCheckContextNodeSet(context.get(), 3), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Exceeded subnodes"});
}

TEST_F(FilterTable, IsEmptiedThroughTheAccessPoint) {
    setList(kThree);
    GuardedBlock accessPoint(sizeof(WiFiAccessPointContext));
    ASSERT_EQ(WiFiAccessPointInitContext(accessPoint.get()), 0U);
    ASSERT_EQ(WiFiAccessPointClearAccessControlFilterTableSet(accessPoint.get(), kAccessPoint, 1), 0U);
    ASSERT_EQ(WiFiAccessPointApplyContext(accessPoint.get(), kAccessPoint), 0U);
    EXPECT_EQ(platform.variable(kRadioIndex, kSubIndex, "wlFltMacList"), "");
    char list[577] = "before";
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableMacAddressGet(kAccessPoint, list, 576), 0U);
    EXPECT_STREQ(list, "");
    EXPECT_EQ(count(), 0U);
}

TEST_F(FilterTable, IsInitialisedAgainAfterItsApply) {
    ASSERT_EQ(WiFiAccessPointAccessPointControlFilterTableMacAddressSet(context.get(), 1, kThree, 53), 0U);
    platform.forget();
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableApplyContext(context.get(), kAccessPoint), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set", "Quorvel_ContextInit"}),
              (Texts{writeCall("wlFltMacList", kThree), "Quorvel_ContextInit(ctx, 712)"}));
}

TEST_F(FilterTable, IsNotWrittenForAnAccessPointThatDoesNotExist) {
    for (const std::uint32_t ap : {0U, 25U}) {
        ASSERT_EQ(WiFiAccessPointAccessPointControlFilterTableMacAddressSet(context.get(), ap, kThree, 53), 0U);
        platform.forget();
        EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableApplyContext(context.get(), ap), 6U);
        EXPECT_TRUE(platform.logged(0, "Invalid radioIdx[4294967295] or ssidIdx[" + std::to_string(ap) + "]"));
        EXPECT_TRUE(platform.logged(0, "Impl call failed, result 6"));
        EXPECT_EQ(platform.callCount("wlcsm_mngr_set"), 0U);
        EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableCheckContextNodeSet(context.get(), 1), 1U);
        EXPECT_EQ(context.bytes(132, 53), kThree);
    }
}

TEST_F(FilterTable, HasNowhereToWriteTheCount) {
    ASSERT_EQ(Quorvel_ContextSetMap(context.get(), 2), 0U);  // no setter does this
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableApplyContext(context.get(), kAccessPoint), 0U);
    EXPECT_EQ(platform.callCount("wlcsm_mngr_set"), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{" No direct wlmgnr mapping for node[2]."});
}

TEST_F(FilterTable, FollowsItsAccessPointToAnotherRadio) {
    EXPECT_TRUE(scripted::runFresh([] {
        auto& world = scripted::Platform::instance();
        world.setVariable(2, 2, "wlFltMacList", kThree);
        ASSERT_EQ(WiFiSystemAccessPointDelete(17), 0U);
        ASSERT_EQ(WiFiSystemAccessPointCreate(3, 11), 0U);
        std::uint32_t number = 0;
        EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableNumberOfMacAddressGet(11, &number), 0U);
        EXPECT_EQ(number, 3U);
        GuardedBlock staged(712);
        ASSERT_EQ(WiFiAccessPointAccessPointControlFilterTableInitContext(staged.get()), 0U);
        ASSERT_EQ(WiFiAccessPointAccessPointControlFilterTableMacAddressSet(staged.get(), 11, "x", 1), 0U);
        EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableApplyContext(staged.get(), 11), 0U);
        EXPECT_EQ(world.variable(2, 2, "wlFltMacList"), "x");
    }));
}

TEST_F(FilterTable, ModeIsLeftToWhatIsAllowed) {
    platform.setVariable(kRadioIndex, kSubIndex, "wlFltMacMode", "disabled");
    GuardedBlock accessPoint(sizeof(WiFiAccessPointContext));
    ASSERT_EQ(WiFiAccessPointInitContext(accessPoint.get()), 0U);
    ASSERT_EQ(WiFiAccessPointAccessControlFilterEnabledSet(accessPoint.get(), kAccessPoint, 1), 0U);
    ASSERT_EQ(WiFiAccessPointApplyContext(accessPoint.get(), kAccessPoint), 0U);
    EXPECT_EQ(platform.variable(kRadioIndex, kSubIndex, "wlFltMacMode"), "disabled");
    ASSERT_EQ(WiFiAccessPointAccessControlFilterEnabledSet(accessPoint.get(), kAccessPoint, 1), 0U);
    ASSERT_EQ(WiFiAccessPointAccessControlFilterAccessAllowSet(accessPoint.get(), kAccessPoint, 0), 0U);
    ASSERT_EQ(WiFiAccessPointApplyContext(accessPoint.get(), kAccessPoint), 0U);
    EXPECT_EQ(platform.variable(kRadioIndex, kSubIndex, "wlFltMacMode"), "deny");
    std::uint8_t enabled = 0;
    EXPECT_EQ(WiFiAccessPointAccessControlFilterEnabledGet(kAccessPoint, &enabled), 0U);
    EXPECT_EQ(enabled, 1);
}

TEST_F(FilterTable, SnapshotHoldsListAndCount) {
    setList(kThree);
    GuardedBlock snapshot(712);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableInstanceGet(snapshot.get(), kAccessPoint), 0U);
    EXPECT_EQ(snapshot.bytes(132, 576), kThree + std::string(576 - 53, '\0'));
    EXPECT_EQ(snapshot.at<std::uint32_t>(708), 3U);
    EXPECT_TRUE(snapshot.intact());
    setList(std::string(576, 'm'));
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableInstanceGet(snapshot.get(), kAccessPoint), 0U);
    EXPECT_EQ(snapshot.bytes(132, 576), std::string(576, 'm'));
    EXPECT_EQ(snapshot.at<std::uint32_t>(708), 32U);
    EXPECT_TRUE(snapshot.intact());
}

TEST_F(FilterTable, SnapshotReportsAFailureAsTheImplementations) {
    GuardedBlock snapshot(712);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableInstanceGet(snapshot.get(), 25), 6U);
    EXPECT_EQ(platform.logCount(0, "Impl call failed, result 6"), 2U);  // logged by the getter and by the snapshot
    EXPECT_FALSE(platform.logged(0, "Get failed, result 6"));
}

TEST_F(FilterTable, SnapshotKeepsTheListWhenTheCountFails) {
    setList(kThree);
    platform.answerAt("QuorvelOsMutexLock", 2, 9);
    GuardedBlock snapshot(712);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableInstanceGet(snapshot.get(), kAccessPoint), 9U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"Lock failed, result 9", "Impl call failed, result 9"}));
    EXPECT_EQ(snapshot.bytes(132, 576), kThree + std::string(576 - 53, '\0'));
    EXPECT_EQ(snapshot.at<std::uint32_t>(708), 0U);
}

}  // namespace

}  // namespace quorvel
