#include <gtest/gtest.h>

#include <stdexcept>

#include "gateway/hostd/Counter.h"
#include "gateway/hostd/PathWalk.h"
#include "gateway/hostd/Plugin.h"
#include "tests/gateway/hostd/fake/FakePlugin.h"

namespace quorvel::hostd {
namespace {

class Model : public testing::Test {
  protected:
    Model() {
        fake::reset();
    }

    std::vector<std::string> walk(const std::string& path) {
        PathWalk walk(model_);
        std::vector<Match> matches;
        fault_ = walk.parameters(path, matches);
        std::vector<std::string> paths;
        for (const Match& match : matches)
            paths.push_back(model_.concrete(*match.parameter, match.instances));
        return paths;
    }

    Plugin plugin_{QUORVEL_FAKE_PLUGIN};
    DataModel model_{plugin_.table()};
    Fault fault_;
};

using Paths = std::vector<std::string>;

TEST_F(Model, HasAnEntryPerTableRow) {
    EXPECT_EQ(model_.parameters().size(), 19U);
}

TEST_F(Model, ResolvesEveryParameterOfTheTable) {
    for (const Parameter& parameter : model_.parameters()) {
        ResolvedPath resolved;
        const Instances instances = {parameter.depth > 0 ? 12U : 0U, parameter.depth > 1 ? 345U : 0U};
        const std::string path = model_.concrete(parameter, instances);
        ASSERT_TRUE(model_.resolve(path, resolved)) << path;
        EXPECT_EQ(resolved.parameter, &parameter) << path;
        EXPECT_EQ(resolved.instances, instances) << path;
    }
}

TEST_F(Model, ResolvesNothingElse) {
    for (const char* path :
         {"", "Device", "Device.", "Device.WiFi", "Device.WiFi.", "Device.WiFi.Radio.2.", "Device.WiFi.Radio.2.Chanel",
          "Device.WiFi.Radio.2.Channel.", "Device.WiFi.Radio.Channel", "Device.WiFi.Radio.*.Channel",
          "Device.WiFi.Radio.2x.Channel", "Device.WiFi.Radio.12345678901.Channel", "Device.WiFi.2.Radio.Channel",
          "Device.WiFi.Radio.2.3.4.Channel", "WiFi.Radio.2.Channel", "Devise.WiFi.Radio.2.Channel",
          "Device.WiFi.Radio.2"}) {
        ResolvedPath resolved;
        EXPECT_FALSE(model_.resolve(path, resolved)) << path;
    }
}

TEST_F(Model, TellsWhatCanBeReadAndWritten) {
    ResolvedPath push;
    ASSERT_TRUE(model_.resolve("Device.WiFi.Radio.1.Push", push));
    EXPECT_EQ(push.parameter->getter, 0U);
    EXPECT_NE(push.parameter->setter, 0U);
    ResolvedPath name;
    ASSERT_TRUE(model_.resolve("Device.WiFi.AccessPoint.1.AC.1.Name", name));
    EXPECT_EQ(name.parameter->getter, 0U);
    EXPECT_NE(name.parameter->setter, 0U);
    ResolvedPath count;
    ASSERT_TRUE(model_.resolve("Device.WiFi.RadioNumberOfEntries", count));
    EXPECT_NE(count.parameter->getter, 0U);
    EXPECT_EQ(count.parameter->setter, 0U);
}

TEST_F(Model, KnowsTheSettersThatWriteAtOnce) {
    ResolvedPath path;
    ASSERT_TRUE(model_.resolve("Device.WiFi.AccessPoint.1.AC.1.Limit", path));
    EXPECT_TRUE(path.parameter->writesAtOnce);
    ASSERT_TRUE(model_.resolve("Device.WiFi.AccessPoint.1.AC.1.Order", path));
    EXPECT_FALSE(path.parameter->writesAtOnce);
    ASSERT_TRUE(model_.resolve("Device.WiFi.AccessPoint.1.AC.1.Policy", path));
    EXPECT_FALSE(path.parameter->writesAtOnce);
}

TEST_F(Model, RefusesATypeItDoesNotKnow) {
    TableEntry entry = plugin_.table()[0];
    entry.words[2] = 7;
    EXPECT_THROW(DataModel(std::span(&entry, 1)), std::runtime_error);
}

TEST_F(Model, ExpandsAWildcardToTheInstancesThatExist) {
    EXPECT_EQ(walk("Device.WiFi.Radio.*.Channel"),
              (Paths{"Device.WiFi.Radio.1.Channel", "Device.WiFi.Radio.2.Channel"}));
    fake::state().radios = 0;
    EXPECT_EQ(walk("Device.WiFi.Radio.*.Channel"), Paths{});
    EXPECT_EQ(fault_.code, FaultCode::kNone);
}

TEST_F(Model, ExpandsAPartialPathInTableOrder) {
    fake::state().stations = {"00:00:00:00:00:01"};
    fake::state().categories = 1;
    EXPECT_EQ(walk("Device.WiFi.AccessPoint."),
              (Paths{"Device.WiFi.AccessPoint.1.AssociatedDeviceNumberOfEntries",
                     "Device.WiFi.AccessPoint.1.AssociatedDeviceRSSI",
                     "Device.WiFi.AccessPoint.1.AssociatedDevice.1.MACAddress",
                     "Device.WiFi.AccessPoint.1.AssociatedDevice.1.Signal", "Device.WiFi.AccessPoint.1.AC.1.Limit",
                     "Device.WiFi.AccessPoint.1.AC.1.Name", "Device.WiFi.AccessPoint.1.AC.1.Policy",
                     "Device.WiFi.AccessPoint.1.AC.1.Order"}));
}

TEST_F(Model, FaultsAnInstanceThatDoesNotExist) {
    for (const char* path : {"Device.WiFi.Radio.0.Channel", "Device.WiFi.Radio.3.Channel", "Device.WiFi.Radio.3.",
                             "Device.WiFi.AccessPoint.1.AC.5.Limit", "Device.WiFi.AccessPoint.1.AssociatedDevice.1."}) {
        EXPECT_EQ(walk(path), Paths{}) << path;
        EXPECT_EQ(fault_.code, FaultCode::kNoSuchInstance) << path;
        EXPECT_EQ(fault_.path, path);
    }
}

TEST_F(Model, FaultsAPathThatDoesNotExistAlsoBelowAnEmptyWildcard) {
    fake::state().radios = 0;
    for (const char* path :
         {"Device.WiFi.Radio.*.Chanel", "Device.WiFi.Radio.*.Statz.", "Device.WiFi.Radio.1.Channel.2.",
          "Device.WiFi.Radio", "Device.WiFi.RadioNumberOfEntries.", "WiFi.Radio.1.Channel", "x", ""}) {
        EXPECT_EQ(walk(path), Paths{}) << path;
        EXPECT_NE(fault_.code, FaultCode::kNone) << path;
    }
    (void)walk("Device.WiFi.Radio.*.Chanel");
    EXPECT_EQ(fault_.code, FaultCode::kNoSuchPath);
    EXPECT_EQ(fault_.suggestion, "Device.WiFi.Radio.*.Channel");
}

TEST_F(Model, CountsResultsOverAllRadios) {
    fake::state().results = {0, 2, 3};
    EXPECT_EQ(walk("Device.WiFi.Neighboring.Result.").size(), 5U);
}

TEST_F(Model, ProbesWhatNothingCounts) {
    fake::state().categories = 3;
    EXPECT_EQ(walk("Device.WiFi.AccessPoint.1.AC.*.Limit").size(), 3U);
    fake::state().categories = 1000;
    EXPECT_EQ(walk("Device.WiFi.AccessPoint.1.AC.*.Limit").size(), 8U);
}

TEST_F(Model, BoundsACountThatMakesNoSense) {
    fake::state().radios = 4000000000U;
    EXPECT_EQ(walk("Device.WiFi.Radio.*.Channel").size(), 4096U);
}

TEST_F(Model, AsksForACountOncePerRequest) {
    PathWalk walk(model_);
    std::vector<Match> matches;
    for (int i = 0; i < 5; ++i)
        (void)walk.parameters("Device.WiFi.Radio.*.Channel", matches);
    EXPECT_EQ(std::count(fake::state().calls.begin(), fake::state().calls.end(), "count radios"), 1);
    EXPECT_EQ(matches.size(), 10U);
}

TEST_F(Model, FindsThePrefixOfAnObjectsFunctions) {
    ResolvedPath path;
    ASSERT_TRUE(model_.resolve("Device.WiFi.Radio.1.Enable", path));
    EXPECT_EQ(Plugin::prefixOf(model_, path.parameter->node), "FakeRadio");
}

TEST(PluginFile, ThatIsNotThereIsNamed) {
    try {
        const Plugin plugin("/nowhere/plugin.so");
        FAIL() << "it loaded";
    } catch (const std::runtime_error& error) {
        EXPECT_NE(std::string(error.what()).find("/nowhere/plugin.so"), std::string::npos);
    }
}

}  // namespace
}  // namespace quorvel::hostd
