#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiAccessPointACImpl.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/model/Contexts.h"

// WMM access categories: fields of one non-volatile text each.

namespace quorvel {

namespace {

using scripted::GuardedBlock;
using Texts = std::vector<std::string>;

constexpr std::uint32_t kMin = 0;
constexpr std::uint32_t kMax = 1;
constexpr std::uint32_t kAifsn = 2;
constexpr std::uint32_t kUnnamed = 3;
constexpr std::uint32_t kTxOp = 4;
constexpr std::uint32_t kRead = 0;
constexpr std::uint32_t kWrite = 1;
constexpr char kVideo[] = "wl0_wme_ap_vi";

class Wmm : public scripted::PlatformTest {
  protected:
    void store(const std::string& text) {
        platform.setNvram(kVideo, text);
    }
    std::uint32_t read(std::uint32_t field) {
        GuardedBlock value(4);
        EXPECT_EQ(wifi_ap_ac_config(1, 3, field, kRead, static_cast<std::uint32_t*>(value.get())), 0U);
        EXPECT_TRUE(value.intact());
        return value.at<std::uint32_t>(0);
    }
    // The stored text after a write of `field`.
    std::string written(const std::string& stored, std::uint32_t field, std::uint32_t value) {
        store(stored);
        EXPECT_EQ(wifi_ap_ac_config(1, 3, field, kWrite, &value), 0U);
        return platform.nvram(kVideo).value_or("absent");
    }
};

TEST_F(Wmm, NamesItsTextByAccessPointAndCategory) {
    const char* stems[] = {"wme_ap_be",  "wme_ap_bk",  "wme_ap_vi",  "wme_ap_vo",
                           "wme_sta_be", "wme_sta_bk", "wme_sta_vi", "wme_sta_vo"};
    // Uses the access point's number; 2 and 9 are not looked up in the slot table.
    for (const std::uint32_t ap : {1U, 2U, 9U, 24U}) {
        for (std::uint32_t ac = 1; ac <= 8; ++ac) {
            const std::string key = "wl" + std::to_string(ap - 1) + "_" + stems[ac - 1];
            platform.setNvram(key, "15 63 " + std::to_string(ac) + " 0 0 off off");
            platform.forget();
            std::uint32_t aifsn = 0;
            EXPECT_EQ(WiFiAccessPointACAIFSNGet(ap, ac, &aifsn), 0U);
            EXPECT_EQ(aifsn, ac);
            EXPECT_EQ(platform.callTexts({"wlcsm_nvram_get"}), Texts{"wlcsm_nvram_get(\"" + key + "\")"});
        }
    }
}

TEST_F(Wmm, NameIsBoundedByItsBuffer) {
    const std::pair<std::uint32_t, const char*> names[] = {
        {0x7FFFFFFF, "wl2147483646_wm"}, {101, "wl100_wme_sta_v"}, {100, "wl99_wme_sta_vo"}, {0, "wl-1_wme_sta_vo"}};
    for (const auto& [ap, name] : names) {
        platform.setNvram(name, "1 1 7 0 0 off off");
        platform.forget();
        std::uint32_t value = 2;
        EXPECT_EQ(wifi_ap_ac_config(ap, 8, kAifsn, kRead, &value), 0U);
        EXPECT_EQ(value, 7U);
        EXPECT_EQ(wifi_ap_ac_config(ap, 8, kAifsn, kWrite, &value), 0U);
        EXPECT_EQ(
            platform.callTexts({"wlcsm_nvram_get", "wlcsm_nvram_set"}),
            (Texts{"wlcsm_nvram_get(\"" + std::string(name) + "\")", "wlcsm_nvram_get(\"" + std::string(name) + "\")",
                   "wlcsm_nvram_set(\"" + std::string(name) + "\", \"1 1 7 0 0 off off \")"}));
    }
}

TEST_F(Wmm, ReadsItsParametersUnderTheLock) {
    store("15 1023 3 9 94 off off");
    using Get = std::uint32_t (*)(std::uint32_t, std::uint32_t, std::uint32_t*);
    const std::pair<Get, std::uint32_t> reads[] = {{WiFiAccessPointACECWMinGet, 4},
                                                   {WiFiAccessPointACECWMaxGet, 10},
                                                   {WiFiAccessPointACAIFSNGet, 3},
                                                   {WiFiAccessPointACTxOpMaxGet, 94}};
    for (const auto& [get, number] : reads) {
        GuardedBlock out(4);
        EXPECT_EQ(get(1, 3, static_cast<std::uint32_t*>(out.get())), 0U);
        EXPECT_EQ(out.at<std::uint32_t>(0), number);
        EXPECT_TRUE(out.intact());
        EXPECT_EQ(get(1, 3, nullptr), 6U);
    }
    for (const auto& call : platform.calls()) {
        if (call.name == "wlcsm_nvram_get") {
            EXPECT_TRUE(call.lockHeld);
        }
    }
    EXPECT_EQ(platform.callCount("wlcsm_nvram_get"), 4U);
    EXPECT_EQ(read(kUnnamed), 9U);
}

TEST_F(Wmm, ShowsAWindowAsItsExponent) {
    const std::pair<const char*, std::uint32_t> windows[] = {
        {"0", 0},  {"1", 1},  {"2", 1},     {"3", 2},      {"7", 3},           {"15", 4},          {"16", 4}, {"30", 4},
        {"31", 5}, {"63", 6}, {"1023", 10}, {"32767", 15}, {"65534", 15},      {"65535", 0},  // masked
        {"-1", 0}, {"", 0},   {"off", 0},   {"131071", 1}, {"2147483646", 14}, {"2147483647", 15}, {"-2", 15}};
    for (const auto& [text, exponent] : windows) {
        store(std::string(text) + " " + text + " 0 0 0 off off");
        EXPECT_EQ(read(kMin), exponent) << text;
        EXPECT_EQ(read(kMax), exponent) << text;
    }
}

TEST_F(Wmm, ShowsOtherFieldsAsTheyAre) {
    store("0 0 65535 16 -1 off off");
    EXPECT_EQ(read(kAifsn), 65535U);
    EXPECT_EQ(read(kUnnamed), 16U);
    EXPECT_EQ(read(kTxOp), 0xFFFFFFFFU);
}

TEST_F(Wmm, TakesTwoBlanksForAnEmptyFieldAndTheEndForTheRest) {
    store("15  3");
    EXPECT_EQ(read(kMin), 4U);
    EXPECT_EQ(read(kMax), 0U);
    EXPECT_EQ(read(kAifsn), 3U);
    EXPECT_EQ(read(kUnnamed), 0U);
    EXPECT_EQ(read(kTxOp), 0U);
    store("");
    EXPECT_EQ(read(kMin), 0U);
    store(" 63");
    EXPECT_EQ(read(kMin), 0U);
    EXPECT_EQ(read(kMax), 6U);
}

TEST_F(Wmm, TakesNothingButABlankForASeparator) {
    EXPECT_EQ(written("15\t63,3 7", kMax, 2), "15\t63,3 3      ");
}

TEST_F(Wmm, ReadsSixtyThreeCharacters) {
    store("0 0 0 0 " + std::string(54, '0') + "12");  // the 2 is the 64th
    EXPECT_EQ(read(kTxOp), 1U);
    store("0 0 0 0 " + std::string(53, '0') + "12");
    EXPECT_EQ(read(kTxOp), 12U);
}

TEST_F(Wmm, WritesOneFieldAndKeepsTheOthers) {
    EXPECT_EQ(written("15 63 3 0 0 off off", kMin, 3), "7 63 3 0 0 off off ");
    EXPECT_EQ(written("15 63 3 0 0 off off ", kMin, 3), "7 63 3 0 0 off off ");  // unchanged
    EXPECT_EQ(written("15 63 3 0 0 off off", kMax, 10), "15 1023 3 0 0 off off ");
    EXPECT_EQ(written("15 63 3 0 0 off off", kAifsn, 7), "15 63 7 0 0 off off ");
    EXPECT_EQ(written("15 63 3 0 0 off off", kUnnamed, 5), "15 63 3 5 0 off off ");
    EXPECT_EQ(written("15 63 3 0 0 off off", kTxOp, 94), "15 63 3 0 94 off off ");
    EXPECT_EQ(written("15 63 3 0 0 off off more", kTxOp, 94), "15 63 3 0 94 off off ");
}

TEST_F(Wmm, FillsMissingFieldsWithNothing) {
    EXPECT_EQ(written("15 63", kAifsn, 2), "15 63 2     ");
    EXPECT_EQ(written("", kTxOp, 1), "    1   ");
    EXPECT_EQ(written("15  3 0 0 off off", kAifsn, 2), "15  2 0 0 off off ");
    EXPECT_EQ(written("15 63  ", kMax, 1), "15 1      ");
}

TEST_F(Wmm, StoresAnExponentAsItsWindow) {
    const std::pair<std::uint32_t, const char*> exponents[] = {
        {0, "0"},           {1, "1"},   {4, "15"},   {10, "1023"}, {15, "32767"}, {30, "1073741823"},
        {31, "2147483647"}, {32, "-1"}, {255, "-1"}, {256, "0"},   {0x104, "15"}, {0xFFFFFFFF, "-1"}};
    for (const auto& [exponent, window] : exponents) {
        EXPECT_EQ(written("9 9 3 0 0 off off", kMin, exponent), std::string(window) + " 9 3 0 0 off off ");
        EXPECT_EQ(written("9 9 3 0 0 off off", kMax, exponent), "9 " + std::string(window) + " 3 0 0 off off ");
    }
}

TEST_F(Wmm, StoresOtherNumbersAsSignedText) {
    EXPECT_EQ(written("9 9 3 0 0 off off", kTxOp, 0x7FFFFFFF), "9 9 3 0 2147483647 off off ");
    EXPECT_EQ(written("9 9 3 0 0 off off", kTxOp, 0x80000000), "9 9 3 0 -2147483648 off off ");
    EXPECT_EQ(written("9 9 3 0 0 off off", kTxOp, 0xFFFFFFFF), "9 9 3 0 -1 off off ");
}

TEST_F(Wmm, BoundsTheTextItReadsAndTheOneItWrites) {
    // Reads 63 characters: the fields behind them are empty.
    EXPECT_EQ(written("1 1 " + std::string(70, '3') + " 0 8 off off", kMin, 1), ("1 1 " + std::string(59, '3')));
    EXPECT_EQ(written("1 1 " + std::string(37, '3') + " 0 8 off off", kMin, 31),
              "2147483647 1 " + std::string(37, '3') + " 0 8 off off ");  // all 63 of them
    const std::string joined = written("1 1 " + std::string(50, '3') + " 0 8 off", kMin, 31);
    EXPECT_EQ(joined, ("2147483647 1 " + std::string(50, '3') + " 0 8 off").substr(0, 63));
    // The text is full long before its last field.
    EXPECT_EQ(written("1 " + std::string(55, '3') + " 0 0 8", kMin, 31), "2147483647 " + std::string(52, '3'));
}

TEST_F(Wmm, ReadsWhatItWrote) {
    for (std::uint32_t exponent = 0; exponent <= 15; ++exponent) {
        (void)written("0 0 2 0 0 off off", kMax, exponent);
        EXPECT_EQ(read(kMax), exponent);
    }
}

TEST_F(Wmm, RefusesCategoriesThatDoNotExist) {
    const std::pair<std::uint32_t, const char*> categories[] = {{9, "8"}, {0, "-1"}, {0xFFFFFFFF, "-2"}};
    for (const auto& [ac, shown] : categories) {
        platform.forget();
        std::uint32_t value = 77;
        EXPECT_EQ(wifi_ap_ac_config(1, ac, kAifsn, kRead, &value), 1U);
        EXPECT_EQ(value, 77U);
        EXPECT_EQ(platform.logTexts(0),
                  Texts{"wifi_ap_ac_config, wrong ac_idx=" + std::string(shown) + " or value is NULL\n"});
        EXPECT_EQ(platform.callTexts(), Texts{});
    }
    platform.forget();
    EXPECT_EQ(wifi_ap_ac_config(1, 3, kAifsn, kRead, nullptr), 1U);
    EXPECT_EQ(platform.logTexts(0), Texts{"wifi_ap_ac_config, wrong ac_idx=2 or value is NULL\n"});
    platform.forget();
    std::uint32_t value = 77;
    EXPECT_EQ(WiFiAccessPointACAIFSNGet(1, 9, &value), 1U);
    EXPECT_EQ(platform.logTexts(0),
              (Texts{"wifi_ap_ac_config, wrong ac_idx=8 or value is NULL\n", "Impl call failed, result 1"}));
}

TEST_F(Wmm, RefusesFieldsThatAreNotAddressed) {
    store("15 63 3 0 0 off off");
    std::uint32_t value = 77;
    for (const std::uint32_t field : {5U, 6U, 0xFFFFFFFFU}) {
        platform.forget();
        EXPECT_EQ(wifi_ap_ac_config(1, 3, field, kWrite, &value), 1U);
        EXPECT_EQ(platform.logTexts(0),
                  Texts{"wifi_ap_ac_config, error pm_idx=" + std::to_string(static_cast<std::int32_t>(field)) + "\n"});
        EXPECT_EQ(platform.callTexts(), Texts{});
    }
}

TEST_F(Wmm, RefusesActionsOtherThanReadAndWrite) {
    store("15 63 3 0 0 off off");
    std::uint32_t value = 77;
    EXPECT_EQ(wifi_ap_ac_config(1, 3, kAifsn, 2, &value), 1U);
    EXPECT_EQ(platform.logTexts(0), Texts{"wifi_ap_ac_config, wrong action 2\n"});
    EXPECT_EQ(platform.callTexts({"wlcsm_nvram_set"}), Texts{});
    EXPECT_EQ(value, 77U);
    for (const auto& line : platform.logs()) {
        EXPECT_EQ(line.file, "wifi/QuorvelWiFiAccessPointACImpl");
        EXPECT_EQ(line.function, "wifi_ap_ac_config");
    }
}

// Reads the text before it checks the action.
TEST_F(Wmm, MissesItsTextWhateverTheAction) {
    std::uint32_t value = 77;
    EXPECT_EQ(wifi_ap_ac_config(1, 3, kAifsn, 2, &value), 1U);
    EXPECT_EQ(platform.logTexts(0), Texts{"wifi_ap_ac_config, failed to read nvram wl0_wme_ap_vi\n"});
}

TEST_F(Wmm, FailsWithoutItsText) {
    using Get = std::uint32_t (*)(std::uint32_t, std::uint32_t, std::uint32_t*);
    for (const Get get : {WiFiAccessPointACECWMinGet, WiFiAccessPointACECWMaxGet, WiFiAccessPointACAIFSNGet,
                          WiFiAccessPointACTxOpMaxGet}) {
        platform.forget();
        std::uint32_t value = 77;
        EXPECT_EQ(get(1, 3, &value), 1U);
        EXPECT_EQ(value, 77U);
        EXPECT_EQ(platform.logTexts(0),
                  (Texts{"wifi_ap_ac_config, failed to read nvram wl0_wme_ap_vi\n", "Impl call failed, result 1"}));
    }
    using Set = std::uint32_t (*)(void*, std::uint32_t, std::uint32_t, std::uint32_t);
    for (const Set set : {WiFiAccessPointACECWMinSet, WiFiAccessPointACECWMaxSet, WiFiAccessPointACAIFSNSet,
                          WiFiAccessPointACTxOpMaxSet}) {
        platform.forget();
        EXPECT_EQ(set(nullptr, 1, 3, 1), 1U);
        EXPECT_EQ(platform.logTexts(0), Texts{"wifi_ap_ac_config, failed to read nvram wl0_wme_ap_vi\n"});
        EXPECT_EQ(platform.callTexts({"wlcsm_nvram_set"}), Texts{});
    }
}

TEST_F(Wmm, DoesNotLookAtTheResultOfTheStore) {
    store("15 63 3 0 0 off off");
    platform.fail("wlcsm_nvram_set");
    EXPECT_EQ(WiFiAccessPointACAIFSNSet(nullptr, 1, 3, 7), 0U);
    EXPECT_EQ(platform.callCount("wlcsm_nvram_set"), 1U);
}

TEST_F(Wmm, RefusesAWindowOutOfRangeInSilenceOrWithAWord) {
    store("15 63 3 0 0 off off");
    EXPECT_EQ(WiFiAccessPointACECWMaxSet(nullptr, 1, 3, 16), 8U);
    EXPECT_TRUE(platform.logs().empty());
    EXPECT_EQ(WiFiAccessPointACECWMinSet(nullptr, 1, 3, 16), 8U);
    EXPECT_EQ(platform.logTexts(0), Texts{"Value out of range"});
    EXPECT_EQ(platform.callTexts(), Texts{});
    EXPECT_EQ(platform.nvram(kVideo), "15 63 3 0 0 off off");
}

TEST_F(Wmm, SetsWriteTheirOwnFieldWithoutLockOrContext) {
    store("15 63 3 0 0 off off");
    GuardedBlock context(220);
    EXPECT_EQ(WiFiAccessPointACECWMinSet(context.get(), 1, 3, 3), 0U);
    EXPECT_EQ(WiFiAccessPointACECWMaxSet(context.get(), 1, 3, 4), 0U);
    EXPECT_EQ(WiFiAccessPointACAIFSNSet(context.get(), 1, 3, 15), 0U);
    EXPECT_EQ(WiFiAccessPointACTxOpMaxSet(context.get(), 1, 3, 0xFFFFFFFF), 0U);
    EXPECT_EQ(platform.nvram(kVideo), "7 15 15 0 -1 off off ");
    EXPECT_EQ(context.bytes(0, 220), std::string(220, '\xEE'));
    for (const auto& call : platform.calls()) {
        EXPECT_TRUE(call.name == "wlcsm_nvram_get" || call.name == "wlcsm_nvram_set") << call.text();
        EXPECT_FALSE(call.lockHeld);
    }
}

TEST_F(Wmm, RefusesAnAifsnOutOfRange) {
    store("15 63 3 0 0 off off");
    EXPECT_EQ(WiFiAccessPointACAIFSNSet(nullptr, 1, 3, 0), 8U);
    EXPECT_EQ(WiFiAccessPointACAIFSNSet(nullptr, 1, 3, 16), 8U);
    EXPECT_EQ(platform.logTexts(0), (Texts{"Value out of range", "Value out of range"}));
}

TEST_F(Wmm, StagesWhatItDoesNotSupportAndDropsIt) {
    store("15 63 3 0 0 off off");
    GuardedBlock context(220);
    ASSERT_EQ(WiFiAccessPointACInitContext(context.get()), 0U);
    EXPECT_EQ(WiFiAccessPointACAliasSet(context.get(), 1, 3, std::string(65, 'a').c_str(), 65), 8U);
    EXPECT_EQ(WiFiAccessPointACAliasSet(context.get(), 1, 3, std::string(64, 'a').c_str(), 64), 0U);
    EXPECT_EQ(WiFiAccessPointACAckPolicySet(context.get(), 1, 3, 2), 8U);
    EXPECT_EQ(WiFiAccessPointACAckPolicySet(context.get(), 1, 3, 1), 0U);
    EXPECT_EQ(context.bytes(136, 64), std::string(64, 'a'));
    EXPECT_EQ(context.at<std::uint8_t>(216), 1U);
    for (std::uint32_t node = 1; node <= 7; ++node) {
        EXPECT_EQ(WiFiAccessPointACCheckContextNodeSet(context.get(), node), node == 2 || node == 7 ? 1U : 0U);
    }
    platform.forget();
    EXPECT_EQ(WiFiAccessPointACApplyContext(context.get(), 1, 3), 0U);
    EXPECT_EQ(platform.callTexts({"wlcsm_mngr_set", "wlcsm_nvram_set", "wlcsm_nvram_get"}), Texts{});
    EXPECT_TRUE(context.intact());
}

TEST_F(Wmm, LeavesTheOutputOfWhatItDoesNotSupport) {
    GuardedBlock out(64);
    EXPECT_EQ(WiFiAccessPointACAccessCategoryGet(1, 3, static_cast<std::uint32_t*>(out.get())), 0U);
    EXPECT_EQ(WiFiAccessPointACAliasGet(1, 3, out.text(), 64), 0U);
    EXPECT_EQ(WiFiAccessPointACAckPolicyGet(1, 3, static_cast<std::uint8_t*>(out.get())), 0U);
    EXPECT_EQ(out.bytes(0, 64), std::string(64, '\xEE'));
    EXPECT_EQ(WiFiAccessPointACAliasGet(1, 3, out.text(), 63), 8U);
}

TEST_F(Wmm, SnapshotHoldsTheNumbers) {
    store("15 1023 3 9 94 off off");
    GuardedBlock context(220);
    EXPECT_EQ(WiFiAccessPointACInstanceGet(context.get(), 1, 3), 0U);
    EXPECT_EQ(context.at<std::uint32_t>(132), 0U);
    EXPECT_EQ(context.bytes(136, 64), std::string(64, '\0'));
    EXPECT_EQ(context.at<std::uint32_t>(200), 3U);
    EXPECT_EQ(context.at<std::uint32_t>(204), 4U);
    EXPECT_EQ(context.at<std::uint32_t>(208), 10U);
    EXPECT_EQ(context.at<std::uint32_t>(212), 94U);
    EXPECT_EQ(context.at<std::uint8_t>(216), 0U);
    EXPECT_TRUE(context.intact());
}

TEST_F(Wmm, SnapshotFailsAtItsFirstNumberWithoutItsText) {
    GuardedBlock context(220);
    EXPECT_EQ(WiFiAccessPointACInstanceGet(context.get(), 1, 3), 1U);
    EXPECT_TRUE(platform.logged(0, "Get failed, result 1"));
    EXPECT_TRUE(platform.logged(3, "WiFiAccessPointACAIFSNGet Enter"));
    EXPECT_FALSE(platform.logged(3, "WiFiAccessPointACECWMinGet Enter"));
}

}  // namespace

}  // namespace quorvel
