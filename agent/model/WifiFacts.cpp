// The one place where the agent knows objects of the library by name: what the exported table cannot tell.
#include <algorithm>

#include "agent/model/Schema.h"

namespace quorvel::agent {
namespace {

using Names = std::vector<std::string>;

struct Keys {
    std::string_view object;
    std::vector<Names> keys;
};

const std::vector<Keys>& keys() {
    static const std::vector<Keys> known{
        {"Device.WiFi.Radio.{i}.", {{"Name"}, {"Alias"}}},
        {"Device.WiFi.SSID.{i}.", {{"Name"}, {"BSSID"}, {"Alias"}}},
        {"Device.WiFi.AccessPoint.{i}.", {{"SSIDReference"}, {"Alias"}}},
        {"Device.WiFi.AccessPoint.{i}.AssociatedDevice.{i}.", {{"MACAddress"}}},
        // AccessCategory reads as 0 in every row and cannot tell them apart.
        {"Device.WiFi.AccessPoint.{i}.AC.{i}.", {{"Alias"}}},
        {"Device.WiFi.NeighboringWiFiDiagnostic.Result.{i}.", {{"BSSID"}}},
    };
    return known;
}

struct Facts {
    std::string_view object;
    std::string_view parameter;
    unsigned marks;
    std::uint32_t least = 0;
    std::uint32_t most = 0;
};

constexpr std::string_view kSecurity = "Device.WiFi.AccessPoint.{i}.Security.";
constexpr std::string_view kAccounting = "Device.WiFi.AccessPoint.{i}.Accounting.";
constexpr std::string_view kWps = "Device.WiFi.AccessPoint.{i}.WPS.";
constexpr std::string_view kAc = "Device.WiFi.AccessPoint.{i}.AC.{i}.";
constexpr std::string_view kRadio = "Device.WiFi.Radio.{i}.";
constexpr std::string_view kAccessPoint = "Device.WiFi.AccessPoint.{i}.";

constexpr Facts kFacts[] = {
    {kSecurity, "WEPKey", kSecured},
    {kSecurity, "WEPKey2", kSecured},
    {kSecurity, "WEPKey3", kSecured},
    {kSecurity, "WEPKey4", kSecured},
    {kSecurity, "WEPPassphrase", kSecured},
    {kSecurity, "PreSharedKey", kSecured},
    {kSecurity, "KeyPassphrase", kSecured},
    {kSecurity, "SAEPassphrase", kSecured},
    {kSecurity, "RadiusSecret", kSecured},
    {kSecurity, "SecondaryRadiusSecret", kSecured},
    {kSecurity, "Reset", kAction},
    {kAccounting, "Secret", kSecured},
    {kAccounting, "SecondarySecret", kSecured},
    {kWps, "DevicePIN", kSecured},
    {kWps, "EnrolleePin", kSecured},
    {kWps, "ButtonPush", kAction},
    {kAc, "AIFSN", kAtOnce, 1, 15},
    {kAc, "ECWMin", kAtOnce, 0, 15},
    {kAc, "ECWMax", kAtOnce, 0, 15},
    {kAc, "TxOpMax", kAtOnce},
    {"Device.WiFi.", "CommitSettings", kAction | kAtOnce},
    {kRadio, "Restart", kAction},
    {kRadio, "ResetToFactory", kAction},
    {kRadio, "ClearAirtimeSchedulerStationsList", kAction},
    {kRadio, "pushRadioChannel", kAction},
    {kRadio, "pushRadioChannel2", kAction},
    {"Device.WiFi.Radio.{i}.Stats.", "DiagnosticsState", kAction},
    {kAccessPoint, "ClearAccessControlFilterTable", kAction},
    {kAccessPoint, "ResetToFactory", kAction},
    {kRadio, "LastChange", kCounter},
    {kRadio, "UpTime", kCounter},
    {"Device.WiFi.AccessPoint.{i}.AssociatedDevice.{i}.", "Retransmissions", kCounter},
    {kRadio, "Alias", kGenerated},
    {"Device.WiFi.SSID.{i}.", "Alias", kGenerated},
    {kAccessPoint, "Alias", kGenerated},
    {kAc, "Alias", kGenerated},
};

const Names& neighbourOutputs() {
    static const Names outputs = [] {
        Names names{"Status"};
        for (const char* const name :
             {"Radio", "SSID", "BSSID", "Mode", "Channel", "SignalStrength", "SecurityModeEnabled", "EncryptionMode",
              "OperatingFrequencyBand", "SupportedStandards", "OperatingStandards", "OperatingChannelBandwidth",
              "BeaconPeriod", "Noise", "BasicDataTransferRates", "SupportedDataTransferRates", "DTIMPeriod"})
            names.push_back(std::string("Result.{i}.") + name);
        return names;
    }();
    return outputs;
}

// Counters of packets, bytes and errors change all the time.
bool countsUp(const Object& object, const Parameter& parameter) {
    return object.name() == "Stats" && parameter.access == Access::kReadOnly &&
           parameter.type == ValueType::kUnsignedInt && parameter.name != "Noise";
}

}  // namespace

void completeWifiObject(Object& object) {
    for (const Keys& known : keys()) {
        if (known.object != object.path) continue;
        for (const Names& key : known.keys) {
            const bool supported = std::all_of(key.begin(), key.end(), [&object](const std::string& name) {
                return object.parameter(name) != nullptr;
            });
            if (supported) object.keys.push_back(key);
        }
    }
    for (Parameter& parameter : object.parameters) {
        if (countsUp(object, parameter)) parameter.marks |= kCounter;
        for (const Facts& facts : kFacts) {
            if (facts.object != object.path || facts.parameter != parameter.name) continue;
            parameter.marks |= facts.marks;
            parameter.least = facts.least;
            parameter.most = facts.most;
        }
    }
    if (object.path == "Device.WiFi.") {
        object.commands.push_back({"NeighboringWiFiDiagnostic()", true, {}, neighbourOutputs()});
        if (object.parameter("CommitSettings") != nullptr) object.commands.push_back({"Reset()"});
    }
    if (object.path == kWps && object.parameter("ButtonPush") != nullptr) {
        object.commands.push_back({"InitiateWPSPBC()", true, {}, {"Status"}});
    }
    if (object.path == kSecurity && object.parameter("Reset") != nullptr) object.commands.push_back({"Reset()"});
}

}  // namespace quorvel::agent
