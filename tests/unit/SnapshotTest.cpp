#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "DataModel.h"
#include "PlatformTest.h"
#include "QuorvelWiFiExports.h"
#include "WillingWorld.h"

// One call reads every readable parameter of an instance into a context.

namespace quorvel {

namespace {

using datamodel::Access;
using datamodel::Object;
using datamodel::Parameter;
using datamodel::Type;
using scripted::GuardedBlock;
using Texts = std::vector<std::string>;

bool oneFetch(const Object& object) {
    return std::strcmp(object.prefix, "WiFiAccessPointAssociatedDevice") == 0;
}

bool neighbouring(const Object& object) {
    return std::strcmp(object.prefix, "WiFiNeighboringDiagnosticsResult") == 0;
}

bool filterTable(const Object& object) {
    return std::strcmp(object.prefix, "WiFiAccessPointAccessPointControlFilterTable") == 0;
}

// What the snapshot calls, in order: the getters of all readable parameters that take no station.
std::vector<Parameter> readParameters(const Object& object) {
    std::vector<Parameter> read;
    for (const Parameter& parameter : datamodel::parametersOf(object.prefix)) {
        if (parameter.getter != nullptr && parameter.access != Access::Station) {
            read.push_back(parameter);
        }
    }
    return read;
}

class Snapshot : public scripted::PlatformTest {
  protected:
    template <typename Check>
    void forEach(Check check) {
        for (const Object& object : datamodel::objects()) {
            SCOPED_TRACE(object.prefix);
            platform.reset();
            scripted::makeWilling(platform);
            check(object);
        }
    }

    // The getters entered, by their first log line.
    Texts entered() const {
        Texts names;
        for (const auto& line : platform.logs()) {
            if (line.level == 3 && line.text == line.function + " Enter" &&
                line.function.find("InstanceGet") == std::string::npos) {
                names.push_back(line.function);
            }
        }
        return names;
    }

    Texts ownLines(const Object& object) const {
        Texts lines;
        for (const auto& line : platform.logs()) {
            if (line.function == object.function("InstanceGet")) {
                lines.push_back(std::to_string(line.level) + " " + line.text);
                EXPECT_EQ(line.file, object.file());
            }
        }
        return lines;
    }
};

TEST_F(Snapshot, ReadsTheStatedNumberOfParameters) {
    const std::pair<const char*, std::size_t> counts[] = {{"WiFi", 10},
                                                          {"WiFiRadio", 64},
                                                          {"WiFiRadioStats", 15},
                                                          {"WiFiNeighboringDiagnosticsResult", 18},
                                                          {"WiFiSSID", 6},
                                                          {"WiFiSSIDStats", 21},
                                                          {"WiFiAccessPoint", 21},
                                                          {"WiFiAccessPointAccessPointControlFilterTable", 2},
                                                          {"WiFiAccessPointSecurity", 21},
                                                          {"WiFiAccessPointAccounting", 8},
                                                          {"WiFiAccessPointWPS", 8},
                                                          {"WiFiAccessPointAssociatedDeviceStats", 9},
                                                          {"WiFiAccessPointAC", 7},
                                                          {"WiFiAccessPointACStats", 9},
                                                          {"WiFiAccessPointAirtimeScheduler", 2},
                                                          {"WiFiAirtimeSchedulerStationsList", 3},
                                                          {"WiFiChannelDiagnostics", 3},
                                                          {"WiFiChannelDiagnosticsResult", 4}};
    for (const auto& [prefix, count] : counts) {
        for (const Object& object : datamodel::objects()) {
            if (std::strcmp(object.prefix, prefix) == 0) {
                EXPECT_EQ(readParameters(object).size(), count) << prefix;
            }
        }
    }
}

TEST_F(Snapshot, CallsEveryGetterOnceInNodeOrder) {
    forEach([this](const Object& object) {
        if (oneFetch(object) || neighbouring(object)) {
            return;
        }
        GuardedBlock context(object.contextSize);
        EXPECT_EQ(object.snapshot(context.get()), 0U);
        Texts expected;
        for (const Parameter& parameter : readParameters(object)) {
            expected.push_back(parameter.getterName());
        }
        EXPECT_EQ(entered(), expected);
        EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), expected.size());
        EXPECT_EQ(platform.callCount("QuorvelOsMutexUnlock"), expected.size());
        const std::string name = object.function("InstanceGet");
        EXPECT_EQ(ownLines(object), filterTable(object) ? Texts{"3 " + name + " DONE"}
                                                        : (Texts{"3 " + name + " Enter", "3 " + name + " DONE"}));
        EXPECT_TRUE(context.intact());
    });
}

TEST_F(Snapshot, LeavesNoNodePending) {
    forEach([](const Object& object) {
        GuardedBlock context(object.contextSize);
        (void)object.snapshot(context.get());
        for (std::uint32_t node = 0; node <= object.nodeLimit; ++node) {
            EXPECT_EQ(object.checkContextNodeSet(context.get(), node), 0U);
        }
    });
}

TEST_F(Snapshot, LaysEachValueInItsField) {
    forEach([](const Object& object) {
        if (oneFetch(object) || neighbouring(object)) {
            return;
        }
        GuardedBlock context(object.contextSize);
        ASSERT_EQ(object.snapshot(context.get()), 0U);
        for (const Parameter& parameter : readParameters(object)) {
            std::vector<char> value(8192, '\0');
            ASSERT_EQ(parameter.get(1, 1, value.data(), parameter.type == Type::String ? parameter.capacity : 0), 0U);
            const std::string expected = parameter.type == Type::String
                                             ? std::string(value.data(), strnlen(value.data(), parameter.capacity))
                                             : std::string(value.data(), parameter.width());
            std::string field = context.bytes(parameter.offset(), parameter.width());
            if (parameter.type == Type::String && std::strcmp(parameter.name, "DcsChannelMetrics") != 0 &&
                std::strcmp(parameter.name, "RadioChannelStats") != 0) {
                field.resize(strnlen(field.data(), field.size()));
                EXPECT_EQ(field, expected) << parameter.stem;
            } else if (parameter.type != Type::String) {
                EXPECT_EQ(field, expected) << parameter.stem;
            }
        }
    });
}

TEST_F(Snapshot, EndsAtTheFirstFailureWithItsCode) {
    platform.setVariableEverywhere("wlEnblSsid", "1");
    platform.setVariableEverywhere("status", "Up");
    GuardedBlock context(344);
    EXPECT_EQ(WiFiSSIDInstanceGet(context.get(), 1), 1U);  // no Alias
    EXPECT_EQ(context.at<std::uint8_t>(132), 1);
    EXPECT_EQ(context.bytes(133, 32), "Up" + std::string(30, '\0'));
    EXPECT_EQ(context.bytes(165, 344 - 165), std::string(344 - 165, '\0'));
    EXPECT_EQ(entered(), (Texts{"WiFiSSIDEnableGet", "WiFiSSIDStatusGet", "WiFiSSIDAliasGet"}));
    Texts own;
    for (const auto& line : platform.logs()) {
        if (line.function == "WiFiSSIDInstanceGet") {
            own.push_back(line.text);
        }
    }
    EXPECT_EQ(own, (Texts{"WiFiSSIDInstanceGet Enter", "Get failed, result 1"}));
}

TEST_F(Snapshot, OfAnInstanceThatDoesNotExistGivesTheGettersCode) {
    GuardedBlock context(344);
    EXPECT_EQ(WiFiSSIDInstanceGet(context.get(), 25), 6U);
    EXPECT_TRUE(platform.logged(0, "Get failed, result 6"));
}

TEST_F(Snapshot, PassesTheLocksFailureOn) {
    GuardedBlock context(344);
    platform.answer("QuorvelOsMutexLock", 77);
    EXPECT_EQ(WiFiSSIDInstanceGet(context.get(), 1), 77U);
    EXPECT_TRUE(platform.logged(0, "Get failed, result 77"));
}

TEST_F(Snapshot, CopiesATextThatFillsItsFieldWithoutTerminator) {
    scripted::makeWilling(platform);
    const std::string ssid(32, 's');
    const std::string name(64, 'n');
    platform.setVariableEverywhere("wlSsid", ssid);
    platform.setVariableEverywhere("name", name);
    platform.setVariableEverywhere("wlBssid", "00:11:22:33:44:55");
    GuardedBlock context(344);
    EXPECT_EQ(WiFiSSIDInstanceGet(context.get(), 1), 0U);
    const auto field = [&context](const char* stem) {
        const Parameter& parameter = datamodel::parameter(stem);
        return context.bytes(parameter.offset(), parameter.capacity);
    };
    EXPECT_EQ(field("WiFiSSIDSSID"), ssid);
    EXPECT_EQ(field("WiFiSSIDName"), name);
    EXPECT_EQ(field("WiFiSSIDBSSID"), "00:11:22:33:44:55");
    EXPECT_TRUE(context.intact());
}

TEST_F(Snapshot, DoesNotLookAtTheResultOfInitialising) {
    scripted::makeWilling(platform);
    GuardedBlock context(140);
    platform.answer("Quorvel_ContextInit", 9);
    EXPECT_EQ(WiFiAccessPointAirtimeSchedulerInstanceGet(context.get()), 0U);
}

TEST_F(Snapshot, DoesNotRefuseToReadIntoNothing) {
    scripted::makeWilling(platform);
    EXPECT_EQ(WiFiSSIDInstanceGet(nullptr, 1), 0U);
    EXPECT_EQ(entered().size(), 6U);
    EXPECT_FALSE(platform.logged(0, "Invalid context"));
}

TEST_F(Snapshot, OfTheFilterTableNamesTheImplementationInItsFailure) {
    GuardedBlock context(712);
    EXPECT_EQ(WiFiAccessPointAccessPointControlFilterTableInstanceGet(context.get(), 25), 6U);
    Texts own;
    for (const auto& line : platform.logs()) {
        if (line.function == "WiFiAccessPointAccessPointControlFilterTableInstanceGet") {
            own.push_back(line.text);
        }
    }
    EXPECT_EQ(own, Texts{"Impl call failed, result 6"});
}

TEST_F(Snapshot, OfAPlaceholderIsEmpty) {
    for (const char* prefix : {"WiFiAccessPointAccounting", "WiFiAccessPointACStats", "WiFiAccessPointAirtimeScheduler",
                               "WiFiAirtimeSchedulerStationsList", "WiFiChannelDiagnostics",
                               "WiFiChannelDiagnosticsResult", "WiFiAccessPointAssociatedDeviceStats"}) {
        SCOPED_TRACE(prefix);
        for (const Object& object : datamodel::objects()) {
            if (std::strcmp(object.prefix, prefix) != 0) {
                continue;
            }
            GuardedBlock context(object.contextSize);
            EXPECT_EQ(object.snapshot(context.get()), 0U);
            EXPECT_EQ(context.bytes(132, object.contextSize - 132), std::string(object.contextSize - 132, '\0'));
        }
    }
}

// --- The one snapshot that fetches a record
// -----------------------------------------------------------------------------

class StationSnapshot : public scripted::PlatformTest {
  protected:
    static void put(std::string& record, std::size_t offset, std::uint32_t value) {
        std::memcpy(record.data() + offset, &value, sizeof value);
    }

    StationSnapshot() {
        std::string record(240, '\0');
        std::memcpy(record.data(), "00:11:22:33:44:55", 17);
        record[98] = 1;
        record[99] = 1;
        put(record, 100, static_cast<std::uint32_t>(-61));
        for (std::size_t offset = 108; offset < 124; offset += 4) {
            put(record, offset, static_cast<std::uint32_t>(offset));
        }
        std::memset(record.data() + 124, 'n', 64);
        for (std::size_t offset = 188; offset < 236; offset += 4) {
            put(record, offset, static_cast<std::uint32_t>(offset));
        }
        platform.setVariableEverywhere("numStations", "1");
        platform.setVariableEverywhere("wlStaInfo_0", record);
    }

    std::uint32_t number(const char* stem) {
        return context.at<std::uint32_t>(datamodel::parameter(stem).offset());
    }

    GuardedBlock context{276};
};

TEST_F(StationSnapshot, TakesTheLockOnceAndCopiesTheRecord) {
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 1, 1), 0U);
    EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), 1U);
    EXPECT_EQ(platform.callCount("QuorvelOsMutexUnlock"), 1U);
    EXPECT_EQ(context.bytes(132, 17), "00:11:22:33:44:55");
    EXPECT_EQ(context.at<std::uint8_t>(149), 1);
    EXPECT_EQ(number("WiFiAccessPointAssociatedDeviceLastDataDownlinkRate"), 108U);
    EXPECT_EQ(number("WiFiAccessPointAssociatedDeviceLastDataUplinkRate"), 112U);
    EXPECT_EQ(static_cast<std::int32_t>(number("WiFiAccessPointAssociatedDeviceSignalStrength")), -61);
    EXPECT_EQ(number("WiFiAccessPointAssociatedDeviceRetransmissions"), 116U);
    EXPECT_EQ(context.at<std::uint8_t>(datamodel::parameter("WiFiAccessPointAssociatedDeviceActive").offset()), 1);
    EXPECT_EQ(number("WiFiAccessPointAssociatedDeviceSnr"), 120U);
    EXPECT_EQ(context.bytes(datamodel::parameter("WiFiAccessPointAssociatedDeviceOperStandard").offset(), 64),
              std::string(64, 'n'));
    EXPECT_EQ(number("WiFiAccessPointAssociatedDeviceOperBandwidth"), 188U);
    const std::uint32_t counters[] = {196, 200, 204, 208 + 212, 216 + 220, 224, 228, 232};
    for (std::size_t i = 0; i < 8; ++i) {
        EXPECT_EQ(context.at<std::uint32_t>(244 + 4 * i), counters[i]) << i;
    }
    EXPECT_TRUE(context.intact());
    EXPECT_TRUE(platform.logged(3, "WiFiAccessPointAssociatedDeviceInstanceGet DONE"));
}

TEST_F(StationSnapshot, ReportsLockImplementationAndUnlockFailures) {
    platform.answer("QuorvelOsMutexLock", 77);
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 1, 1), 77U);
    EXPECT_TRUE(platform.logged(0, "Lock failed, result 77"));
    platform.succeed("QuorvelOsMutexLock");
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 1, 2), 1U);
    EXPECT_TRUE(platform.logged(0, "Impl call failed, result 1"));
    EXPECT_EQ(platform.callCount("QuorvelOsMutexUnlock"), 1U);
    platform.answer("QuorvelOsMutexUnlock", 55);
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 1, 1), 55U);
    EXPECT_TRUE(platform.logged(0, "Unlock failed, result 55"));
}

}  // namespace

}  // namespace quorvel
