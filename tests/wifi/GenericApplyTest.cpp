#include <gtest/gtest.h>
#include <quorvel.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/wifi/BridgeRow.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Contexts.h"
#include "wifi/model/Mapping.h"

// The generic write of a context's marked nodes.

namespace {

using quorvel::scripted::GuardedBlock;
using quorvel::scripted::PlatformTest;
using Row = quorvel::scripted::BridgeRow;
using Texts = std::vector<std::string>;

constexpr std::uint32_t kSize = 164;

const Row kTable[] = {
    {5, 0, "", ""},
    {1, 132, "UINT32", "unsigned"},
    {2, 136, "INT32", "signed"},
    {3, 140, "BOOLEAN", "flag"},
    {4, 141, "RBOOLEAN", "noFlag"},
    {5, 142, "CHAR", "text"},  // 10 bytes
    {6, 152, "NO_CONVERT", "raw"},
    {7, 152, "FLOAT", "odd"},
    {8, 152, "UINT32", ""},
    {9, 156, "CHAR", "last"},  // 8 bytes
};
constexpr std::uint32_t kCount = 10;

class GenericApply : public PlatformTest {
  protected:
    GenericApply() {
        (void)Quorvel_ContextInit(context.get(), kSize);
        platform.forget();
    }

    void mark(std::uint32_t node) {
        (void)Quorvel_ContextSetMap(context.get(), node);
    }

    std::uint32_t apply(std::uint32_t count = kCount, const Row* table = kTable) {
        platform.forget();
        return Quorvel_P_WiFiApplyContext(1, 1, context.get(), table, count);
    }

    Texts written() {
        return platform.callTexts({"wlcsm_mngr_set"});
    }

    static std::string set(const std::string& name, const std::string& value) {
        return "wlcsm_mngr_set(0, 0, \"" + name + "\", \"" + value + "\")";
    }

    static std::string success(const std::string& name, const std::string& value) {
        return "wlcsm_mngr_set: radio[0], ssid[0], varName[" + name + "] value[" + value + "] SUCCESS.";
    }

    GuardedBlock context{kSize};
};

TEST_F(GenericApply, RefusesRadiosAndSsidsThatDoNotExist) {
    mark(1);
    const std::pair<std::uint32_t, std::uint32_t> refused[] = {{0, 1}, {4, 1}, {1, 0}, {1, 25}, {0xFFFFFFFF, 1}};
    for (const auto& [radio, ssid] : refused) {
        platform.forget();
        EXPECT_EQ(Quorvel_P_WiFiApplyContext(radio, ssid, context.get(), kTable, kCount), 6U);
        EXPECT_EQ(platform.logTexts(0),
                  Texts{"Invalid radioIdx[" + std::to_string(radio) + "] or ssidIdx[" + std::to_string(ssid) + "]"});
        EXPECT_EQ(platform.callTexts(), Texts{});
        EXPECT_EQ(platform.logTexts(3), Texts{});
    }
}

TEST_F(GenericApply, ReachesTheManagerWithTheSsidsPlaceWithinItsRadio) {
    mark(1);
    EXPECT_EQ(Quorvel_P_WiFiApplyContext(3, 24, context.get(), kTable, kCount), 0U);
    EXPECT_EQ(Quorvel_P_WiFiApplyContext(2, 9, context.get(), kTable, kCount), 0U);
    EXPECT_EQ(written(),
              (Texts{"wlcsm_mngr_set(2, 7, \"unsigned\", \"0\")", "wlcsm_mngr_set(1, 0, \"unsigned\", \"0\")"}));
}

TEST_F(GenericApply, SaysWhichVariableOfWhichSsidItMeans) {
    mark(1);
    mark(2);
    mark(7);
    platform.forget();
    platform.failAt("wlcsm_mngr_set", 2);
    EXPECT_EQ(Quorvel_P_WiFiApplyContext(3, 18, context.get(), kTable, kCount), 0U);
    EXPECT_EQ(platform.logTexts(2), Texts{"wlcsm_mngr_set: radio[2], ssid[1], varName[unsigned] value[0] SUCCESS."});
    EXPECT_EQ(platform.logTexts(0), (Texts{"wlcsm_mngr_set: radio[2], ssid[1], varName[signed] value[0] FAIL.",
                                           "Invalid nodeType[FLOAT] for radio[2], ssid[1], varName[odd]."}));
}

// The caller holds the lock.
TEST_F(GenericApply, AsksForEachNodeOnceAndWritesBetween) {
    mark(1);
    mark(3);
    EXPECT_EQ(apply(5), 0U);
    EXPECT_EQ(platform.callTexts(),
              (Texts{"Quorvel_IsContextSetMap(ctx, 1)", set("unsigned", "0"), "Quorvel_IsContextSetMap(ctx, 2)",
                     "Quorvel_IsContextSetMap(ctx, 3)", set("flag", "0"), "Quorvel_IsContextSetMap(ctx, 4)"}));
}

TEST_F(GenericApply, WritesEachConversionInNodeOrder) {
    context.put<std::uint32_t>(132, 4000000000U);
    context.put<std::int32_t>(136, -87);
    context.put<std::uint8_t>(140, 1);
    context.put<std::uint8_t>(141, 1);
    context.write(142, "hello");
    for (const std::uint32_t node : {5U, 4U, 3U, 2U, 1U}) {
        mark(node);
    }
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), (Texts{set("unsigned", "4000000000"), set("signed", "-87"), set("flag", "1"),
                                set("noFlag", "0"), set("text", "hello")}));
    EXPECT_EQ(platform.logTexts(2), (Texts{success("unsigned", "4000000000"), success("signed", "-87"),
                                           success("flag", "1"), success("noFlag", "0"), success("text", "hello")}));
    EXPECT_EQ(platform.logTexts(3), Texts{"Quorvel_P_WiFiApplyContext DONE"});
}

TEST_F(GenericApply, WritesTheByteOfABooleanAndReversesAReversedOne) {
    mark(3);
    mark(4);
    context.put<std::uint8_t>(140, 200);
    context.put<std::uint8_t>(141, 0);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), (Texts{set("flag", "200"), set("noFlag", "1")}));
    context.put<std::uint8_t>(141, 2);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), (Texts{set("flag", "200"), set("noFlag", "0")}));
}

TEST_F(GenericApply, WritesMarkedNodesOnlyAndLeavesTheMarks) {
    mark(2);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), Texts{set("signed", "0")});
    EXPECT_NE(Quorvel_IsContextSetMap(context.get(), 2), 0U);
}

TEST_F(GenericApply, WalksNothingForACountOfOneOrNone) {
    mark(1);
    EXPECT_EQ(apply(1), 0U);
    EXPECT_EQ(platform.callTexts(), Texts{});
    EXPECT_EQ(platform.logTexts(3), Texts{"Quorvel_P_WiFiApplyContext DONE"});
    EXPECT_EQ(apply(0), 0U);
    EXPECT_EQ(platform.callTexts(), Texts{});
    EXPECT_EQ(platform.logTexts(3), Texts{"Quorvel_P_WiFiApplyContext DONE"});
}

TEST_F(GenericApply, EndsOneBeforeTheCount) {
    mark(1);
    mark(2);
    EXPECT_EQ(apply(2), 0U);
    EXPECT_EQ(written(), Texts{set("unsigned", "0")});
}

TEST_F(GenericApply, PassesOverANodeWithoutVariable) {
    mark(8);
    mark(9);
    context.write(156, "x");
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(platform.logTexts(0), Texts{" No direct wlmgnr mapping for node[8]."});
    EXPECT_EQ(written(), Texts{set("last", "x")});
}

TEST_F(GenericApply, PassesOverAConversionItDoesNotKnow) {
    mark(6);
    mark(7);
    mark(9);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"Invalid nodeType[NO_CONVERT] for radio[0], ssid[0], varName[raw].",
                                           "Invalid nodeType[FLOAT] for radio[0], ssid[0], varName[odd]."}));
    EXPECT_EQ(written(), Texts{set("last", "")});
}

TEST_F(GenericApply, KnowsConversionsByTheirWholeName) {
    mark(1);
    for (const char* name :
         {"UINT", "UINT32 ", "uint32", "INT", "INT321", "BOOL", "BOOLEANS", "RBOOLEAN2", "CHA", "CHARS", ""}) {
        const Row table[] = {{5, 0, "", ""}, {1, 132, name, "odd"}};
        EXPECT_EQ(apply(2, table), 0U);
        EXPECT_EQ(platform.logTexts(0),
                  Texts{"Invalid nodeType[" + std::string(name) + "] for radio[0], ssid[0], varName[odd]."});
        EXPECT_EQ(written(), Texts{});
        EXPECT_EQ(platform.logTexts(3), Texts{"Quorvel_P_WiFiApplyContext DONE"});
    }
}

TEST_F(GenericApply, TakesAnyAnswerButZeroForFailure) {
    mark(1);
    for (const std::int64_t result : {2, -1}) {
        platform.answer("wlcsm_mngr_set", result);
        EXPECT_EQ(apply(), 0U);
        EXPECT_EQ(platform.logTexts(0), Texts{"wlcsm_mngr_set: radio[0], ssid[0], varName[unsigned] value[0] FAIL."});
        EXPECT_EQ(platform.logTexts(2), Texts{});
    }
}

TEST_F(GenericApply, GoesOnAfterAFailedWrite) {
    mark(1);
    mark(2);
    platform.failAt("wlcsm_mngr_set", 1);
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), (Texts{set("unsigned", "0"), set("signed", "0")}));
    EXPECT_EQ(platform.logTexts(0), Texts{"wlcsm_mngr_set: radio[0], ssid[0], varName[unsigned] value[0] FAIL."});
    EXPECT_EQ(platform.logTexts(2), Texts{success("signed", "0")});
}

TEST_F(GenericApply, BoundsATextOfTheLibrarysOwnTablesByTheField) {
    GuardedBlock ssid(sizeof(WiFiSSIDContext));
    ASSERT_EQ(WiFiSSIDInitContext(ssid.get()), 0U);
    ssid.write(offsetof(WiFiSSIDContext, Alias), std::string(sizeof WiFiSSIDContext::Alias, 'a'));
    ssid.write(offsetof(WiFiSSIDContext, Name), "what follows the field is not its text");
    ASSERT_EQ(Quorvel_ContextSetMap(ssid.get(), WiFiSSIDNode::Alias), 0U);
    platform.forget();
    EXPECT_EQ(WiFiSSIDApplyContext(ssid.get(), 1), 0U);
    EXPECT_EQ(written(), Texts{set("sAlias", std::string(sizeof WiFiSSIDContext::Alias, 'a'))});
}

TEST_F(GenericApply, BoundsATextOfAForeignTableByAValuesSize) {
    const Row table[] = {{5, 0, "", ""}, {1, 144, "CHAR", "far"}, {2, 132, "CHAR", "text"}, {3, 140, "CHAR", "near"}};
    mark(2);
    context.write(132, std::string(31, 'x') + std::string(1, '\0'));
    EXPECT_EQ(apply(4, table), 0U);
    EXPECT_EQ(written(), Texts{set("text", std::string(31, 'x'))});
}

TEST_F(GenericApply, ReadsTheMarkedRowsOfAForeignTableOnly) {
    // As long as the rows are, so that the address sanitizer sees a read behind them.
    const std::vector<Row> table = {{5, 0, "", ""}, {1, 132, "CHAR", "text"}};
    mark(1);
    context.write(132, std::string("abc") + std::string(1, '\0'));
    EXPECT_EQ(apply(kCount, table.data()), 0U);
    EXPECT_EQ(written(), Texts{set("text", "abc")});
}

TEST_F(GenericApply, TakesAThousandAndTwentyFourBytesOfATextWithoutEnd) {
    const Row table[] = {{5, 0, "", ""}, {1, 132, "CHAR", "long"}};
    GuardedBlock large(132 + 1100);
    ASSERT_EQ(Quorvel_ContextInit(large.get(), 132 + 1100), 0U);
    large.write(132, std::string(1100, 'x'));
    ASSERT_EQ(Quorvel_ContextSetMap(large.get(), 1), 0U);
    EXPECT_EQ(Quorvel_P_WiFiApplyContext(1, 1, large.get(), table, 2), 0U);
    EXPECT_EQ(written(), Texts{set("long", std::string(1024, 'x'))});
}

TEST_F(GenericApply, LeavesNothingOfOneTextInTheNext) {
    mark(5);
    mark(9);
    context.write(142, "abcdefghij");
    context.write(156, "x");
    EXPECT_EQ(apply(), 0U);
    EXPECT_EQ(written(), (Texts{set("text", "abcdefghij"), set("last", "x")}));
}

TEST_F(GenericApply, LogsWithTheBridgesNames) {
    mark(1);
    EXPECT_EQ(apply(), 0U);
    for (const auto& line : platform.logs()) {
        EXPECT_EQ(line.file, "wifi/QuorvelWiFiBaseAPI");
        EXPECT_EQ(line.function, "Quorvel_P_WiFiApplyContext");
    }
}

// --- Cases that are not a straight conversion
// ---------------------------------------------------------------------------

class SpecialApply : public GenericApply {
  protected:
    static std::vector<Row> table(std::uintptr_t object) {
        std::vector<Row> rows(32, Row{0, 132, "UINT32", ""});
        rows[0] = {object, 0, "", ""};
        if (object == 7) {
            rows[18] = {18, 132, "BOOLEAN", "wlFltMacMode"};
            rows[19] = {19, 133, "BOOLEAN", "wlFltMacList"};
            rows[20] = {20, 136, "UINT32", "wlFltMacMode"};
        } else {
            rows[20] = {20, 136, "INT32", "wlWpa"};
        }
        return rows;
    }

    static std::string hit(int object, int node, const std::string& value, int action) {
        return "SpecialCaseHit: objIdx[" + std::to_string(object) + "], nodeIdx[" + std::to_string(node) + "], value[" +
               value + "], doAction[" + std::to_string(action) + "]";
    }
};

TEST_F(SpecialApply, DisablingTheFilterWritesItsModeAndEnablingNothing) {
    mark(18);
    context.put<std::uint8_t>(132, 0);
    EXPECT_EQ(apply(25, table(7).data()), 0U);
    EXPECT_EQ(written(), Texts{set("wlFltMacMode", "disabled")});
    EXPECT_EQ(platform.logTexts(2), (Texts{hit(7, 18, "disabled", 1), success("wlFltMacMode", "disabled")}));
    EXPECT_EQ(platform.logs().at(0).function, "Quorvel_P_WiFiSpecialCaseSet");
    context.put<std::uint8_t>(132, 1);
    EXPECT_EQ(apply(25, table(7).data()), 0U);
    EXPECT_EQ(written(), Texts{});
    EXPECT_EQ(platform.logTexts(2), Texts{hit(7, 18, "", 0)});
}

TEST_F(SpecialApply, FilterModeIsAllowForOneAndDenyForTheRest) {
    mark(20);
    const std::pair<std::uint32_t, const char*> modes[] = {
        {1, "allow"}, {0, "deny"}, {5, "deny"}, {257, "deny"}, {0xFFFFFFFFU, "deny"}};
    for (const auto& [value, mode] : modes) {
        context.put<std::uint32_t>(136, value);
        EXPECT_EQ(apply(25, table(7).data()), 0U);
        EXPECT_EQ(written(), Texts{set("wlFltMacMode", mode)});
        EXPECT_EQ(platform.logTexts(2), (Texts{hit(7, 20, mode, 1), success("wlFltMacMode", mode)}));
    }
}

TEST_F(SpecialApply, FilterModeIsWrittenInNodeOrder) {
    mark(18);
    mark(20);
    context.put<std::uint32_t>(136, 1);
    context.put<std::uint8_t>(132, 1);
    EXPECT_EQ(apply(25, table(7).data()), 0U);
    EXPECT_EQ(written(), Texts{set("wlFltMacMode", "allow")});
    context.put<std::uint8_t>(132, 0);
    EXPECT_EQ(apply(25, table(7).data()), 0U);
    EXPECT_EQ(written(), (Texts{set("wlFltMacMode", "disabled"), set("wlFltMacMode", "allow")}));
}

TEST_F(SpecialApply, ClearingTheFilterTableWritesAnEmptyList) {
    mark(19);
    context.put<std::uint8_t>(133, 1);
    EXPECT_EQ(apply(25, table(7).data()), 0U);
    EXPECT_EQ(written(), Texts{set("wlFltMacList", "")});
    context.put<std::uint8_t>(133, 0);
    EXPECT_EQ(apply(25, table(7).data()), 0U);
    EXPECT_EQ(written(), Texts{});
    EXPECT_EQ(platform.logTexts(2), Texts{hit(7, 19, "", 0)});
}

TEST_F(SpecialApply, BytesAboveOneEnableTheFilterAndKeepItsTable) {
    mark(18);
    mark(19);
    for (const std::uint8_t value : std::initializer_list<std::uint8_t>{2, 128, 255}) {
        context.put<std::uint8_t>(132, value);
        context.put<std::uint8_t>(133, value);
        EXPECT_EQ(apply(25, table(7).data()), 0U);
        EXPECT_EQ(written(), Texts{});
        EXPECT_EQ(platform.logTexts(2), (Texts{hit(7, 18, "", 0), hit(7, 19, "", 0)}));
    }
}

TEST_F(SpecialApply, ClearingAfterDisablingWritesTheEmptyListAllTheSame) {
    mark(18);
    mark(19);
    context.put<std::uint8_t>(132, 0);
    context.put<std::uint8_t>(133, 1);
    EXPECT_EQ(apply(25, table(7).data()), 0U);
    EXPECT_EQ(written(), (Texts{set("wlFltMacMode", "disabled"), set("wlFltMacList", "")}));
    EXPECT_EQ(platform.logTexts(2), (Texts{hit(7, 18, "disabled", 1), success("wlFltMacMode", "disabled"),
                                           hit(7, 19, "", 1), success("wlFltMacList", "")}));
}

TEST_F(SpecialApply, AFailedWriteIsSaidAsAnyOther) {
    mark(20);
    platform.forget();
    platform.fail("wlcsm_mngr_set");
    EXPECT_EQ(apply(25, table(7).data()), 0U);
    EXPECT_EQ(platform.logTexts(2), Texts{hit(7, 20, "deny", 1)});
    EXPECT_EQ(platform.logTexts(0),
              Texts{"wlcsm_mngr_set: radio[0], ssid[0], varName[wlFltMacMode] value[deny] FAIL."});
}

TEST_F(SpecialApply, ASpecialNodeWithoutVariableIsPassedOver) {
    mark(20);
    std::vector<Row> rows = table(9);
    rows[20].variable = "";
    EXPECT_EQ(apply(22, rows.data()), 0U);
    EXPECT_EQ(written(), Texts{});
    EXPECT_EQ(platform.logTexts(0), Texts{" No direct wlmgnr mapping for node[20]."});
    EXPECT_EQ(platform.logTexts(2), Texts{});
}

TEST_F(SpecialApply, AllOtherNodesAreConvertedStraight) {
    context.put<std::uint32_t>(132, 3);
    for (std::uint32_t object = 0; object <= 12; ++object) {
        for (std::uint32_t node = 1; node <= 25; ++node) {
            const bool special = (object == 7 && node >= 18 && node <= 20) || (object == 9 && node == 20);
            if (special) continue;
            std::vector<Row> rows(26, Row{0, 136, "UINT32", ""});
            rows[0] = {object, 0, "", ""};
            rows[node] = {node, 132, "UINT32", "plain"};
            mark(node);
            EXPECT_EQ(apply(26, rows.data()), 0U);
            EXPECT_EQ(written(), Texts{set("plain", "3")}) << object << ", " << node;
            EXPECT_EQ(platform.logTexts(2), Texts{success("plain", "3")});
            (void)Quorvel_ContextClearMap(context.get(), node);
        }
    }
}

TEST_F(SpecialApply, CipherIsWrittenAsTheManagersText) {
    mark(20);
    const char* const texts[] = {"tkip", "aes", "tkip+aes"};
    for (std::uint32_t code = 0; code < 3; ++code) {
        context.put<std::uint32_t>(136, code);
        EXPECT_EQ(apply(22, table(9).data()), 0U);
        EXPECT_EQ(written(), Texts{set("wlWpa", texts[code])});
        EXPECT_EQ(platform.logTexts(2), (Texts{hit(9, 20, texts[code], 1), success("wlWpa", texts[code])}));
        EXPECT_EQ(platform.logTexts(0), Texts{});
    }
}

// Quirk: a code without a text clears the variable.
TEST_F(SpecialApply, AnUnknownCipherWritesTheEmptyText) {
    mark(20);
    for (const std::int32_t code : {3, -1}) {
        context.put<std::int32_t>(136, code);
        EXPECT_EQ(apply(22, table(9).data()), 0U);
        EXPECT_EQ(platform.logTexts(0), Texts{"Invalid wpaEncryption[" + std::to_string(code) + "]"});
        EXPECT_EQ(platform.logs().at(0).function, "Quorvel_P_WiFiSpecialCaseSet");
        EXPECT_EQ(written(), Texts{set("wlWpa", "")});
        EXPECT_EQ(platform.logTexts(2), (Texts{hit(9, 20, "", 1), success("wlWpa", "")}));
    }
}

}  // namespace
