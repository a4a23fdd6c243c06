#include <gtest/gtest.h>
#include <quorvel.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "gateway/framework/HostControl.h"
#include "tests/gateway/framework/QuietHost.h"
#include "tests/gateway/framework/ScratchFolder.h"

namespace {

class HostConfiguration : public QuietHost {
  protected:
    void TearDown() override {
        unsetenv("QUORVEL_CONFIG");
    }
    void configure(const std::string& text) {
        setenv("QUORVEL_CONFIG", folder_.write("host.ini", text).c_str(), 1);
    }
    static bool lastErrorHas(const std::string& text) {
        return std::string(QuorvelHost_LastError()).find(text) != std::string::npos;
    }

    ScratchFolder folder_;
    char auxiliary_[16] = "auxiliary";
    char value_[64] = "untouched";
};

TEST_F(HostConfiguration, GivesTheValueOfAKey) {
    configure("[Device.WiFi]\nWL_Driver = wl.ko\nWLCSM_Driver = wlcsm.ko\n");
    EXPECT_EQ(QuorvelUtilGetCfg("Device.WiFi", "WL_Driver", auxiliary_, value_), 0U);
    EXPECT_STREQ(value_, "wl.ko");
    EXPECT_EQ(QuorvelUtilGetCfg("Device.WiFi", "WLCSM_Driver", auxiliary_, value_), 0U);
    EXPECT_STREQ(value_, "wlcsm.ko");
    EXPECT_STREQ(auxiliary_, "");
}

TEST_F(HostConfiguration, LeavesTheValueAloneWhenTheEntryIsMissing) {
    configure("[Device.WiFi]\nWL_Driver = wl.ko\n");
    EXPECT_NE(QuorvelUtilGetCfg("Device.WiFi", "WLCSM_Driver", auxiliary_, value_), 0U);
    EXPECT_NE(QuorvelUtilGetCfg("Device", "WL_Driver", auxiliary_, value_), 0U);
    EXPECT_STREQ(value_, "untouched");
}

TEST_F(HostConfiguration, RefusesAValueThatDoesNotFit) {
    const std::string longest(63, 'x');
    configure("[A]\nfits = " + longest + "\nlong = " + longest + "x\n");
    EXPECT_EQ(QuorvelUtilGetCfg("A", "fits", auxiliary_, value_), 0U);
    EXPECT_EQ(value_, longest);
    std::strcpy(value_, "untouched");
    EXPECT_NE(QuorvelUtilGetCfg("A", "long", auxiliary_, value_), 0U);
    EXPECT_STREQ(value_, "untouched");
    EXPECT_TRUE(lastErrorHas("[A] long is 64 characters long, at most 63")) << QuorvelHost_LastError();
}

TEST_F(HostConfiguration, SaysWhereAMalformedLineIs) {
    configure("[Device.WiFi]\nWL_Driver wl.ko\n");
    EXPECT_NE(QuorvelUtilGetCfg("Device.WiFi", "WL_Driver", auxiliary_, value_), 0U);
    EXPECT_TRUE(lastErrorHas("host.ini:2: expected \"key = value\"")) << QuorvelHost_LastError();
}

TEST_F(HostConfiguration, SaysWhichFileCannotBeRead) {
    setenv("QUORVEL_CONFIG", (folder_.path() + "/absent.ini").c_str(), 1);
    EXPECT_NE(QuorvelUtilGetCfg("Device.WiFi", "WL_Driver", auxiliary_, value_), 0U);
    EXPECT_TRUE(lastErrorHas("absent.ini: No such file")) << QuorvelHost_LastError();
}

TEST_F(HostConfiguration, RefusesAFolderInPlaceOfAFile) {
    setenv("QUORVEL_CONFIG", folder_.path().c_str(), 1);
    EXPECT_NE(QuorvelUtilGetCfg("Device.WiFi", "WL_Driver", auxiliary_, value_), 0U);
    EXPECT_TRUE(lastErrorHas("Is a directory")) << QuorvelHost_LastError();
}

TEST_F(HostConfiguration, RefusesNullArguments) {
    configure("[A]\nkey = 1\n");
    EXPECT_NE(QuorvelUtilGetCfg(nullptr, "key", auxiliary_, value_), 0U);
    EXPECT_NE(QuorvelUtilGetCfg("A", nullptr, auxiliary_, value_), 0U);
    EXPECT_NE(QuorvelUtilGetCfg("A", "key", auxiliary_, nullptr), 0U);
    EXPECT_EQ(QuorvelUtilGetCfg("A", "key", nullptr, value_), 0U);
}

TEST_F(HostConfiguration, GivesTheSpawnEntryOfASection) {
    configure("[Device.WiFi.Daemon]\nprogram = /board/bin/wlmngr2\narguments = -c/data/a b\n");
    SpawnInfo info;
    std::memset(&info, 0xa5, sizeof info);
    ASSERT_EQ(QuorvelUtilGetSpawnInfoFromCfg("Device.WiFi.Daemon", &info), 0U);
    EXPECT_STREQ(info.program, "/board/bin/wlmngr2");
    EXPECT_STREQ(info.arguments, "-c/data/a b");
    EXPECT_EQ(info.option320, 0U);
    EXPECT_EQ(info.option333, 0U);
}

TEST_F(HostConfiguration, TakesASpawnEntryWithoutArguments) {
    configure("[Daemon]\nprogram = /bin/true\n");
    SpawnInfo info;
    ASSERT_EQ(QuorvelUtilGetSpawnInfoFromCfg("Daemon", &info), 0U);
    EXPECT_STREQ(info.arguments, "");
}

TEST_F(HostConfiguration, RefusesASpawnEntryThatIsMissingOrTooLong) {
    SpawnInfo info{};
    info.option324 = 9;
    configure("[Daemon]\narguments = x\n[Long]\nprogram = " + std::string(64, 'p') +
              "\n[LongArguments]\nprogram = p\narguments = " + std::string(256, 'a') + "\n");
    for (const char* section : {"Daemon", "Long", "LongArguments", "Absent"})
        EXPECT_NE(QuorvelUtilGetSpawnInfoFromCfg(section, &info), 0U) << section;
    EXPECT_STREQ(info.program, "");
    EXPECT_EQ(info.option324, 9);
    EXPECT_NE(QuorvelUtilGetSpawnInfoFromCfg(nullptr, &info), 0U);
    EXPECT_NE(QuorvelUtilGetSpawnInfoFromCfg("Daemon", nullptr), 0U);
}

}  // namespace
