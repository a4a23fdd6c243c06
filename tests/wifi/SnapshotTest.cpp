#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "tests/wifi/AllReadsSucceed.h"
#include "tests/wifi/DataModel.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiNeighboringDiagnosticsResultImpl.h"
#include "wifi/model/Contexts.h"

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

// The calls of the snapshot, in order: the getters of all readable parameters that take no station.
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
            scripted::letAllReadsSucceed(platform);
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

TEST_F(Snapshot, IsAnnouncedThenInitialisesThenReads) {
    forEach([this](const Object& object) {
        GuardedBlock context(object.contextSize);
        (void)object.snapshot(context.get());
        EXPECT_EQ(platform.callTexts({"Quorvel_ContextInit", "Quorvel_ContextZeroSetMap", "Quorvel_ContextSetMap",
                                      "Quorvel_ContextClearMap"}),
                  Texts{"Quorvel_ContextInit(ctx, " + std::to_string(object.contextSize) + ")"});
        const scripted::Call init = platform.calls().front();
        EXPECT_EQ(init.name, "Quorvel_ContextInit");
        std::size_t before = 0;
        for (const auto& line : platform.logs()) {
            before += line.order < init.order ? 1 : 0;
        }
        EXPECT_EQ(before, filterTable(object) ? 0U : 1U);
        if (!filterTable(object)) {
            EXPECT_EQ(platform.logs().front().text, object.function("InstanceGet Enter"));
        }
        EXPECT_EQ(platform.logs().back().function, object.function("InstanceGet"));
    });
}

TEST_F(Snapshot, LeavesNoNodePending) {
    forEach([](const Object& object) {
        GuardedBlock context(object.contextSize);
        ASSERT_EQ(object.initContext(context.get()), 0U);
        for (std::uint32_t node = 0; node <= object.nodeLimit; ++node) {
            ASSERT_EQ(Quorvel_ContextSetMap(context.get(), node), 0U);
        }
        (void)object.snapshot(context.get());
        EXPECT_EQ(Quorvel_IsContextInit(context.get()), 0U);
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

// For each failing getter: the fields before it are filled, the fields behind it keep their initial value.
TEST_F(Snapshot, KeepsWhatItReadBeforeAnyFailure) {
    forEach([this](const Object& object) {
        if (oneFetch(object) || neighbouring(object)) {
            return;
        }
        GuardedBlock whole(object.contextSize);
        ASSERT_EQ(object.snapshot(whole.get()), 0U);
        const std::vector<Parameter> read = readParameters(object);
        for (std::uint32_t failing = 1; failing <= read.size(); ++failing) {
            SCOPED_TRACE(read[failing - 1].getterName());
            platform.forget();
            platform.succeed("QuorvelOsMutexLock");
            platform.answerAt("QuorvelOsMutexLock", failing, 71);
            GuardedBlock context(object.contextSize);
            EXPECT_EQ(object.snapshot(context.get()), 71U);
            std::string expected(object.contextSize, '\0');
            for (std::uint32_t n = 0; n + 1 < failing; ++n) {
                const std::size_t offset = read[n].offset();
                expected.replace(offset, read[n].width(), whole.bytes(offset, read[n].width()));
            }
            EXPECT_TRUE(context.bytes(132, object.contextSize - 132) == expected.substr(132));
            EXPECT_EQ(platform.callCount("QuorvelOsMutexLock"), failing);
            EXPECT_EQ(ownLines(object).back(),
                      filterTable(object) ? "0 Impl call failed, result 71" : "0 Get failed, result 71");
            EXPECT_TRUE(context.intact());
        }
    });
}

TEST_F(Snapshot, DropsAValueWhoseGetterFailedAfterReadingIt) {
    scripted::letAllReadsSucceed(platform);
    for (const std::uint32_t failing : {1U, 2U}) {
        platform.forget();
        platform.succeed("QuorvelOsMutexUnlock");
        platform.answerAt("QuorvelOsMutexUnlock", failing, 55);
        GuardedBlock context(344);
        EXPECT_EQ(WiFiSSIDInstanceGet(context.get(), 1), 55U);
        EXPECT_EQ(context.at<std::uint8_t>(132), failing - 1);
        EXPECT_EQ(context.bytes(133, 344 - 133), std::string(344 - 133, '\0'));
        EXPECT_TRUE(platform.logged(0, "Get failed, result 55"));
    }
}

TEST_F(Snapshot, ReadsItsOwnInstance) {
    const std::pair<std::uint32_t (*)(void*, std::uint32_t), std::uint32_t> snapshots[] = {
        {WiFiRadioInstanceGet, 2},
        {WiFiSSIDInstanceGet, 11},
        {WiFiAccessPointInstanceGet, 11},
        {WiFiAccessPointAccessPointControlFilterTableInstanceGet, 11},
        {WiFiAccessPointSecurityInstanceGet, 11},
        {WiFiAccessPointWPSInstanceGet, 11},
    };
    for (const auto& [snapshot, instance] : snapshots) {
        platform.reset();
        scripted::letAllReadsSucceed(platform);
        GuardedBlock context(sizeof(WiFiRadioContext));
        EXPECT_EQ(snapshot(context.get(), instance), 0U);
        std::size_t reads = 0;
        for (const auto& call : platform.calls()) {
            if (call.name == "wlcsm_mngr_get" || call.name == "wlcsm_mngr_ext_get") {
                EXPECT_EQ(call.arguments.rfind("1, ", 0), 0U) << call.text();
                ++reads;
            }
        }
        EXPECT_GT(reads, 0U);
    }
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
    scripted::letAllReadsSucceed(platform);
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

// The snapshot passes a buffer of exactly the minimum, so the getter cuts a longer text to leave room for the NUL.
TEST_F(Snapshot, GivesEachTextGetterItsMinimum) {
    const std::map<std::string, Texts> variables = {
        {"WiFi", {"wlBridgeInfo"}},
        {"WiFiRadio",
         {"rAlias", "name", "wlFreqBands", "supportedStandards", "operatingStandards", "guardInterval",
          "transmitPowerSupported", "radarThreshold", "wlPreambleType", "wlAcsExclChannels", "wlAmsdu"}},
        {"WiFiSSID", {"status", "sAlias", "name", "wlBssid", "wlSsid"}},
        {"WiFiAccessPoint", {"status", "apAlias", "SSIDReference"}},
        {"WiFiAccessPointAccessPointControlFilterTable", {"wlFltMacList"}},
        {"WiFiAccessPointSecurity",
         {"modesSupported", "wlKey1", "wlWpaPsk", "wlRadiusServerIP", "secondaryRadiusServerIPAddr", "wlRadiusKey",
          "secondaryRadiusSecret", "wlKey2", "wlKey3", "wlKey4"}},
        {"WiFiAccessPointWPS", {"configMethodsSupported", "configMethodsEnabled", "wlWscDevPin", "wlWscStaPin"}},
    };
    forEach([this, &variables](const Object& object) {
        const auto found = variables.find(object.prefix);
        if (found == variables.end()) {
            return;
        }
        std::size_t expected = found->second.size();
        for (const std::string& variable : found->second) {
            platform.setVariableEverywhere(variable, std::string(1000, 'x'));
            expected += variable == "wlWpaPsk" ? 2 : 0;  // read for three parameters
        }
        GuardedBlock context(object.contextSize);
        ASSERT_EQ(object.snapshot(context.get()), 0U);
        std::size_t cut = 0;
        for (const Parameter& parameter : readParameters(object)) {
            if (parameter.type != Type::String || context.bytes(parameter.offset(), 2) != "xx") {
                continue;
            }
            ++cut;
            EXPECT_EQ(context.bytes(parameter.offset(), parameter.capacity),
                      std::string(parameter.capacity - 1, 'x') + '\0')
                << parameter.stem;
        }
        EXPECT_EQ(cut, expected);
        EXPECT_TRUE(context.intact());
    });
}

// A binary record is copied like any text: up to its first zero.
TEST_F(Snapshot, TakesARecordForTheTextThatItBeginsWith) {
    scripted::letAllReadsSucceed(platform);
    platform.setRecord("wlcsm_mngr_channelstats", "\x24\x01" + std::string(2, '\0') + "\x07" + std::string(75, '\0'));
    GuardedBlock context(sizeof(WiFiRadioContext));
    ASSERT_EQ(WiFiRadioInstanceGet(context.get(), 1), 0U);
    EXPECT_EQ(context.bytes(datamodel::parameter("WiFiRadioChannelStats").offset(), 2048),
              "\x24\x01" + std::string(2046, '\0'));
}

TEST_F(Snapshot, PutsNothingOfAnotherRecordBehindOneWithoutAZero) {
    scripted::letAllReadsSucceed(platform);
    platform.setRecord("wlcsm_mngr_chanim_stats", std::string(1056, '\x55'));
    platform.setRecord("wlcsm_mngr_channelstats", std::string(80, '\x07'));
    GuardedBlock context(sizeof(WiFiRadioContext));
    ASSERT_EQ(WiFiRadioInstanceGet(context.get(), 1), 0U);
    EXPECT_EQ(context.bytes(datamodel::parameter("WiFiRadioDcsChannelMetrics").offset(), 1024),
              std::string(1024, '\x55'));
    EXPECT_EQ(context.bytes(datamodel::parameter("WiFiRadioChannelStats").offset(), 2048),
              std::string(80, '\x07') + std::string(1968, '\0'));
}

TEST_F(Snapshot, DoesNotLookAtTheResultOfInitialising) {
    scripted::letAllReadsSucceed(platform);
    GuardedBlock context(140);
    platform.answer("Quorvel_ContextInit", 9);
    EXPECT_EQ(WiFiAccessPointAirtimeSchedulerInstanceGet(context.get()), 0U);
}

TEST_F(Snapshot, DoesNotRefuseToReadIntoNothing) {
    scripted::letAllReadsSucceed(platform);
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

TEST_F(Snapshot, OfANeighbourHoldsItsResult) {
    NeighboringWiFiResult* results = nullptr;
    ASSERT_EQ(WiFiNeighboringDiagnosticsResultInit(0, 1, &results), 0U);
    radioDiagnostics[0].resultNumberOfEntries = 1;
    std::memset(results, 'r', sizeof *results);
    results->mode = 1;
    results->channel = 2;
    results->signalStrength = -3;
    results->securityModeEnabled = 4;
    results->encryptionMode = 5;
    results->operatingFrequencyBand = 6;
    results->operatingChannelBandwidth = 7;
    results->beaconPeriod = 8;
    results->noise = -9;
    results->dtimPeriod = 10;
    results->qbssUtilization = 11;
    GuardedBlock context(1092);
    EXPECT_EQ(WiFiNeighboringDiagnosticsResultInstanceGet(context.get(), 1), 0U);
    std::string expected;
    const auto text = [&expected](std::size_t length) { expected.append(length, 'r'); };
    const auto number = [&expected](std::int32_t value) {
        expected.append((4 - expected.size() % 4) % 4, '\0');
        expected.append(reinterpret_cast<const char*>(&value), sizeof value);
    };
    text(32);
    text(32);
    text(17);
    for (const std::int32_t value : {1, 2, -3, 4, 5, 6}) {
        number(value);
    }
    text(64);
    text(256);
    for (const std::int32_t value : {7, 8, -9}) {
        number(value);
    }
    text(256);
    text(256);
    number(10);
    number(11);
    EXPECT_EQ(context.bytes(132, 1092 - 132), expected);
    EXPECT_TRUE(context.intact());
    EXPECT_EQ(entered().size(), 18U);
    EXPECT_EQ(WiFiNeighboringDiagnosticsResultInstanceGet(context.get(), 2), 1U);
    EXPECT_TRUE(platform.logged(0, "Get failed, result 1"));
    radioDiagnostics[0].resultNumberOfEntries = 0;
    WiFiNeighboringDiagnosticsResultUnInit();
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

TEST_F(StationSnapshot, IsAllZerosForAStationThatLeftMeanwhile) {
    platform.setVariableEverywhere("numStations", "2");
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 1, 2), 0U);
    EXPECT_EQ(context.bytes(132, 144), std::string(144, '\0'));
}

TEST_F(StationSnapshot, LogsInitialisesAndLocksInOrder) {
    const auto sequence = [this] {
        std::map<std::uint64_t, std::string> ordered;
        for (const auto& line : platform.logs()) {
            if (line.function == "WiFiAccessPointAssociatedDeviceInstanceGet") {
                ordered[line.order] = line.text;
                EXPECT_EQ(line.file, "wifi/QuorvelWiFiAccessPointAssociatedDevice");
            }
        }
        for (const auto& call : platform.calls()) {
            if (call.name.rfind("Quorvel", 0) == 0 && call.name != "QuorvelOsCreateMutex") {
                ordered[call.order] = call.text();
            }
        }
        Texts steps;
        for (const auto& step : ordered) {
            steps.push_back(step.second);
        }
        platform.forget();
        return steps;
    };
    const std::string enter = "WiFiAccessPointAssociatedDeviceInstanceGet Enter";
    const std::string init = "Quorvel_ContextInit(ctx, 276)";
    const std::string lock = "QuorvelOsMutexLock(\"WiFi\")";
    const std::string unlock = "QuorvelOsMutexUnlock(\"WiFi\")";
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 1, 1), 0U);
    EXPECT_EQ(sequence(), (Texts{enter, init, lock, unlock, "WiFiAccessPointAssociatedDeviceInstanceGet DONE"}));
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 1, 2), 1U);
    EXPECT_EQ(sequence(), (Texts{enter, init, lock, "Impl call failed, result 1", unlock}));
    EXPECT_EQ(context.bytes(132, 144), std::string(144, '\0'));
    platform.answer("QuorvelOsMutexLock", 77);
    EXPECT_EQ(WiFiAccessPointAssociatedDeviceInstanceGet(context.get(), 1, 1), 77U);
    EXPECT_EQ(sequence(), (Texts{enter, init, lock, "Lock failed, result 77"}));
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
