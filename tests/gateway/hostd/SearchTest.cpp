#include "gateway/hostd/SearchExpression.h"

#include <gtest/gtest.h>

#include <quorvel.h>
#include "gateway/hostd/LogTap.h"
#include "gateway/hostd/PathWalk.h"
#include "gateway/hostd/Plugin.h"
#include "tests/gateway/hostd/fake/FakePlugin.h"

namespace quorvel::hostd {
namespace {

using Operator = SearchExpression::Operator;

std::string wrongWith(const char* text) {
    SearchExpression expression;
    return expression.parse(text);
}

TEST(SearchExpressions, AreConditionsJoinedByAnd) {
    SearchExpression expression;
    ASSERT_EQ(expression.parse(R"( Alias == "a \"b\" && c" &&Enable==true&& Stats.Noise<=-80 )"), "");
    ASSERT_EQ(expression.conditions().size(), 3U);
    EXPECT_EQ(expression.conditions()[0].path, "Alias");
    EXPECT_EQ(expression.conditions()[0].operand, R"(a "b" && c)");
    EXPECT_TRUE(expression.conditions()[0].quoted);
    EXPECT_EQ(expression.conditions()[1].operand, "true");
    EXPECT_EQ(expression.conditions()[2].comparison, Operator::kAtMost);
    EXPECT_EQ(expression.conditions()[2].operand, "-80");
}

TEST(SearchExpressions, SayWhatIsWrongWithThem) {
    EXPECT_EQ(wrongWith(""), "a condition begins with a parameter's name");
    EXPECT_EQ(wrongWith("Enable=true"), "Enable is followed by none of == != ~= < > <= >=");
    EXPECT_EQ(wrongWith("Enable=="), "Enable is compared with nothing");
    EXPECT_EQ(wrongWith("Alias==\"x"), "a quote is left open");
    EXPECT_EQ(wrongWith("Enable==true || Enable==false"), "\"|| Enable==false\" is not joined by &&");
    EXPECT_EQ(wrongWith("Enable==true &&"), "a condition begins with a parameter's name");
}

TEST(SearchExpressions, RefuseComparisonsThatMakeNoSense) {
    const auto check = [](const char* text, Type type) {
        SearchExpression expression;
        EXPECT_EQ(expression.parse(text), "");
        return SearchExpression::check(expression.conditions().at(0), type);
    };
    EXPECT_EQ(check("X==\"y\"", Type::kText), "");
    EXPECT_NE(check("X==y", Type::kText), "");
    EXPECT_EQ(check("X!=0", Type::kBoolean), "");
    EXPECT_NE(check("X<true", Type::kBoolean), "");
    EXPECT_NE(check("X==yes", Type::kBoolean), "");
    EXPECT_EQ(check("X>=4294967295", Type::kUnsignedInt), "");
    EXPECT_NE(check("X~=1", Type::kInt), "");
    EXPECT_NE(check("X==1.5", Type::kInt), "");
}

TEST(SearchExpressions, CompareByTheParametersType) {
    const auto holds = [](const char* text, const Value& value) {
        SearchExpression expression;
        EXPECT_EQ(expression.parse(text), "");
        return SearchExpression::holds(expression.conditions().at(0), value);
    };
    const Value minusThree{Type::kInt, static_cast<std::uint32_t>(-3), ""};
    EXPECT_TRUE(holds("X<0", minusThree));
    EXPECT_TRUE(holds("X>=-3", minusThree));
    EXPECT_FALSE(holds("X>-3", minusThree));
    EXPECT_TRUE(holds("X>0", {Type::kUnsignedInt, 0xfffffffd, ""}));
    EXPECT_TRUE(holds("X!=false", {Type::kBoolean, 1, ""}));
    const Value list{Type::kText, 0, "None, WPA2-Personal,WPA2"};
    EXPECT_TRUE(holds("X~=\"WPA2\"", list));
    EXPECT_TRUE(holds("X~=\"WPA2-Personal\"", list));
    EXPECT_FALSE(holds("X~=\"WPA\"", list));
    EXPECT_TRUE(holds("X<\"b\"", {Type::kText, 0, "a"}));
}

class Searches : public testing::Test {
  protected:
    Searches() : model_(plugin_.table()) {
        fake::reset();
        LogTap::install();
    }

    // Returns the paths that are found, or the fault.
    std::vector<std::string> find(const std::string& path, unsigned levels = 0) {
        PathWalk walk(model_);
        std::vector<Match> matches;
        const Fault fault = walk.parameters(path, matches, levels);
        if (fault.code != FaultCode::kNone) {
            return {std::to_string(static_cast<int>(fault.code)) + " " + fault.reason};
        }
        std::vector<std::string> found;
        for (const Match& match : matches)
            found.push_back(model_.concrete(*match.parameter, match.instances));
        return found;
    }

    Plugin plugin_{QUORVEL_FAKE_PLUGIN};
    DataModel model_;
};

using Found = std::vector<std::string>;

TEST_F(Searches, FindTheInstancesThatMeetAllConditions) {
    EXPECT_EQ(find("Device.WiFi.Radio.[Channel==37].Enable"), Found{"Device.WiFi.Radio.2.Enable"});
    EXPECT_EQ(find("Device.WiFi.Radio.[Channel>=36 && Alias==\"first\"].Enable"),
              (Found{"Device.WiFi.Radio.1.Enable", "Device.WiFi.Radio.2.Enable"}));
    EXPECT_EQ(find("Device.WiFi.Radio.[Channel>=36 && Enable==false].Enable"), Found{});
}

TEST_F(Searches, TakeDotsInQuotesForText) {
    fake::state().alias = "a.b].c";
    EXPECT_EQ(find("Device.WiFi.Radio.[Alias==\"a.b].c\"].Channel").size(), 2U);
}

TEST_F(Searches, LookIntoOuterAndInnerObjects) {
    fake::state().stations = {"00:00:00:00:00:01", "00:00:00:00:00:02"};
    EXPECT_EQ(find("Device.WiFi.AccessPoint.1.AssociatedDevice.[Signal<-11].MACAddress"),
              Found{"Device.WiFi.AccessPoint.1.AssociatedDevice.2.MACAddress"});
    EXPECT_EQ(find("Device.WiFi.AccessPoint.[AssociatedDevice.*.Signal==-12].AssociatedDeviceNumberOfEntries"),
              Found{"Device.WiFi.AccessPoint.1.AssociatedDeviceNumberOfEntries"});
}

TEST_F(Searches, FaultWhatMakesNoSenseAlsoWhenThereIsNothingToSearch) {
    EXPECT_EQ(find("Device.WiFi.Radio.[Chanel==1].Enable"),
              Found{"7026 Device.WiFi.Radio.{i}. has no parameter Chanel"});
    EXPECT_EQ(find("Device.WiFi.Radio.[Channel==high].Enable"), Found{"7008 Channel is a number, \"high\" is none"});
    fake::state().accessPoints = 0;
    EXPECT_EQ(find("Device.WiFi.AccessPoint.*.AssociatedDevice.[Signal~=1].Signal"),
              Found{"7008 Signal is a number, not a list"});
}

TEST_F(Searches, SayWhatIsLeftOpenOrMissing) {
    EXPECT_EQ(find("Device.WiFi.Radio.[Alias==\"x].Enable"), Found{"7008 a bracket or a quote is left open"});
    EXPECT_EQ(find("Device.WiFi.Radio.[Channel==1.Enable"), Found{"7008 a bracket or a quote is left open"});
    EXPECT_EQ(find("Device.WiFi.Radio.[Channel==1]"),
              Found{"7008 a search is followed by a dot, or by a dot and a parameter"});
}

TEST_F(Searches, KnowNoInstanceOfAnyNumberThatIsTooLarge) {
    EXPECT_EQ(find("Device.WiFi.Radio.99999999999.Enable").front().substr(0, 5), "7016 ");
}

TEST_F(Searches, HaveNoComparableValueInAWriteOnlyParameter) {
    EXPECT_EQ(find("Device.WiFi.Radio.[Push==\"x\"].Enable"), Found{"7008 Push has no value of its own to compare"});
}

TEST_F(Searches, FollowAReferenceToTheObjectThatItNames) {
    fake::state().alias = "Device.WiFi.Radio.2.";
    EXPECT_EQ(find("Device.WiFi.Radio.1.Alias+.Channel"), Found{"Device.WiFi.Radio.2.Channel"});
    fake::state().alias = "Device.WiFi.Radio.1,Device.WiFi.Radio.2";
    EXPECT_EQ(find("Device.WiFi.Radio.1.Alias+.Channel").size(), 2U);
    fake::state().alias = "Device.WiFi.Radio.2.";
    EXPECT_EQ(find("Device.WiFi.Radio.[Alias+.Channel==37].Power").size(), 2U);
}

TEST_F(Searches, FaultAReferenceThatNamesNothing) {
    fake::state().alias = "Device.WiFi.Radio.7.";
    EXPECT_EQ(find("Device.WiFi.Radio.1.Alias+.Channel"),
              Found{"7016 Device.WiFi.Radio.1.Alias is \"Device.WiFi.Radio.7.\", which names no object"});
    EXPECT_EQ(find("Device.WiFi.Radio.*.Alias+.Channel"), Found{});
    EXPECT_EQ(find("Device.WiFi.Radio.1.Channel+.Channel"),
              Found{"7026 there is no reference Device.WiFi.Radio.{i}.Channel"});
}

TEST_F(Searches, DoNotLetAReferenceSearch) {
    fake::state().alias = "Device.WiFi.Radio.*.";
    EXPECT_EQ(find("Device.WiFi.Radio.*.Alias+.Channel"), Found{});
    fake::state().alias = "Device.WiFi.Radio.1.Alias+.";
    EXPECT_EQ(find("Device.WiFi.Radio.*.Alias+.Channel"), Found{});
}

TEST_F(Searches, GoDownAsFarAsTheyAreTold) {
    EXPECT_EQ(find("Device.WiFi.", 1).size(), 3U);
    const Found two = find("Device.WiFi.", 2);
    EXPECT_NE(std::find(two.begin(), two.end(), "Device.WiFi.Radio.2.Channel"), two.end());
    EXPECT_EQ(std::find(two.begin(), two.end(), "Device.WiFi.Radio.1.Stats.NeighboringResultNumberOfEntries"),
              two.end());
    EXPECT_LT(two.size(), find("Device.WiFi.").size());
}

TEST(ErrorLines, OfACallAreKeptInTheirOrderAndOnce) {
    LogTap::install();
    LogTap::setOutputLevel(0);
    LogTap::forgetErrors();
    Quorvel_LogPrint(0, "file.cpp", "function", 1, "There is nobody on AP[%u]", 10U);
    Quorvel_LogPrint(0, "file.cpp", "function", 2, "failed: result 1");
    Quorvel_LogPrint(0, "file.cpp", "function", 3, "failed: result 1");
    Quorvel_LogPrint(1, "file.cpp", "function", 4, "a warning");
    EXPECT_EQ(LogTap::errors(), "There is nobody on AP[10]; failed: result 1");
    LogTap::forgetErrors();
    EXPECT_EQ(LogTap::errors(), "");
}

TEST(ErrorLines, ReachAFollowerUpToItsLevelWhateverIsPrinted) {
    LogTap::install();
    LogTap::setOutputLevel(0);
    std::vector<std::string> followed;
    LogTap::follow(2, [&followed](std::uint32_t level, std::string_view line) {
        followed.push_back(std::to_string(level) + " " + std::string(line.substr(line.rfind(' ') + 1)));
    });
    Quorvel_LogPrint(2, "file.cpp", "function", 1, "notice");
    Quorvel_LogPrint(3, "file.cpp", "function", 2, "trace");
    LogTap::follow(0, {});
    Quorvel_LogPrint(0, "file.cpp", "function", 3, "unheard");
    EXPECT_EQ(followed, std::vector<std::string>{"2 notice"});
}

}  // namespace
}  // namespace quorvel::hostd
