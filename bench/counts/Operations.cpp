// One operation a row of the budget: what a management agent does, and the platform calls of its floor.
#include <quorvel.h>
#include <wlcsm.h>

#include <cstddef>

#include "bench/counts/NullPlatform.h"
#include "bench/counts/Operation.h"
#include "gateway/hostd/Accessors.h"
#include "gateway/hostd/DataModel.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/QuorvelWiFiTable.h"
#include "wifi/model/Contexts.h"
#ifdef QUORVEL_BENCH_CONSOLE_HOST
#endif

namespace quorvel::bench {
namespace {

constexpr char kFile[] = "wifi/QuorvelWiFiRadio";
constexpr char kFunction[] = "WiFiRadioLastChangeGet";
constexpr char kSixtyFour[] = "0123456789012345678901234567890123456789012345678901234567890123";
static_assert(sizeof kSixtyFour == 65);

WiFiRadioContext radioContext;
WiFiAccessPointContext accessPointContext;
WiFiSSIDContext ssidContext;
char text[65];
std::uint32_t word;
char value[WLCSM_VALUE_SIZE];

void enter() {
    Quorvel_LogPrint(3, kFile, kFunction, 1, "%s Enter", kFunction);
}

void done() {
    Quorvel_LogPrint(3, kFile, kFunction, 1, "%s DONE", kFunction);
}

void traffic() {
    Quorvel_LogPrint(2, kFile, kFunction, 1, "wlcsm_mngr_get: radio[%d], ssid[%d], varName[%s] value[%s] SUCCESS.", 1,
                     0, "lastChange", value);
}

void readNumber() {
    (void)WiFiRadioLastChangeGet(2, &word);
}

void readText() {
    (void)WiFiRadioAliasGet(2, text, 64);
}

void readFloor() {
    enter();
    (void)QuorvelOsMutexLock(nullptr);
    (void)wlcsm_mngr_ext_get(1, 0, "lastChange", value);
    traffic();
    (void)QuorvelOsMutexUnlock(nullptr);
    done();
}

void stage() {
    (void)WiFiRadioChannelSet(&radioContext, 2, 36);
}

void stageFloor() {
    enter();
    (void)Quorvel_IsContextInit(&radioContext);
    (void)Quorvel_ContextSetMap(&radioContext, WiFiRadioNode::Channel);
    done();
}

// The platform calls of an apply around the walk of `nodes` nodes, one of which is staged.
template <typename Context>
void applyFloor(Context& context, std::uint32_t nodes) {
    enter();
    (void)Quorvel_IsContextInit(&context);
    (void)QuorvelOsMutexLock(nullptr);
    for (std::uint32_t node = 1; node <= nodes; ++node)
        (void)Quorvel_IsContextSetMap(&context, node);
    (void)wlcsm_mngr_set(1, 0, "retryLimit", "7");
    traffic();
    done();
    (void)QuorvelOsMutexUnlock(nullptr);
    (void)Quorvel_ContextInit(&context, sizeof context);
    done();
}

// Staged past the setter, whose cost is not the apply's.
void stageAccessPoint() {
    accessPointContext.MaxAssociatedDevices = 32;
    (void)Quorvel_ContextSetMap(&accessPointContext, WiFiAccessPointNode::MaxAssociatedDevices);
}

void applyAccessPoint() {
    stageAccessPoint();
    (void)WiFiAccessPointApplyContext(&accessPointContext, 9);
}

void applyAccessPointFloor() {
    stageAccessPoint();
    // The access point's radio is looked up, which is logged.
    done();
    applyFloor(accessPointContext, 24);
}

void stageRadio() {
    radioContext.RetryLimit = 7;
    (void)Quorvel_ContextSetMap(&radioContext, WiFiRadioNode::RetryLimit);
}

void applyRadio() {
    stageRadio();
    (void)WiFiRadioApplyContext(&radioContext, 2);
}

// The nodes that the radio looks at before the walk.
constexpr std::uint32_t kRadioTests = 19;

void applyRadioFloor() {
    stageRadio();
    (void)wlcsm_mngr_get(1, 0, "wlBand", value);
    traffic();
    for (std::uint32_t node = 1; node <= kRadioTests; ++node)
        (void)Quorvel_IsContextSetMap(&radioContext, node);
    applyFloor(radioContext, 65);
}

void snapshot() {
    (void)WiFiSSIDInstanceGet(&ssidContext, 9);
}

#ifdef QUORVEL_BENCH_CONSOLE_HOST
const hostd::DataModel* dataModel;

void prepareModel() {
    static const hostd::DataModel model(
        {reinterpret_cast<const hostd::TableEntry*>(gQuorvelWiFiDataModelTable.entries), kParametersInTable});
    dataModel = &model;
}

hostd::Value result;

void pathToValue() {
    hostd::ResolvedPath path;
    if (dataModel->resolve("Device.WiFi.Radio.2.LastChange", path)) {
        (void)hostd::read(*path.parameter, path.instances, result);
    }
}
#endif

void answerNumber() {
    setAnswer("123456");
}

void answerText() {
    setAnswer(kSixtyFour);
}

}  // namespace

const std::vector<Operation>& operations() {
    static const std::vector<Operation> kOperations = [] {
        preparePlatform();
        answerNumber();
#ifdef QUORVEL_BENCH_CONSOLE_HOST
        prepareModel();
#endif
        (void)WiFiRadioInitContext(&radioContext);
        (void)WiFiAccessPointInitContext(&accessPointContext);
        return std::vector<Operation>{
            {"mapped-number-read", 1000, answerNumber, readNumber, readFloor},
            {"mapped-text-read", 1000, answerText, readText, readFloor},
            {"staged-set", 1000, answerNumber, stage, stageFloor},
            {"apply-one-of-24", 200, answerNumber, applyAccessPoint, applyAccessPointFloor},
            {"apply-one-of-65", 200, answerNumber, applyRadio, applyRadioFloor},
            {"snapshot-ssid", 100, answerNumber, snapshot, nullptr},
#ifdef QUORVEL_BENCH_CONSOLE_HOST
            {"path-to-value", 1000, answerNumber, pathToValue, nullptr},
#endif
            {"whole-model-read", 1, answerNumber, readWholeModel, wholeModelFloor, true},
        };
    }();
    return kOperations;
}

}  // namespace quorvel::bench
