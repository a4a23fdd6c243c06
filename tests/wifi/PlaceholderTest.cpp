#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/wifi/DataModel.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"

// Objects that are present without logic: every read succeeds and leaves the value, every write is dropped.

namespace quorvel {

namespace {

using datamodel::Object;
using datamodel::Parameter;
using datamodel::Type;
using scripted::GuardedBlock;
using Texts = std::vector<std::string>;

struct Placeholder {
    const char* prefix;
    std::uint32_t contextSize;
    std::size_t parameters;
};

const Placeholder kPlaceholders[] = {
    {"WiFiAccessPointAccounting", 364, 8},
    {"WiFiAccessPointAirtimeScheduler", 140, 2},
    {"WiFiAirtimeSchedulerStationsList", 160, 3},
    {"WiFiChannelDiagnostics", 144, 3},
    {"WiFiChannelDiagnosticsResult", 400, 4},
    {"WiFiAccessPointACStats", 168, 9},
    {"WiFiAccessPointAssociatedDeviceStats", 168, 9},
};

struct Range {
    const char* stem;
    std::uint32_t low;
    std::uint32_t high;
};

const Range kRanges[] = {
    {"WiFiAccessPointAccountingEnable", 0, 1},
    {"WiFiAccessPointAccountingServerPort", 0, 0xFFFFFFFF},
    {"WiFiAccessPointAccountingSecondaryServerPort", 0, 0xFFFFFFFF},
    {"WiFiAccessPointAccountingInterimInterval", 0, 0xFFFFFFFF},
    {"WiFiAccessPointAirtimeSchedulerSchedulingType", 1, 3},
    {"WiFiAirtimeSchedulerStationsListSchedulingType", 1, 3},
    {"WiFiAirtimeSchedulerStationsListVideoPriority", 0, 0xFFFFFFFF},
    {"WiFiChannelDiagnosticsDiagnosticsState", 1, 4},
};

struct Length {
    const char* stem;
    std::uint32_t length;
};

const Length kLengths[] = {
    {"WiFiAccessPointAccountingServerIPAddr", 45},
    {"WiFiAccessPointAccountingSecondaryServerIPAddr", 45},
    {"WiFiAccessPointAccountingSecret", 64},
    {"WiFiAccessPointAccountingSecondarySecret", 64},
    {"WiFiAirtimeSchedulerStationsListMacAddress", 17},
};

class PlaceholderObject : public scripted::PlatformTest {
  protected:
    // The texts that would reach the manager.
    Texts traffic() const {
        return platform.callTexts(
            {"wlcsm_mngr_get", "wlcsm_mngr_ext_get", "wlcsm_mngr_set", "wlcsm_nvram_get", "wlcsm_nvram_set", "popen"});
    }
    static const Object& objectOf(const char* prefix) {
        return datamodel::parametersOf(prefix).front().object();
    }
    // Stages the largest value that the parameter takes.
    static void stage(const Parameter& parameter, void* ctx) {
        if (parameter.type == Type::String) {
            EXPECT_EQ(parameter.setText(ctx, std::string(parameter.capacity, 't').c_str(), parameter.capacity), 0U);
        } else {
            EXPECT_EQ(parameter.setNumber(ctx, parameter.high), 0U);
        }
    }
};

TEST_F(PlaceholderObject, ReadsSucceedAndLeaveTheValue) {
    for (const Placeholder& placeholder : kPlaceholders) {
        const auto parameters = datamodel::parametersOf(placeholder.prefix);
        EXPECT_EQ(parameters.size(), placeholder.parameters) << placeholder.prefix;
        for (const Parameter& parameter : parameters) {
            SCOPED_TRACE(parameter.stem);
            platform.forget();
            GuardedBlock out(parameter.width());
            EXPECT_EQ(parameter.get(1, 1, out.get(), parameter.capacity), 0U);
            EXPECT_EQ(out.bytes(0, out.size()), std::string(out.size(), '\xEE'));
            EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 1U);
            EXPECT_EQ(platform.logTexts(3),
                      (Texts{parameter.getterName() + " Enter", parameter.getterName() + " DONE"}));
        }
    }
    EXPECT_EQ(traffic(), Texts{});
}

TEST_F(PlaceholderObject, ReadsTakeEveryInstance) {
    for (const Placeholder& placeholder : kPlaceholders) {
        for (const Parameter& parameter : datamodel::parametersOf(placeholder.prefix)) {
            GuardedBlock out(parameter.width());
            EXPECT_EQ(parameter.get(0, 0xFFFFFFFF, out.get(), parameter.capacity), 0U) << parameter.stem;
        }
    }
}

TEST_F(PlaceholderObject, NumbersAreRefusedOutOfTheirRange) {
    for (const Range& range : kRanges) {
        SCOPED_TRACE(range.stem);
        const Parameter& parameter = datamodel::parameter(range.stem);
        GuardedBlock context(parameter.object().contextSize);
        ASSERT_EQ(parameter.object().initContext(context.get()), 0U);
        platform.forget();
        if (range.low > 0) {
            EXPECT_EQ(parameter.setNumber(context.get(), range.low - 1), 8U);
        }
        if (range.high < 0xFFFFFFFF) {
            EXPECT_EQ(parameter.setNumber(context.get(), range.high + 1), 8U);
            EXPECT_EQ(parameter.setNumber(context.get(), 0xFFFFFFFF), 8U);
            EXPECT_TRUE(platform.logged(0, "Value out of range"));
        }
        EXPECT_EQ(parameter.object().checkContextNodeSet(context.get(), parameter.node), 0U);
        EXPECT_EQ(parameter.setNumber(context.get(), range.low), 0U);
        EXPECT_EQ(parameter.setNumber(context.get(), range.high), 0U);
        EXPECT_EQ(parameter.object().checkContextNodeSet(context.get(), parameter.node), 1U);
    }
}

TEST_F(PlaceholderObject, TextsAreRefusedBeyondTheirLength) {
    for (const Length& length : kLengths) {
        SCOPED_TRACE(length.stem);
        const Parameter& parameter = datamodel::parameter(length.stem);
        const std::string text(length.length + 1, 't');
        GuardedBlock context(parameter.object().contextSize);
        ASSERT_EQ(parameter.object().initContext(context.get()), 0U);
        EXPECT_EQ(parameter.setText(context.get(), text.c_str(), length.length + 1), 8U);
        EXPECT_EQ(parameter.setText(context.get(), nullptr, 1), 6U);
        EXPECT_EQ(parameter.object().checkContextNodeSet(context.get(), parameter.node), 0U);
        EXPECT_EQ(parameter.setText(context.get(), text.c_str(), length.length), 0U);
        EXPECT_EQ(parameter.object().checkContextNodeSet(context.get(), parameter.node), 1U);
        EXPECT_TRUE(context.intact());
        GuardedBlock out(length.length);
        EXPECT_EQ(parameter.get(1, 1, out.get(), length.length), 0U);
        EXPECT_EQ(parameter.get(1, 1, out.get(), length.length - 1), 8U);
    }
    GuardedBlock out(256);
    EXPECT_EQ(WiFiChannelDiagnosticsResultNonWiFiInterfaceClassificationGet(1, out.text(), 255), 8U);
    EXPECT_EQ(WiFiChannelDiagnosticsResultNonWiFiInterfaceClassificationGet(1, out.text(), 256), 0U);
    EXPECT_EQ(WiFiChannelDiagnosticsResultNonWiFiInterfaceClassificationGet(1, nullptr, 256), 6U);
}

TEST_F(PlaceholderObject, MarksItsNodesFromOne) {
    const std::pair<const char*, std::vector<std::uint32_t>> marks[] = {
        {"WiFiAccessPointAccounting", {1, 2, 3, 4, 5, 6, 7, 8}},
        {"WiFiAccessPointAirtimeScheduler", {1}},
        {"WiFiAirtimeSchedulerStationsList", {1, 2, 3}},
        {"WiFiChannelDiagnostics", {1}},
    };
    for (const auto& [prefix, expected] : marks) {
        GuardedBlock context(objectOf(prefix).contextSize);
        ASSERT_EQ(objectOf(prefix).initContext(context.get()), 0U);
        for (const Parameter& parameter : datamodel::parametersOf(prefix)) {
            if (parameter.setter != nullptr) {
                stage(parameter, context.get());
            }
        }
        std::vector<std::uint32_t> marked;
        for (std::uint32_t node = 0; node <= objectOf(prefix).nodeLimit; ++node) {
            if (objectOf(prefix).checkContextNodeSet(context.get(), node) != 0) {
                marked.push_back(node);
            }
        }
        EXPECT_EQ(marked, expected) << prefix;
    }
}

TEST_F(PlaceholderObject, ApplyDropsWhatIsStaged) {
    for (const Placeholder& placeholder : kPlaceholders) {
        SCOPED_TRACE(placeholder.prefix);
        const Object& object = objectOf(placeholder.prefix);
        GuardedBlock context(placeholder.contextSize);
        ASSERT_EQ(object.initContext(context.get()), 0U);
        for (const Parameter& parameter : datamodel::parametersOf(placeholder.prefix)) {
            if (parameter.setter != nullptr) {
                stage(parameter, context.get());
            }
        }
        platform.forget();
        EXPECT_EQ(object.apply(context.get()), 0U);
        EXPECT_EQ(traffic(), Texts{});
        EXPECT_EQ(platform.callTexts({"Quorvel_ContextInit"}),
                  Texts{"Quorvel_ContextInit(ctx, " + std::to_string(placeholder.contextSize) + ")"});
        for (std::uint32_t node = 0; node <= object.nodeLimit; ++node) {
            EXPECT_EQ(object.checkContextNodeSet(context.get(), node), 0U);
        }
        EXPECT_TRUE(context.intact());
    }
}

TEST_F(PlaceholderObject, SnapshotReadsAsZeroOrEmpty) {
    for (const Placeholder& placeholder : kPlaceholders) {
        SCOPED_TRACE(placeholder.prefix);
        GuardedBlock context(placeholder.contextSize);
        platform.forget();
        EXPECT_EQ(objectOf(placeholder.prefix).snapshot(context.get()), 0U);
        EXPECT_EQ(context.bytes(132, placeholder.contextSize - 132), std::string(placeholder.contextSize - 132, '\0'));
        EXPECT_TRUE(context.intact());
        EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), placeholder.parameters);
    }
}

TEST_F(PlaceholderObject, SnapshotStopsAtAGetterThatCannotLock) {
    for (const Placeholder& placeholder : kPlaceholders) {
        SCOPED_TRACE(placeholder.prefix);
        platform.reset();
        platform.answerAt("QuorvelOsMutexLock", 2, 71);
        GuardedBlock context(placeholder.contextSize);
        EXPECT_EQ(objectOf(placeholder.prefix).snapshot(context.get()), 71U);
        EXPECT_EQ(platform.logTexts(0), (Texts{"Lock failed, result 71", "Get failed, result 71"}));
        EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 2U);
    }
}

}  // namespace

}  // namespace quorvel
