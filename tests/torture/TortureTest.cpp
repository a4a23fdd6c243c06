#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "DataModel.h"
#include "FreshProcess.h"
#include "PlatformTest.h"
#include "Preprocessor.h"
#include "QuorvelWiFiExports.h"
#include "Torture.h"
#include "TortureWorld.h"

// Everything that can fail, fails: see torture(). Scenarios are made from the data model, so that a parameter is
// covered by its row.

extern "C" void* qvl_thread_main_loop(void* callback);

// A listener that ends leaves its receive buffer behind, one a registration; that is accepted.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:qvl_thread_main_loop\n";
}

namespace quorvel::torture {

namespace {

using datamodel::Access;
using datamodel::Object;
using datamodel::Parameter;
using datamodel::Type;
using scripted::GuardedBlock;
using scripted::Platform;

constexpr char kMac[] = "00:11:22:33:44:55";

enum class Read { kMapped, kInert, kOther };

// How each parameter is read, from the plug-in's own definitions: what a plain mapped read leaves untouched when it
// fails, and an inert one always.
const std::map<std::string, Read>& reads() {
#define READ_MAPPED Read::kMapped
#define READ_INERT Read::kInert
#define READ_BYPASSED Read::kOther
#define READ_OWN Read::kOther
#define READ_STATION Read::kOther
#define READ_NONE Read::kOther
#define READ_COUNTER Read::kOther
#define READ_RESULT Read::kOther
#define READ_STATION_TEXT Read::kOther
#define READ_STATION_NUMBER Read::kOther
#define PARAMETER(node, name, access, type, accepted, read, ...) {QUORVEL_TEXT(FUNCTION(name, )), READ_##read},
    static const std::map<std::string, Read> all = {
#include "QuorvelWiFiDataModel.def"
    };
#undef PARAMETER
    return all;
}

Platform& platform() {
    return Platform::instance();
}

class Torture : public testing::Test {
  protected:
    ~Torture() override {
        platform().activate(false);
        platform().reset();
    }
};

// One scan, whose results stay with the library from then on.
std::uint32_t scan() {
    GuardedBlock context(192);
    if (const std::uint32_t result = WiFiRadioStatsInitContext(context.get())) {
        return result;
    }
    if (const std::uint32_t result = WiFiRadioStatsDiagnosticsStateSet(context.get(), 1, 2)) {
        return result;
    }
    return WiFiRadioStatsApplyContext(context.get(), 1, 1);
}

// What every scenario starts from: the lock made, two neighbours found.
class Prepared : public Torture {
  protected:
    Prepared() {
        platform().reset();
        makeWorld(platform());
        platform().activate(true);
        EXPECT_EQ(scan(), 0U);
        platform().activate(false);
    }
};

// --- Reads

std::uint32_t lengthOf(const Parameter& parameter) {
    return parameter.type == Type::String ? parameter.capacity : 4;
}

std::uint32_t read(const Parameter& parameter, GuardedBlock& out) {
    if (parameter.access == Access::Station) {
        using StationGet = std::uint32_t (*)(std::uint32_t, const char*, std::int32_t*);
        return reinterpret_cast<StationGet>(parameter.getter)(1, kMac, static_cast<std::int32_t*>(out.get()));
    }
    return parameter.get(1, 1, out.get(), lengthOf(parameter));
}

// Some texts of the manager end one byte behind the length that they are given; a measurement fills its whole record.
std::size_t roomOf(const Parameter& parameter) {
    return parameter.type == Type::String ? parameter.capacity + 1 : 4;
}

std::string untouchedWhenRefused(const Parameter& parameter, const GuardedBlock& out, std::uint32_t result,
                                 const std::string& failing) {
    if (!out.intact()) {
        return "something was written outside the output";
    }
    const auto row = reads().find(parameter.stem);
    const Read how = row == reads().end() ? Read::kOther : row->second;
    const bool refused = failing == "QuorvelOsMutexLock" || failing == "QuorvelOsCreateMutex";
    const bool notRead = how == Read::kMapped && result != 0 && failing != "QuorvelOsMutexUnlock";
    if (!refused && !notRead && how != Read::kInert) {
        return "";
    }
    const std::size_t room = roomOf(parameter);
    const bool untouched = out.bytes(0, room) == std::string(room, static_cast<char>(GuardedBlock::kFill));
    return untouched ? "" : "the output was written, though nothing was read";
}

// --- Transactions

struct Staging {
    std::optional<std::uint32_t> number;
    std::string text;
};

std::uint32_t stage(const Parameter& parameter, void* context, const Staging& value) {
    if (value.number) {
        return parameter.setNumber(context, *value.number);
    }
    return parameter.setText(context, value.text.data(), static_cast<std::uint32_t>(value.text.size()));
}

std::vector<Staging> candidates(const Parameter& parameter) {
    if (parameter.type != Type::String) {
        return {{2U, ""}, {1U, ""}, {parameter.low, ""}, {40U, ""}};
    }
    return {{{}, "54"}, {{}, "12345"}, {{}, "12345678"}, {{}, "1234567890123"}, {{}, kMac}, {{}, std::string(64, 'a')},
            {{}, ""}};
}

class Transaction {
  public:
    explicit Transaction(const Parameter& parameter)
        : parameter_(parameter), object_(parameter.object()), context_(object_.contextSize) {}

    // Finds a value with which the transaction succeeds.
    [[nodiscard]] bool findValue() {
        for (const Staging& candidate : candidates(parameter_)) {
            platform().reset();
            makeWorld(platform());
            platform().activate(true);
            value_ = candidate;
            const bool works = act() == 0;
            platform().activate(false);
            if (works) {
                return true;
            }
        }
        return false;
    }

    std::uint32_t act() {
        context_ = GuardedBlock(object_.contextSize);
        atApply_.reset();
        if (const std::uint32_t result = object_.initContext(context_.get())) {
            return logged(result);
        }
        if (const std::uint32_t result = stage(parameter_, context_.get(), value_)) {
            return result;
        }
        atApply_ = context_.bytes(0, object_.contextSize);
        return object_.apply(context_.get());
    }

    [[nodiscard]] std::string check(std::uint32_t result, const std::string& failing) {
        if (!context_.intact()) {
            return "something was written outside the context";
        }
        if (!atApply_) {
            return result != 0 ? "" : "the transaction ended early without a failure";
        }
        const bool looksAtContext = object_.prefix != std::string("WiFiAccessPointAC");
        const bool refused = failing == "QuorvelOsMutexLock" || (failing == "Quorvel_IsContextInit" && result == 5);
        if (result != 0 && refused && context_.bytes(0, object_.contextSize) != *atApply_) {
            return "an apply that was refused changed the context";
        }
        const bool marked = isMarked();
        if (result == 0 && looksAtContext && failing != "Quorvel_ContextInit" && marked) {
            return "a successful apply left the node marked";
        }
        if (result != 0 && failing == "QuorvelOsMutexUnlock" && Quorvel_IsContextInit(context_.get()) != 0) {
            return "a failed apply took the context's initialisation away";
        }
        return "";
    }

  private:
    // The host's initialisation reports to its caller alone.
    static std::uint32_t logged(std::uint32_t result) {
        Quorvel_LogPrint(0, "", "", 0, "the host could not initialise the context");
        return result;
    }
    [[nodiscard]] bool isMarked() {
        return Quorvel_IsContextSetMap(context_.get(), parameter_.node) != 0;
    }

    const Parameter& parameter_;
    const Object& object_;
    GuardedBlock context_;
    Staging value_;
    std::optional<std::string> atApply_;
};

// --- Events

std::size_t stationsSeen = 0;

std::uint32_t takeStation(std::uint32_t, std::uint32_t, void*) {
    ++stationsSeen;
    return 0;
}

std::string message(std::uint32_t radio, std::uint32_t bss, std::uint32_t event) {
    std::string bytes;
    for (const std::uint32_t word : {radio, bss, event}) {
        bytes.append(reinterpret_cast<const char*>(&word), sizeof word);
    }
    bytes.append(8, '\0');
    if (event == 8) {
        bytes.append(256 - bytes.size(), '\1');
    }
    return bytes;
}

}  // namespace

TEST_F(Prepared, EveryRead) {
    for (const Parameter& parameter : datamodel::parameters()) {
        if (parameter.getter == nullptr) {
            continue;
        }
        auto out = std::make_shared<GuardedBlock>(roomOf(parameter));
        Scenario scenario;
        scenario.name = parameter.getterName();
        scenario.prepare = [out] { *out = GuardedBlock(out->size()); };
        scenario.act = [&parameter, out] { return read(parameter, *out); };
        scenario.check = [&parameter, out](std::uint32_t result, const std::string& failing) {
            return untouchedWhenRefused(parameter, *out, result, failing);
        };
        torture(scenario);
    }
}

TEST_F(Prepared, EveryTransaction) {
    for (const Parameter& parameter : datamodel::parameters()) {
        if (!parameter.staged()) {
            continue;
        }
        Transaction transaction(parameter);
        ASSERT_TRUE(transaction.findValue()) << parameter.setterName() << " takes none of the values tried";
        Scenario scenario;
        scenario.name = "the transaction of " + parameter.setterName();
        scenario.act = [&transaction] { return transaction.act(); };
        scenario.check = [&transaction](std::uint32_t result, const std::string& failing) {
            return transaction.check(result, failing);
        };
        scenario.codes = {0, 1, 5, 6};
        torture(scenario);
    }
}

TEST_F(Prepared, EverySetterThatActsAtOnce) {
    for (const Parameter& parameter : datamodel::parameters()) {
        if (parameter.access == Access::AtOnce) {
            torture({.name = parameter.setterName(), .act = [&parameter] { return parameter.setNumber(nullptr, 2); }});
        } else if (parameter.access == Access::Commit) {
            torture({.name = parameter.setterName(), .act = WiFiCommitSettingsSet});
        }
    }
}

TEST_F(Prepared, EverySnapshot) {
    for (const Object& object : datamodel::objects()) {
        auto context = std::make_shared<GuardedBlock>(object.contextSize);
        Scenario scenario;
        scenario.name = object.function("InstanceGet");
        scenario.prepare = [&object, context] { *context = GuardedBlock(object.contextSize); };
        scenario.act = [&object, context] { return object.snapshot(context->get()); };
        scenario.check = [context](std::uint32_t, const std::string&) {
            return std::string(context->intact() ? "" : "something was written outside the context");
        };
        torture(scenario);
    }
}

TEST_F(Prepared, EveryReadWithoutARow) {
    struct Accessor {
        const char* name;
        std::size_t size;
        std::uint32_t (*call)(void* out);
    };
    static constexpr Accessor kAccessors[] = {
        {"WiFiRadioChannelStatsGet2", 24, [](void* out) { return WiFiRadioChannelStatsGet2(1, out, 24); }},
        {"WiFiAccessPointRxStatsResultGet", 8,
         [](void* out) { return WiFiAccessPointRxStatsResultGet(1, kMac, 1, 2, static_cast<std::uint64_t*>(out)); }},
        {"WiFiAccessPointTxStatsResultGet", 8,
         [](void* out) { return WiFiAccessPointTxStatsResultGet(1, kMac, 1, 2, static_cast<std::uint64_t*>(out)); }},
        {"WiFiAccessPointStatsGet", 1032,
         [](void* out) {
             return WiFiAccessPointStatsGet(1, kMac, static_cast<char*>(out) + 8, static_cast<std::uint64_t*>(out));
         }},
        {"WiFiAccessPointSsidNameStatusGet", 1024, [](void* out) { return WiFiAccessPointSsidNameStatusGet(1, out); }},
        {"WiFiAccessPointMacModeGet", 4,
         [](void* out) { return WiFiAccessPointMacModeGet(1, static_cast<std::uint32_t*>(out)); }},
        {"Quorvel_P_WiFiGetTimeElapseFromStartTime", 4,
         [](void* out) { return Quorvel_P_WiFiGetTimeElapseFromStartTime(1, static_cast<std::uint32_t*>(out)); }},
    };
    for (const Accessor& accessor : kAccessors) {
        auto out = std::make_shared<GuardedBlock>(accessor.size);
        Scenario scenario;
        scenario.name = accessor.name;
        scenario.prepare = [out] { *out = GuardedBlock(out->size()); };
        scenario.act = [&accessor, out] { return accessor.call(out->get()); };
        scenario.check = [out](std::uint32_t, const std::string&) {
            return std::string(out->intact() ? "" : "something was written outside the output");
        };
        torture(scenario);
    }
}

TEST_F(Prepared, EverySystemOperation) {
    const std::vector<std::pair<const char*, std::uint32_t (*)()>> operations = {
        {"WiFiSystemInit", WiFiSystemInit},
        {"WiFiSystemStartStopSecurityDaemons", [] { return WiFiSystemStartStopSecurityDaemons(1, 0); }},
        {"WiFiSystemReset", WiFiSystemReset},
        {"WiFiSystemResetToFactory", WiFiSystemResetToFactory},
        {"WiFiSystemRadioInit", [] { return WiFiSystemRadioInit(1); }},
        {"WiFiSystemResetRadioToFactory", [] { return WiFiSystemResetRadioToFactory(1); }},
        {"WiFiSystemResetRadiosToFactory", WiFiSystemResetRadiosToFactory},
        {"WiFiSystemResetAccessPointToFactory", [] { return WiFiSystemResetAccessPointToFactory(1); }},
        {"WiFiSystemAccessPointDelete and Create",
         [] {
             const std::uint32_t gone = WiFiSystemAccessPointDelete(8);
             return gone != 0 ? gone : WiFiSystemAccessPointCreate(1, 8);
         }},
        {"Quorvel_P_WiFiLaunchWldaemon", Quorvel_P_WiFiLaunchWldaemon},
        {"Quorvel_P_WiFiTerminateWldaemon", Quorvel_P_WiFiTerminateWldaemon},
        {"Quorvel_P_WiFiSetCurrentTimeAsStartTime", [] { return Quorvel_P_WiFiSetCurrentTimeAsStartTime(1); }},
        {"WiFiLock and WiFiUnlock",
         [] {
             const std::uint32_t locked = WiFiLock();
             return locked != 0 ? locked : WiFiUnlock();
         }},
    };
    for (const auto& [name, operation] : operations) {
        Scenario scenario;
        scenario.name = name;
        scenario.act = operation;
        scenario.tellsNobody =
            operation == Quorvel_P_WiFiTerminateWldaemon || name == std::string("WiFiLock and WiFiUnlock");
        torture(scenario);
    }
}

TEST_F(Prepared, TheSystemObject) {
    auto context = std::make_shared<GuardedBlock>(QUORVEL_CONTEXT_HEADER_SIZE);
    Scenario scenario;
    scenario.name = "the system object's transaction";
    scenario.prepare = [context] { *context = GuardedBlock(QUORVEL_CONTEXT_HEADER_SIZE); };
    scenario.act = [context] {
        const std::uint32_t result = WiFiSystemInitContext(context->get());
        if (result != 0) {
            Quorvel_LogPrint(0, "", "", 0, "the host could not initialise the context");
            return result;
        }
        (void)WiFiSystemCheckContextNodeSet(context->get(), 0);
        return WiFiSystemApplyContext(context->get());
    };
    scenario.check = [context](std::uint32_t, const std::string&) {
        return std::string(context->intact() ? "" : "something was written outside the context");
    };
    scenario.codes = {0, 1, 5, 6};
    torture(scenario);
}

TEST_F(Prepared, TheSave) {
    Scenario scenario;
    scenario.name = "WifiSaveNvram";
    scenario.act = WifiSaveNvram;
    scenario.keepsLockWhenFailing = true;
    torture(scenario);
}

TEST_F(Prepared, StartUpAndShutDown) {
    torture({.name = "WiFiInit", .act = WiFiInit});
    Scenario shutDown;
    shutDown.name = "WiFiUnInit";
    shutDown.prepare = [] { EXPECT_EQ(scan(), 0U); };
    shutDown.act = [] { return static_cast<std::uint32_t>(WiFiUnInit()); };
    torture(shutDown);
}

TEST_F(Prepared, TheScan) {
    bool intact = true;
    Scenario scenario;
    scenario.name = "a neighbour scan and its results";
    scenario.act = [&intact] {
        if (const std::uint32_t result = scan()) {
            if (platform().logTexts(0).empty()) {
                Quorvel_LogPrint(0, "", "", 0, "the host could not initialise the context");
            }
            return result;
        }
        std::uint32_t count = 0;
        if (const std::uint32_t result = WiFiRadioStatsNeighboringWiFiDiagnosticResultNumberOfEntriesGet(1, &count)) {
            return result;
        }
        for (std::uint32_t n = 1; n <= count; ++n) {
            GuardedBlock result(1092);
            const std::uint32_t code = WiFiNeighboringDiagnosticsResultInstanceGet(result.get(), n);
            if (code != 0) {
                return code;
            }
            intact = intact && result.intact();
        }
        return std::uint32_t{0};
    };
    scenario.check = [&intact](std::uint32_t result, const std::string& failing) {
        if (failing == "calloc" && result != 0) {
            return std::string("without room for results, results are announced");
        }
        return std::string(intact ? "" : "something was written outside a result");
    };
    scenario.codes = {0, 1, 5, 6};
    torture(scenario);
}

TEST_F(Prepared, EveryFileAndCommandThatEndsEarly) {
    struct Text {
        const char* path;
        bool command;
    };
    static constexpr Text kTexts[] = {{"/tmp/i2cget", false},          {"/tmp/lspci", false},
                                      {"/var/wl0_scanresults", false}, {"/proc/net/dev", false},
                                      {"wl -i wl0 counters", true},    {"wl -i wl0 status", true},
                                      {"wl -i wl0 macmode", true}};
    static constexpr char kOutput[] = "2 txframe 1 txbyte 2 txerror 3\nnoise: -90 dBm\n";
    for (const Text& text : kTexts) {
        platform().reset();
        makeWorld(platform());
        const std::string whole = text.command ? kOutput : platform().file(text.path).value_or("");
        for (std::size_t length = 0; length < whole.size(); ++length) {
            Scenario scenario;
            scenario.name = std::string(text.path) + " ending after " + std::to_string(length) + " bytes";
            scenario.resultIsNoCode = true;
            scenario.act = [&text, &whole, length] {
                const std::string cut = whole.substr(0, length);
                if (text.command) {
                    platform().setCommandOutput(text.path, cut);
                } else {
                    platform().setFile(text.path, cut);
                }
                std::uint32_t number = 0;
                std::int32_t noise = 0;
                const std::uint32_t results[] = {WiFiInit(),
                                                 scan(),
                                                 WiFiRadioStatsBytesSentGet(1, &number),
                                                 WiFiRadioStatsNoiseGet(1, &noise),
                                                 WiFiRadioStatsDiscardPacketsSentGet(1, &number),
                                                 WiFiAccessPointMacModeGet(1, &number),
                                                 WiFiSSIDStatsBytesSentGet(1, &number)};
                return *std::max_element(std::begin(results), std::end(results));
            };
            scenario.check = [](std::uint32_t highest, const std::string&) {
                return std::string(highest <= 1 ? "" : "a cut text is no failure, or code 1");
            };
            runOnce(scenario);
        }
    }
}

TEST_F(Prepared, TheEventBurst) {
    Scenario scenario;
    scenario.name = "a burst of events";
    scenario.prepare = [] {
        stationsSeen = 0;
        platform().scriptReads({{message(0, 0, 12) + message(1, 2, 8), 0, 0},
                                {"", 0, 0},
                                {message(2, 7, 8).substr(0, 100), 0, 0},
                                {message(0, 1, 12), 0, 0}});
    };
    scenario.act = [] {
        platform().runInThread(qvl_thread_main_loop, reinterpret_cast<void*>(takeStation));
        return WiFiNewAPAssociatedDeviceCallbackDeRegister();
    };
    scenario.check = [](std::uint32_t, const std::string& failing) {
        if (failing == "socket" || failing == "connect" || failing == "calloc") {
            return std::string(stationsSeen == 0 ? "" : "a listener without socket or buffer told of a station");
        }
        const std::size_t expected = failing == "read" ? stationsSeen : 3;
        return std::string(stationsSeen == expected ? "" : "stations are missing");
    };
    scenario.askedForEver = {"read"};
    torture(scenario);
}

TEST_F(Prepared, RegistrationAndDeregistration) {
    Scenario scenario;
    scenario.name = "registration and deregistration";
    scenario.prepare = [] { platform().scriptReads({{message(0, 0, 12), 0, 0}}); };
    scenario.act = [] {
        const std::uint32_t result = WiFiNewAPAssociatedDeviceCallbackRegister(takeStation);
        // The thread ends by itself when the reads are used up, or where it fails.
        platform().endThreads();
        const std::uint32_t gone = WiFiNewAPAssociatedDeviceCallbackDeRegister();
        return result != 0 ? result : gone;
    };
    torture(scenario);
}

TEST(FirstUse, OfTheLockFailsWithItsCreation) {
    EXPECT_TRUE(scripted::runFresh([] {
        makeWorld(platform());
        std::uint32_t out = 77;
        platform().failAt("QuorvelOsCreateMutex", 1);
        EXPECT_EQ(WiFiRadioChannelGet(1, &out), 1U);
        EXPECT_EQ(out, 77U);
        EXPECT_EQ(platform().callCount("QuorvelOsMutexLock"), 0U);
        EXPECT_EQ(platform().callCount("wlcsm_mngr_get"), 0U);
        EXPECT_FALSE(platform().logTexts(0).empty());
        EXPECT_EQ(WiFiRadioChannelGet(1, &out), 0U);
        EXPECT_EQ(platform().callCount("QuorvelOsCreateMutex"), 2U);
    }));
}

namespace {

class Report : public testing::Environment {
  public:
    void TearDown() override {
        (void)std::printf("torture: %zu scenarios, %zu calls made to fail, %zu runs\n", figures().scenarios,
                          figures().calls, figures().runs);
    }
};
[[maybe_unused]] const testing::Environment* const report = testing::AddGlobalTestEnvironment(new Report);

}  // namespace

}  // namespace quorvel::torture
