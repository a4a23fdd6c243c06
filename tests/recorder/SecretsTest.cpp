#include "recorder/secrets/Secrets.h"

#include <gtest/gtest.h>

#include <vector>

#include "recorder/desk/Recording.h"
#include "tests/recorder/RecordBuilder.h"

namespace quorvel::recorder_test {
namespace {

using recorder::RecordHead;
using recorder::RecordKind;
using recorder::Secrets;
using recorder::ValueRole;

class RecordedSecrets : public testing::Test {
  protected:
    // Returns the record's bytes after its secrets were replaced.
    std::string replaced(const RecordBuilder& builder, const char* function, const char* named = "wlWpaPsk") {
        const std::string record = builder.str();
        std::vector<uint64_t> aligned((record.size() + 7) / 8);
        std::memcpy(aligned.data(), record.data(), record.size());
        secrets_.replaceIn(reinterpret_cast<RecordHead*>(aligned.data()), function,
                           [named](uint32_t) { return named; });
        return {reinterpret_cast<const char*>(aligned.data()), record.size()};
    }
    static bool has(const std::string& bytes, const std::string& text) {
        return bytes.find(text) != std::string::npos;
    }

    Secrets secrets_{{1, 2}, {}};
};

TEST_F(RecordedSecrets, AreReplacedInSettersAndGetters) {
    const auto set = RecordBuilder(RecordKind::kCall).number(1).bytes("quorvel-home", ValueRole::kArgument);
    EXPECT_FALSE(has(replaced(set, "WiFiAccessPointSecurityKeyPassphraseSet"), "quorvel-home"));
    std::string buffer("quorvel-home");
    buffer.resize(64);
    const auto get = RecordBuilder(RecordKind::kReturn).bytes(buffer, ValueRole::kAfter);
    EXPECT_FALSE(has(replaced(get, "WiFiAccessPointSecurityKeyPassphraseGet"), "quorvel-home"));
}

TEST_F(RecordedSecrets, AreReplacedInWholeContexts) {
    std::string context(800, '\0');
    const auto* field = &recorder::kSecretParameters[0];
    for (const auto& secret : recorder::kSecretParameters) {
        if (secret.getter == "WiFiAccessPointSecurityRadiusSecretGet") field = &secret;
    }
    context.replace(field->field.offset, 9, "s3cretary");
    const auto apply = RecordBuilder(RecordKind::kCall).bytes(context, ValueRole::kBefore);
    EXPECT_FALSE(has(replaced(apply, "WiFiAccessPointSecurityApplyContext"), "s3cretary"));
}

TEST_F(RecordedSecrets, AreReplacedInTheManagersTexts) {
    const auto set = RecordBuilder(RecordKind::kPlatform).number(0).number(0).text("wlWpaPsk").text("quorvel-home");
    const std::string bytes = replaced(set, "wlcsm_mngr_set");
    EXPECT_FALSE(has(bytes, "quorvel-home"));
    EXPECT_TRUE(has(bytes, "wlWpaPsk"));
    const auto other = RecordBuilder(RecordKind::kPlatform).number(0).number(0).text("wlChannel").text("quorvel-hole");
    EXPECT_TRUE(has(replaced(other, "wlcsm_mngr_set"), "quorvel-hole"));
}

TEST_F(RecordedSecrets, AreReplacedInLogLines) {
    const auto line = RecordBuilder(RecordKind::kLog).number(2).number(1).number(0).text("wlWscStaPin").text("1234");
    EXPECT_FALSE(has(replaced(line, "Quorvel_LogPrint"), "1234"));
}

TEST_F(RecordedSecrets, ThatWereSeenAreReplacedEverywhere) {
    const auto set = RecordBuilder(RecordKind::kPlatform).number(0).number(0).text("wlWpaPsk").text("quorvel-home");
    (void)replaced(set, "wlcsm_mngr_set");
    const auto command = RecordBuilder(RecordKind::kPlatform).text("echo quorvel-home > /tmp/x");
    const std::string bytes = replaced(command, "system");
    EXPECT_FALSE(has(bytes, "quorvel-home"));
    EXPECT_TRUE(has(bytes, "echo "));
}

TEST_F(RecordedSecrets, AreReplacedBehindANamedVariable) {
    const auto set = RecordBuilder(RecordKind::kPlatform).number(0).number(0).name(1024).text("quorvel-home");
    EXPECT_FALSE(has(replaced(set, "wlcsm_mngr_set"), "quorvel-home"));
}

TEST_F(RecordedSecrets, AreTheSameEachTime) {
    const auto set = RecordBuilder(RecordKind::kPlatform).number(0).number(0).text("wlWpaPsk").text("quorvel-home");
    const std::string once = replaced(set, "wlcsm_mngr_set");
    EXPECT_EQ(replaced(set, "wlcsm_mngr_set"), once);
}

TEST_F(RecordedSecrets, IncludeNetworksInScans) {
    const auto line =
        RecordBuilder(RecordKind::kPlatform).number(128).text("SSID: \"Harbour 12\"\n", ValueRole::kResult);
    const std::string bytes = replaced(line, "fgets");
    EXPECT_FALSE(has(bytes, "Harbour"));
    EXPECT_TRUE(has(bytes, "SSID: \""));
    EXPECT_TRUE(has(bytes, "\"\n"));
}

TEST_F(RecordedSecrets, IncludeShortBeginningsOfNetworksInLogLines) {
    const char* const format = "WIFINEIGHBORINGDIAGNOSTICSRESULT_SSID[%d] found: %s";
    const auto scan = RecordBuilder(RecordKind::kPlatform).text("SSID: \"Harb 12\"\n", ValueRole::kResult);
    const std::string disguised = replaced(scan, "fgets");
    const auto line = RecordBuilder(RecordKind::kLog).name(1).number(0).text("Harb");
    const std::string bytes = replaced(line, "Quorvel_LogPrint", format);
    EXPECT_FALSE(has(bytes, "Harb"));
    EXPECT_TRUE(has(bytes, disguised.substr(disguised.find('"') + 1, 4)));
    const auto other = RecordBuilder(RecordKind::kLog).name(1).number(0).text("Harb");
    EXPECT_TRUE(has(replaced(other, "Quorvel_LogPrint", "RADIO[%d] found: %s"), "Harb"));
}

TEST_F(RecordedSecrets, IncludeAddressesInEvents) {
    std::string event(20, '\0');
    event[8] = 12;
    event.replace(12, 6, "\x00\x1a\x2b\x3c\x4d\x5e", 6);
    const auto read =
        RecordBuilder(RecordKind::kPlatform).number(5).number(20, ValueRole::kResult).bytes(event, ValueRole::kAfter);
    EXPECT_FALSE(has(replaced(read, "read"), "\x1a\x2b\x3c\x4d\x5e"));
}

TEST_F(RecordedSecrets, CanKeepAddressesAndNetworks) {
    secrets_ = Secrets({1, 2}, {true, true});
    const auto line =
        RecordBuilder(RecordKind::kPlatform).text("SSID: \"Harbour\"", ValueRole::kResult).text("00:1a:2b:3c:4d:5e");
    const std::string bytes = replaced(line, "fgets");
    EXPECT_TRUE(has(bytes, "Harbour"));
    EXPECT_TRUE(has(bytes, "00:1a:2b:3c:4d:5e"));
    const auto set = RecordBuilder(RecordKind::kPlatform).number(0).number(0).text("wlWpaPsk").text("quorvel-home");
    EXPECT_FALSE(has(replaced(set, "wlcsm_mngr_set"), "quorvel-home"));
}

}  // namespace
}  // namespace quorvel::recorder_test
