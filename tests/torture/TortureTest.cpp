#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/torture/Torture.h"
#include "tests/torture/TortureWorld.h"
#include "tests/wifi/BridgeRow.h"
#include "tests/wifi/DataModel.h"
#include "tests/wifi/platform/FreshProcess.h"
#include "tests/wifi/platform/PlatformTest.h"
#include "wifi/QuorvelWiFiExports.h"

// Fails every call that can fail: see torture(). The data model gives the scenarios, so that each parameter is
// covered by its row.

extern "C" void* qvl_thread_main_loop(void* callback);

namespace quorvel::torture {

namespace {

using datamodel::Access;
using datamodel::Object;
using datamodel::Parameter;
using datamodel::Type;
using scripted::GuardedBlock;
using scripted::Platform;

constexpr char kMac[] = "00:11:22:33:44:55";

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

// The start of every scenario: the lock exists and a scan has found two neighbours.
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
    switch (parameter.type) {
        case Type::String:
            return parameter.capacity + 1;
        case Type::Boolean:
            return 1;
        case Type::UnsignedInt:
        case Type::Int:
            break;
    }
    return 4;
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

// Effects of an object's own apply before the bridge: marks that it takes away, and fields that it rewrites.
struct OwnSteps {
    const char* prefix;
    std::set<std::uint32_t> marks;
    std::set<std::uint32_t> fields;
};

const OwnSteps& ownStepsOf(const Object& object) {
    static const OwnSteps none = {"", {}, {}};
    static const std::vector<OwnSteps> all = {
        {"WiFi", {9}, {}},
        {"WiFiRadio", {15, 44, 51, 53, 54, 55, 61, 62}, {19, 37, 38, 48, 49}},
        {"WiFiAccessPointSecurity", {1, 3}, {3}},
        {"WiFiAccessPointWPS", {1, 7, 9}, {}},
    };
    const auto found = std::find_if(all.begin(), all.end(), [&object](const OwnSteps& steps) {
        return steps.prefix == std::string(object.prefix);
    });
    return found == all.end() ? none : *found;
}

// Initialise, set, apply: one object, with any steps of staging between.
class Transaction {
  public:
    using Step = std::function<std::uint32_t(void* context)>;

    Transaction(const Object& object, std::vector<Step> steps)
        : object_(object), steps_(std::move(steps)), context_(object.contextSize) {}

    std::uint32_t act() {
        context_ = GuardedBlock(object_.contextSize);
        before_ = bytes();
        atApply_.reset();
        if (const std::uint32_t result = object_.initContext(context_.get())) {
            return result;
        }
        fresh_ = bytes();
        for (const Step& step : steps_) {
            before_ = bytes();
            if (const std::uint32_t result = step(context_.get())) {
                return result;
            }
        }
        atApply_ = bytes();
        return object_.apply(context_.get());
    }

    [[nodiscard]] std::string check(const Aftermath& aftermath) const {
        if (!context_.intact()) {
            return "something was written outside the context";
        }
        const bool alwaysTheSame = object_.prefix == std::string("WiFiAccessPointAC");
        if (!atApply_) {
            return bytes() == before_ ? "" : "what was refused changed the context";
        }
        const Failure* fatal = aftermath.fatal();
        const bool refused = fatal != nullptr &&
                             (fatal->call.name == "QuorvelOsMutexLock" || fatal->call.name == "Quorvel_IsContextInit");
        if (refused || alwaysTheSame) {
            return bytes() == *atApply_ ? "" : "the context was changed";
        }
        if (fatal == nullptr && !initialisationFailed(aftermath)) {
            return bytes() == fresh_ ? "" : "the context is not as after its initialisation";
        }
        return wrongInWhatWasKept(aftermath);
    }

  private:
    static bool initialisationFailed(const Aftermath& aftermath) {
        return aftermath.failed("Quorvel_ContextInit");
    }

    [[nodiscard]] std::string bytes() const {
        return context_.bytes(0, object_.contextSize);
    }

    // Values and marks outlive an apply that was not completed, but for what the object's own steps had done by then.
    [[nodiscard]] std::string wrongInWhatWasKept(const Aftermath& aftermath) const {
        const OwnSteps& own = ownStepsOf(object_);
        const Failure* fatal = aftermath.fatal();
        const bool endedEarly = fatal != nullptr && fatal->call.name != "QuorvelOsMutexUnlock";
        GuardedBlock kept(object_.contextSize);
        kept.write(0, *atApply_);
        for (const std::uint32_t node : own.marks) {
            const std::string text = "ctx, " + std::to_string(node);
            const bool stays =
                std::any_of(aftermath.failures.begin(), aftermath.failures.end(), [&text](const Failure& failure) {
                    return failure.call.name == "Quorvel_ContextClearMap" && failure.call.arguments == text;
                });
            if (!endedEarly && !stays) {
                (void)Quorvel_ContextClearMap(kept.get(), node);
            }
        }
        if (context_.bytes(0, QUORVEL_CONTEXT_HEADER_SIZE) != kept.bytes(0, QUORVEL_CONTEXT_HEADER_SIZE)) {
            return "the marks are not what they must be";
        }
        for (const Parameter& parameter : datamodel::parametersOf(object_.prefix)) {
            const std::string field = context_.bytes(parameter.offset(), parameter.width());
            if (own.fields.count(parameter.node) == 0 && field != kept.bytes(parameter.offset(), parameter.width())) {
                return std::string("the value of ") + parameter.name + " is not what was staged";
            }
        }
        return "";
    }

    const Object& object_;
    std::vector<Step> steps_;
    GuardedBlock context_;
    std::string before_;
    std::string fresh_;
    std::optional<std::string> atApply_;
};

void addSteps(const Parameter& parameter, const Staging& value, std::vector<Transaction::Step>& steps) {
    // ButtonPush needs a method.
    if (parameter.name == std::string("ButtonPush")) {
        steps.emplace_back([](void* context) { return WiFiAccessPointWPSMethodSet(context, 1, "PushButton", 10); });
    }
    steps.emplace_back([&parameter, value](void* context) { return stage(parameter, context, value); });
}

// The first value with which a transaction of this parameter alone succeeds.
std::optional<Staging> workingValue(const Parameter& parameter) {
    for (const Staging& candidate : candidates(parameter)) {
        platform().reset();
        makeWorld(platform());
        platform().activate(true);
        std::vector<Transaction::Step> steps;
        addSteps(parameter, candidate, steps);
        Transaction transaction(parameter.object(), steps);
        const bool works = transaction.act() == 0;
        platform().activate(false);
        if (works) {
            return candidate;
        }
    }
    return std::nullopt;
}

void torture(const std::string& name, const Object& object, const std::vector<Transaction::Step>& steps) {
    Transaction transaction(object, steps);
    Scenario scenario;
    scenario.name = name;
    // A scan replaces the results of one before.
    if (object.prefix == std::string("WiFiRadioStats")) {
        scenario.prepare = [] { EXPECT_EQ(scan(), 0U); };
    }
    scenario.act = [&transaction] { return transaction.act(); };
    scenario.check = [&transaction](const Aftermath& aftermath) { return transaction.check(aftermath); };
    torture(scenario);
}

// --- Snapshots

// A whole instance, field by field, against what the success path put there.
class Snapshot {
  public:
    explicit Snapshot(const Object& object) : object_(object), context_(object.contextSize) {}

    std::uint32_t act() {
        context_ = GuardedBlock(object_.contextSize);
        return object_.snapshot(context_.get());
    }

    [[nodiscard]] std::string check(const Aftermath& aftermath) {
        if (!context_.intact()) {
            return "something was written outside the context";
        }
        if (aftermath.succeeded) {
            success_ = context_.bytes(0, object_.contextSize);
        }
        const bool cleared = !aftermath.failed("Quorvel_ContextInit");
        const char blank = cleared ? '\0' : static_cast<char>(GuardedBlock::kFill);
        const std::string header = context_.bytes(0, QUORVEL_CONTEXT_HEADER_SIZE);
        if (header != (cleared ? success_.substr(0, QUORVEL_CONTEXT_HEADER_SIZE)
                               : std::string(QUORVEL_CONTEXT_HEADER_SIZE, blank))) {
            return "a node is marked";
        }
        const Failure* fatal = aftermath.fatal();
        // A snapshot that is one read leaves no field.
        bool ended = fatal != nullptr && fatal->function == object_.function("InstanceGet");
        for (const Parameter& parameter : datamodel::parametersOf(object_.prefix)) {
            if (parameter.getter == nullptr || parameter.access == Access::Station) {
                continue;
            }
            ended = ended || (fatal != nullptr && fatal->function == parameter.getterName());
            const std::string field = context_.bytes(parameter.offset(), parameter.width());
            const std::string filled = success_.substr(parameter.offset(), parameter.width());
            // A text leaves the bytes behind it unchanged.
            const bool asEver = parameter.type == Type::String
                                    ? field.compare(0, filled.find('\0'), filled, 0, filled.find('\0')) == 0
                                    : field == filled;
            if (ended ? field != std::string(parameter.width(), blank) : !asEver && !concerns(aftermath, parameter)) {
                return std::string(parameter.name) + " is not what it must be";
            }
        }
        return "";
    }

  private:
    // Whether something failed on the way to this parameter's value, or of all of them at once.
    [[nodiscard]] bool concerns(const Aftermath& aftermath, const Parameter& parameter) const {
        return std::any_of(aftermath.failures.begin(), aftermath.failures.end(), [&](const Failure& failure) {
            const bool initialisation = failure.call.name == "Quorvel_ContextInit";
            return failure.function == parameter.getterName() ||
                   (!initialisation && failure.function == object_.function("InstanceGet"));
        });
    }

    const Object& object_;
    GuardedBlock context_;
    std::string success_;
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
        Scenario scenario;
        scenario.name = parameter.getterName();
        scenario.output = std::make_shared<GuardedBlock>(roomOf(parameter));
        scenario.outputKind = parameter.type == Type::String ? OutputKind::Text : OutputKind::Number;
        // The station list is appended to what the caller has.
        if (parameter.name == std::string("AssociatedDeviceMacList")) {
            scenario.outputBegin = std::string(1, '\0');
        }
        scenario.act = [&parameter, out = scenario.output] { return read(parameter, *out); };
        torture(scenario);
    }
}

TEST_F(Prepared, EveryTransaction) {
    for (const Parameter& parameter : datamodel::parameters()) {
        if (!parameter.staged()) {
            continue;
        }
        const std::optional<Staging> value = workingValue(parameter);
        ASSERT_TRUE(value) << parameter.setterName() << " takes none of the values tried";
        std::vector<Transaction::Step> steps;
        addSteps(parameter, *value, steps);
        torture("the transaction of " + parameter.setterName(), parameter.object(), steps);
    }
}

// All of an object, staged and applied together, without the node that leaves the others unapplied.
TEST_F(Prepared, EveryObjectAsAWhole) {
    for (const Object& object : datamodel::objects()) {
        const std::vector<Parameter> parameters = datamodel::parametersOf(object.prefix);
        std::vector<Transaction::Step> steps;
        for (const Parameter& parameter : parameters) {
            if (parameter.staged() && parameter.name != std::string("Restart")) {
                const Staging value = workingValue(parameter).value_or(Staging{});
                addSteps(parameter, value, steps);
            }
        }
        torture("the transaction of all of " + object.function(""), object, steps);
    }
}

TEST_F(Prepared, EveryObjectWithNothingStaged) {
    for (const Object& object : datamodel::objects()) {
        torture("the empty transaction of " + object.function(""), object, {});
        auto context = std::make_shared<GuardedBlock>(object.contextSize);
        Scenario scenario;
        scenario.name = object.function("CheckContextNodeSet");
        scenario.prepare = [&object, context] { EXPECT_EQ(object.initContext(context->get()), 0U); };
        scenario.act = [&object, context] { return object.checkContextNodeSet(context->get(), 1); };
        scenario.check = [](const Aftermath& aftermath) {
            return std::string(aftermath.result == 0 ? "" : "nothing is marked, and something is found");
        };
        torture(scenario);
    }
}

TEST_F(Prepared, EveryWayToPushTheButton) {
    const auto push = [](void* context) { return WiFiAccessPointWPSButtonPushSet(context, 1, 1); };
    const auto method = [](const char* text) {
        return [text](void* context) {
            return WiFiAccessPointWPSMethodSet(context, 1, text, static_cast<std::uint32_t>(std::strlen(text)));
        };
    };
    const auto& objects = datamodel::objects();
    const auto wps = std::find_if(objects.begin(), objects.end(), [](const Object& object) {
        return object.prefix == std::string("WiFiAccessPointWPS");
    });
    ASSERT_NE(wps, objects.end());
    torture("the push of the button", *wps, {method("PushButton"), push});
    torture("the push of the button with a PIN", *wps, {method("PIN"), push});
    torture("the end of an exchange", *wps, {[](void* context) { return WiFiAccessPointWPSCancel(context); }});
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
        Snapshot snapshot(object);
        Scenario scenario;
        scenario.name = object.function("InstanceGet");
        scenario.act = [&snapshot] { return snapshot.act(); };
        scenario.check = [&snapshot](const Aftermath& aftermath) { return snapshot.check(aftermath); };
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
        Scenario scenario;
        scenario.name = accessor.name;
        scenario.output = std::make_shared<GuardedBlock>(accessor.size);
        scenario.act = [&accessor, out = scenario.output] { return accessor.call(out->get()); };
        torture(scenario);
    }
}

// The bridge through its own exported functions.
TEST_F(Prepared, TheBridge) {
    static constexpr scripted::BridgeRow kRows[] = {{5, 0, "", ""},
                                                    {1, QUORVEL_CONTEXT_HEADER_SIZE, "UINT32", "wlChannel"}};
    Scenario get;
    get.name = "Quorvel_P_WiFiWlcsmMngrGet";
    get.output = std::make_shared<GuardedBlock>(4);
    get.act = [out = get.output] {
        return static_cast<std::uint32_t>(Quorvel_P_WiFiWlcsmMngrGet(1, 1, 1, kRows, out->get(), 0, 0, 0));
    };
    torture(get);
    auto context = std::make_shared<GuardedBlock>(QUORVEL_CONTEXT_HEADER_SIZE + 4);
    Scenario apply;
    apply.name = "Quorvel_P_WiFiApplyContext";
    apply.prepare = [context] {
        EXPECT_EQ(Quorvel_ContextInit(context->get(), QUORVEL_CONTEXT_HEADER_SIZE + 4), 0U);
        EXPECT_EQ(Quorvel_ContextSetMap(context->get(), 1), 0U);
    };
    apply.act = [context] { return Quorvel_P_WiFiApplyContext(1, 1, context->get(), kRows, 2); };
    apply.check = [context](const Aftermath&) {
        const bool marked = Quorvel_IsContextSetMap(context->get(), 1) != 0;
        return std::string(marked && context->intact() ? "" : "the bridge changed the context");
    };
    torture(apply);
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
        {"WiFiSystemAccessPointDelete and Create",  // both log "DONE"
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
        torture({.name = name, .act = operation, .silentFunctions = {"WiFiLock", "WiFiUnlock"}});
    }
}

TEST_F(Prepared, EveryQuestionAboutTheSystem) {
    const auto question = [](const char* name, std::uint32_t (*ask)(), std::uint32_t answer) {
        Scenario scenario;
        scenario.name = name;
        scenario.act = ask;
        scenario.resultIsNoCode = true;
        scenario.check = [answer](const Aftermath& aftermath) {
            return std::string(aftermath.result == answer ? "" : "another answer");
        };
        torture(scenario);
    };
    question("WiFiSystemMaxNumberOfRadios", WiFiSystemMaxNumberOfRadios, 3);
    question("WiFiSystemMaxNumberOfAccessPointsPerRadio", WiFiSystemMaxNumberOfAccessPointsPerRadio, 8);
    question(
        "WiFiSystemAccessPointRadioInstanceGet", [] { return WiFiSystemAccessPointRadioInstanceGet(9); }, 2);
}

TEST_F(Prepared, TheSystemObject) {
    static const Object kSystem = {
        "WiFiSystem", "",     0, QUORVEL_CONTEXT_HEADER_SIZE, 0, WiFiSystemInitContext, WiFiSystemCheckContextNodeSet,
        nullptr,      nullptr};
    auto context = std::make_shared<GuardedBlock>(QUORVEL_CONTEXT_HEADER_SIZE);
    Scenario scenario;
    scenario.name = "the system object's transaction";
    scenario.act = [context] {
        *context = GuardedBlock(QUORVEL_CONTEXT_HEADER_SIZE);
        if (const std::uint32_t result = kSystem.initContext(context->get())) {
            return result;
        }
        (void)Quorvel_ContextSetMap(context->get(), 0);
        (void)kSystem.checkContextNodeSet(context->get(), 0);
        return WiFiSystemApplyContext(context->get());
    };
    scenario.check = [context](const Aftermath& aftermath) {
        if (!context->intact()) {
            return "something was written outside the context";
        }
        // Its apply clears the marks; it does not initialise the context again.
        const bool clears = aftermath.fatal() == nullptr && !aftermath.failed("Quorvel_ContextZeroSetMap");
        const bool staged = !aftermath.failed("Quorvel_ContextInit") && !aftermath.failed("Quorvel_ContextSetMap");
        const bool marked = Quorvel_IsContextSetMap(context->get(), 0) != 0;
        const bool initialised = Quorvel_IsContextInit(context->get()) == 0;
        if (!initialised) {
            return aftermath.failed("Quorvel_ContextInit") ? "" : "the context is not initialised any more";
        }
        return marked == (staged && !clears) ? "" : "the mark is not what it must be";
    };
    scenario.silentFunctions = {"WiFiSystemApplyContextImpl"};
    torture(scenario);
    Scenario snapshot;
    snapshot.name = "WiFiSystemInstanceGet";
    snapshot.act = [context] { return WiFiSystemInstanceGet(context->get()); };
    torture(snapshot);
}

TEST_F(Prepared, TheSave) {
    Scenario scenario;
    scenario.name = "WifiSaveNvram";
    scenario.act = WifiSaveNvram;
    scenario.keepsLockWhenFailing = true;
    torture(scenario);
}

TEST_F(Prepared, StartUpAndShutDown) {
    Scenario startUp;
    startUp.name = "WiFiInit";
    startUp.act = WiFiInit;
    // Both radios get their start time whatever else fails, except the list of chips.
    startUp.check = [](const Aftermath& aftermath) {
        const Failure* fatal = aftermath.fatal();
        const bool counted = fatal == nullptr || fatal->call.name != "fopen";
        std::size_t stamps = 0;
        for (const std::string& call : platform().callTexts({"wlcsm_mngr_set"})) {
            stamps += call.find("wlBootTime") != std::string::npos ? 1 : 0;
        }
        return std::string(stamps == (counted ? 2 : 0) ? "" : "start times are missing, or there are too many");
    };
    torture(startUp);
    Scenario shutDown;
    shutDown.name = "WiFiUnInit";
    shutDown.silentFunctions = {"WiFiUnInit", "WiFiInit"};
    // Shut-down frees the scan results in every case.
    shutDown.prepare = [] { EXPECT_EQ(scan(), 0U); };
    shutDown.blocksLeft = -1;
    shutDown.act = [] { return static_cast<std::uint32_t>(WiFiUnInit()); };
    torture(shutDown);
}

TEST_F(Prepared, TheScan) {
    bool intact = true;
    std::uint32_t count = 0;
    Scenario scenario;
    scenario.name = "a neighbour scan and its results";
    scenario.prepare = [] { EXPECT_EQ(scan(), 0U); };
    scenario.act = [&intact, &count] {
        if (const std::uint32_t result = scan()) {
            return result;
        }
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
    scenario.check = [&intact, &count](const Aftermath& aftermath) {
        const bool results = !aftermath.failed("calloc") && !aftermath.failed("Quorvel_ContextSetMap");
        if (aftermath.result == 0 && count != (results || aftermath.failed("Quorvel_ContextSetMap") ? 2U : 0U)) {
            return std::string("another number of results");
        }
        return std::string(intact ? "" : "something was written outside a result");
    };
    torture(scenario);
}

TEST_F(Prepared, EveryFileAndCommandThatEndsEarlyOrCannotBeReadOn) {
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
            for (const bool breaks : {false, true}) {
                Scenario scenario;
                scenario.name = std::string(text.path) + (breaks ? " unreadable" : " ending") + " after " +
                                std::to_string(length) + " bytes";
                scenario.prepare = [&text, &whole, length, breaks] {
                    const std::string cut = whole.substr(0, length);
                    if (text.command) {
                        platform().setCommandOutput(text.path, cut);
                    } else {
                        platform().setFile(text.path, cut);
                    }
                    if (breaks) {
                        platform().breakReading(text.path);
                    }
                };
                scenario.act = [] {
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
                scenario.check = [](const Aftermath& aftermath) {
                    return std::string(aftermath.result <= 1 ? "" : "a cut text is no failure, or code 1");
                };
                runOnce(scenario);
            }
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
    // A read that fails is read again, and nothing is lost.
    scenario.check = [](const Aftermath& aftermath) {
        const bool listens = !aftermath.failed("socket") && !aftermath.failed("connect") && !aftermath.failed("calloc");
        return std::string(stationsSeen == (listens ? 3 : 0) ? "" : "stations are missing, or come from nowhere");
    };
    scenario.askedForEver = {"read"};
    scenario.blocksLeft = 1;  // the listener's buffer
    torture(scenario);
}

TEST_F(Prepared, RegistrationAndDeregistration) {
    Scenario scenario;
    scenario.name = "registration and deregistration";
    scenario.prepare = [] { platform().scriptReads({{message(0, 0, 12), 0, 0}}); };
    scenario.act = [] {
        const std::uint32_t result = WiFiNewAPAssociatedDeviceCallbackRegister(takeStation);
        // The thread ends when the reads are used up, or where it fails.
        platform().joinThreads();
        const std::uint32_t gone = WiFiNewAPAssociatedDeviceCallbackDeRegister();
        return result != 0 ? result : gone;
    };
    scenario.askedForEver = {"read"};
    scenario.blocksLeft = 1;  // the listener's buffer
    torture(scenario);
}

// A host that cannot create the mutex: every call that locks tries again and logs the failure.
TEST(FirstUse, OfTheLockFailsWithItsCreation) {
    EXPECT_TRUE(scripted::runFresh([] {
        makeWorld(platform());
        const auto refusing = [](const std::string& name, const std::function<std::uint32_t()>& call,
                                 std::size_t attempts = 1) {
            SCOPED_TRACE(name);
            platform().reset();
            makeWorld(platform());
            platform().answer("QuorvelOsCreateMutex", kHostsCode);
            EXPECT_EQ(call(), kHostsCode);
            EXPECT_EQ(platform().logCount(0, "Lock failed, result 77"), attempts);
            EXPECT_EQ(platform().callCount("QuorvelOsCreateMutex"), 1U);
            EXPECT_EQ(platform().callCount("QuorvelOsMutexLock"), 0U);
            EXPECT_EQ(platform().callTexts({"wlcsm_mngr_get", "wlcsm_mngr_ext_get", "wlcsm_mngr_set", "popen"}),
                      std::vector<std::string>{});
        };
        for (const Parameter& parameter : datamodel::parameters()) {
            if (parameter.getter == nullptr) {
                continue;
            }
            GuardedBlock out(roomOf(parameter));
            refusing(parameter.getterName(), [&] { return read(parameter, out); });
            EXPECT_EQ(out.bytes(0, out.size()), GuardedBlock(out.size()).bytes(0, out.size()));
        }
        for (const Object& object : datamodel::objects()) {
            GuardedBlock context(object.contextSize);
            refusing(object.function("ApplyContext"), [&] {
                EXPECT_EQ(object.initContext(context.get()), 0U);
                return object.apply(context.get());
            });
            refusing(object.function("InstanceGet"), [&] { return object.snapshot(context.get()); });
        }
        refusing("WifiSaveNvram", WifiSaveNvram);
        refusing("WiFiSystemInit", WiFiSystemInit);
        refusing("WiFiSystemRadioInit", [] { return WiFiSystemRadioInit(1); });
        refusing("WiFiLock", WiFiLock, 0);
        platform().reset();
        makeWorld(platform());
        std::uint32_t channel = 0;
        EXPECT_EQ(WiFiRadioChannelGet(1, &channel), 0U);
        EXPECT_EQ(platform().callTexts({"QuorvelOsCreateMutex"}).size(), 1U);
        EXPECT_EQ(WiFiRadioChannelGet(1, &channel), 0U);
        EXPECT_EQ(platform().callTexts({"QuorvelOsCreateMutex"}).size(), 1U);
    }));
}

namespace {

// Every function that the library exports, as the interface tests know them.
std::set<std::string> exportedFunctions() {
    std::set<std::string> names;
    std::ifstream list(QUORVEL_EXPORTS);
    for (std::string kind, name, rest; list >> kind; std::getline(list, rest)) {
        if (kind == "function" && list >> name) {
            names.insert(name);
        }
    }
    for (const Object& object : datamodel::objects()) {
        for (const char* suffix : {"InitContext", "CheckContextNodeSet", "ApplyContext", "InstanceGet"}) {
            names.insert(object.function(suffix));
        }
    }
    for (const Parameter& parameter : datamodel::parameters()) {
        if (parameter.getter != nullptr) {
            names.insert(parameter.getterName());
        }
        if (parameter.setter != nullptr) {
            names.insert(parameter.setterName());
        }
    }
    return names;
}

class Report : public testing::Environment {
  public:
    void TearDown() override {
        // Part of the program leaves part of the functions out.
        if (testing::GTEST_FLAG(filter) == "*") {
            const std::set<std::string> exported = exportedFunctions();
            EXPECT_EQ(exported.size(), 475U);
            for (const std::string& function : exported) {
                EXPECT_EQ(torturedFunctions().count(function), 1U) << function << " is in no scenario";
            }
        }
        (void)std::printf("torture: %zu scenarios, %zu calls made to fail, %zu runs\n", figures().scenarios,
                          figures().calls, figures().runs);
    }
};
[[maybe_unused]] const testing::Environment* const report = testing::AddGlobalTestEnvironment(new Report);

}  // namespace

}  // namespace quorvel::torture
