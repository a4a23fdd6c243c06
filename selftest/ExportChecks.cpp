// Checks the names that a host finds.
#include "selftest/Checks.h"
#include "selftest/Expectation.h"

namespace quorvel::selftest {
namespace {

// Functions that follow from no parameter.
constexpr const char* kFunctions[] = {
    "WiFiLock",
    "WiFiUnlock",
    "WiFiInit",
    "WiFiUnInit",
    "WifiSaveNvram",
    "WiFiSystemInitContext",
    "WiFiSystemCheckContextNodeSet",
    "WiFiSystemApplyContext",
    "WiFiSystemApplyContextImpl",
    "WiFiSystemInstanceGet",
    "WiFiSystemInit",
    "WiFiSystemStartStopSecurityDaemons",
    "WiFiSystemReset",
    "WiFiSystemResetToFactory",
    "WiFiSystemMaxNumberOfRadios",
    "WiFiSystemMaxNumberOfAccessPointsPerRadio",
    "WiFiSystemRadioInit",
    "WiFiSystemResetRadioToFactory",
    "WiFiSystemResetRadiosToFactory",
    "WiFiSystemAccessPointDelete",
    "WiFiSystemAccessPointCreate",
    "WiFiSystemAccessPointRadioInstanceGet",
    "WiFiSystemResetAccessPointToFactory",
    "WiFiNewAPAssociatedDeviceCallbackRegister",
    "WiFiNewAPAssociatedDeviceCallbackDeRegister",
    "Quorvel_P_WiFiWlcsmMngrGet",
    "Quorvel_P_WiFiApplyContext",
    "Quorvel_P_WiFiLaunchWldaemon",
    "Quorvel_P_WiFiTerminateWldaemon",
    "Quorvel_P_WiFiSetCurrentTimeAsStartTime",
    "Quorvel_P_WiFiGetTimeElapseFromStartTime",
    "WiFiRadioChannelStatsGet2",
    "WiFiAccessPointRxStatsResultGet",
    "WiFiAccessPointTxStatsResultGet",
    "WiFiAccessPointStatsGet",
    "WiFiAccessPointSsidNameStatusGet",
    "WiFiAccessPointMacModeGet",
    "WiFiAccessPointWPSMethodSet",
    "WiFiAccessPointWPSCancel",
};

struct Record {
    const char* name;
    std::size_t words;
    std::size_t bytes;
};

constexpr Record kRecords[] = {
    {"gQuorvelWiFiDataModelTable", std::size(model::kParameters) * kWordsPerEntry, 0},
    {"gQuorvelWiFiDataModelTableInfo", 0, 16},
    {"authModeMapper", 16, 0},
    {"wpaEncryptionMapper", 6, 0},
    {"notifySocketPath", 0, 19},
    {"qvlThreadId", 1, 0},
};

}  // namespace

void checkExports(const Library& library, Report& report) {
    report.begin("every function of the interface is exported");
    const auto need = [&](const std::string& name) {
        report.check(library.find(name) != 0, name + " is not exported");
    };
    for (const char* name : kFunctions)
        need(name);
    for (const model::Object& object : model::kObjects) {
        for (const char* suffix : {"InitContext", "CheckContextNodeSet", "ApplyContext", "InstanceGet"})
            need(std::string(object.prefix) + suffix);
    }
    for (const Parameter& parameter : parameters()) {
        if (parameter.readable()) need(parameter.getter());
        if (parameter.writable()) need(parameter.setter());
    }

    report.begin("every record of the interface is exported with its size");
    for (const Record& record : kRecords) {
        const std::size_t expected = record.words * sizeof(Word) + record.bytes;
        const std::size_t found = library.sizeOf(record.name);
        report.check(found == expected, std::string(record.name) + ": " + std::to_string(found) + " bytes, expected " +
                                            std::to_string(expected));
    }
}

}  // namespace quorvel::selftest
