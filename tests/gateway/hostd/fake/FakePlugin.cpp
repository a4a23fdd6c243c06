#include "tests/gateway/hostd/fake/FakePlugin.h"

#include <cstring>

#include <quorvel.h>

namespace fake {

State& state() {
    static State the;
    return the;
}

State& reset() {
    state() = State{};
    return state();
}

namespace {

using Word = std::uintptr_t;

void note(const std::string& call) {
    state().calls.push_back(call);
}

constexpr std::uint32_t kRefused = 8;
constexpr std::uint32_t kInvalidInstance = 6;
constexpr std::uint32_t kUninitialised = 5;
constexpr std::uint32_t kHeader = QUORVEL_CONTEXT_HEADER_SIZE;

// The radio's context: Enable, Channel, Power, Alias (8), Key (4), as the plug-in lays it out.
constexpr std::uint32_t kEnableAt = kHeader;
constexpr std::uint32_t kChannelAt = kHeader + 4;
constexpr std::uint32_t kPowerAt = kHeader + 8;
constexpr std::uint32_t kAliasAt = kHeader + 12;
constexpr std::uint32_t kRadioSize = kAliasAt + 8;

std::uint32_t mark(void* context, std::uint32_t node) {
    if (Quorvel_IsContextInit(context) != 0) return kUninitialised;
    return Quorvel_ContextSetMap(context, node);
}

char* bytes(void* context) {
    return static_cast<char*>(context);
}

std::uint32_t refuse(const char* function, const char* message, std::uint32_t code) {
    Quorvel_LogPrint(0, "fake", function, 1, "%s", message);
    return code;
}

}  // namespace

}  // namespace fake

using namespace fake;

extern "C" {

// Depth 0.
std::uint32_t FakeTopRadioNumberOfEntriesGet(std::uint32_t* out) {
    note("count radios");
    *out = state().radios;
    return 0;
}
std::uint32_t FakeTopAccessPointNumberOfEntriesGet(std::uint32_t* out) {
    *out = state().accessPoints;
    return 0;
}
std::uint32_t FakeTopBridgeGet(char* out, std::uint32_t length) {
    if (length < 16) return kRefused;
    std::memcpy(out, "br0", 4);
    return 0;
}
std::uint32_t FakeTopInitContext(void* context) {
    return Quorvel_ContextInit(context, kHeader + 16);
}
std::uint32_t FakeTopBridgeSet(void* context, const char* text, std::uint32_t length) {
    note("stage Bridge " + std::string(text, length));
    return length > 16 ? refuse("FakeTopBridgeSet", "Value out of range", kRefused) : mark(context, 3);
}
std::uint32_t FakeTopApplyContext(void*) {
    note("apply top");
    return 0;
}

// Depth 1.
std::uint32_t FakeRadioInitContext(void* context) {
    return Quorvel_ContextInit(context, kRadioSize);
}
std::uint32_t FakeRadioApplyContext(void* context, std::uint32_t radio, std::uint32_t third) {
    note("apply radio " + std::to_string(radio) + " third " + std::to_string(third));
    if (state().failApply != 0) return refuse("FakeRadioApplyContext", "Impl call failed", state().failApply);
    if (Quorvel_IsContextSetMap(context, 2) != 0) std::memcpy(&state().channel, bytes(context) + kChannelAt, 4);
    if (Quorvel_IsContextSetMap(context, 4) != 0)
        state().alias.assign(bytes(context) + kAliasAt, strnlen(bytes(context) + kAliasAt, 8));
    return 0;
}
std::uint32_t FakeRadioEnableGet(std::uint32_t, std::uint8_t* out) {
    *out = state().enabled ? 1 : 0;
    return 0;
}
std::uint32_t FakeRadioEnableSet(void* context, std::uint32_t, std::uint32_t value) {
    if (value > 1) return kRefused;
    bytes(context)[kEnableAt] = static_cast<char>(value);
    return mark(context, 1);
}
std::uint32_t FakeRadioChannelGet(std::uint32_t radio, std::uint32_t* out) {
    if (radio == 0 || radio > state().radios) return kInvalidInstance;
    *out = state().channel + radio - 1;
    return 0;
}
std::uint32_t FakeRadioChannelSet(void* context, std::uint32_t radio, std::uint32_t value) {
    note("stage Channel " + std::to_string(radio) + " " + std::to_string(value));
    if (value > 200) return refuse("FakeRadioChannelSet", "Value out of range", kRefused);
    std::memcpy(bytes(context) + kChannelAt, &value, 4);
    return mark(context, 2);
}
std::uint32_t FakeRadioPowerGet(std::uint32_t, std::int32_t* out) {
    *out = state().power;
    return 0;
}
std::uint32_t FakeRadioPowerSet(void* context, std::uint32_t, std::int32_t value) {
    std::memcpy(bytes(context) + kPowerAt, &value, 4);
    return mark(context, 3);
}
std::uint32_t FakeRadioAliasGet(std::uint32_t, char* out, std::uint32_t length) {
    if (length < 8) return kRefused;
    if (state().failGet != 0) return refuse("FakeRadioAliasGet", "Impl call failed, result 1", state().failGet);
    std::memcpy(out, state().alias.data(), state().alias.size());
    return 0;
}
std::uint32_t FakeRadioAliasSet(void* context, std::uint32_t, const char* text, std::uint32_t length) {
    if (length > 8) return refuse("FakeRadioAliasSet", "Value out of range", kRefused);
    std::memset(bytes(context) + kAliasAt, 0, 8);
    std::memcpy(bytes(context) + kAliasAt, text, length);
    return mark(context, 4);
}
std::uint32_t FakeRadioPushSet(void* context, std::uint32_t, const char* text, std::uint32_t length) {
    note("stage Push " + std::string(text, length));
    return mark(context, 5);
}
std::uint32_t FakeRadioInstanceGet(void* context, std::uint32_t radio) {
    const std::uint32_t channel = state().channel + radio - 1;
    (void)Quorvel_ContextInit(context, kRadioSize);
    bytes(context)[kEnableAt] = 1;
    std::memcpy(bytes(context) + kChannelAt, &channel, 4);
    std::memcpy(bytes(context) + kPowerAt, &state().power, 4);
    std::memcpy(bytes(context) + kAliasAt, state().alias.data(), state().alias.size());
    return 0;
}
std::uint32_t FakeRadioDcsChannelMetricsGet(std::uint32_t, char* record, std::uint32_t length) {
    if (length < 2048) return kRefused;
    const std::int32_t noise = -91;
    const std::uint32_t count = 1;
    const unsigned char heard[6] = {2, 0, 0, 0, 0, 9};
    const std::int32_t rssi = -40;
    std::memcpy(&state().measured, record, 4);
    std::memcpy(record + 8, &noise, 4);
    std::memcpy(record + 28, heard, 6);
    std::memcpy(record + 40, &rssi, 4);
    std::memcpy(record + 1052, &count, 4);
    return 0;
}
std::uint32_t FakeRadioStatsResultsNumberGet(std::uint32_t radio, std::uint32_t* out) {
    *out = state().results.at(radio);
    return 0;
}
std::uint32_t FakeResultChannelGet(std::uint32_t result, std::uint32_t* out) {
    *out = 100 + result;
    return 0;
}
std::uint32_t FakeAccessPointDevicesGet(std::uint32_t ap, std::uint32_t* out) {
    *out = ap == 1 ? static_cast<std::uint32_t>(state().stations.size()) : 0;
    return 0;
}
std::uint32_t FakeAccessPointAssociatedDeviceRSSIGet(std::uint32_t, const char* mac, std::int32_t* out) {
    note("rssi of " + std::string(mac));
    *out = -50;
    return mac[0] == '0' ? 0 : refuse("FakeAccessPointAssociatedDeviceRSSIGet", "no such station", 1);
}

// Depth 2.
std::uint32_t FakeDeviceMACAddressGet(std::uint32_t, std::uint32_t device, char* out, std::uint32_t length) {
    if (length < 17) return kRefused;
    // No terminator: the text fills what it was given.
    std::memcpy(out, state().stations.at(device - 1).data(), 17);
    return 0;
}
std::uint32_t FakeDeviceSignalGet(std::uint32_t ap, std::uint32_t device, std::int32_t* out) {
    *out = -static_cast<std::int32_t>(10 * ap + device);
    return 0;
}
std::uint32_t FakeCategoryApplyContext(void*, std::uint32_t i, std::uint32_t j) {
    note("apply category " + std::to_string(i) + " " + std::to_string(j));
    return 0;
}
std::uint32_t FakeCategoryLimitGet(std::uint32_t, std::uint32_t category, std::uint32_t* out) {
    if (category > state().categories) return kInvalidInstance;
    *out = 7;
    return 0;
}
std::uint32_t FakeCategoryLimitSet(void*, std::uint32_t, std::uint32_t category, std::uint32_t value) {
    state().immediate.push_back(std::to_string(category) + "=" + std::to_string(value));
    return value > 15 ? kRefused : 0;
}
std::uint32_t FakeCategoryNameSet(void* context, std::uint32_t, std::uint32_t, const char* text, std::uint32_t length) {
    note("stage Name " + std::string(text, length));
    return mark(context, 2);
}
std::uint32_t FakeCategoryPolicyGet(std::uint32_t, std::uint32_t, std::uint8_t* out) {
    *out = 1;
    return 0;
}
std::uint32_t FakeCategoryPolicySet(void* context, std::uint32_t, std::uint32_t, std::uint32_t value) {
    note("stage Policy " + std::to_string(value));
    return mark(context, 3);
}
std::uint32_t FakeCategoryOrderSet(void* context, std::uint32_t, std::uint32_t, std::uint32_t value) {
    note("stage Order " + std::to_string(value));
    return mark(context, 4);
}

std::uint32_t WifiSaveNvram() {
    note("save");
    return state().failSave;
}
}

namespace {

struct Entry {
    Word words[72];
};

enum : unsigned { kText = 0, kBoolean = 2, kUnsigned = 3, kInt = 4 };

template <typename Function>
Word at(Function* function) {
    return reinterpret_cast<Word>(function);
}

Entry entry(const char* object, const char* name, unsigned type, unsigned getterWord, Word getter) {
    Entry made{};
    made.words[0] = reinterpret_cast<Word>(object);
    made.words[1] = reinterpret_cast<Word>(name);
    made.words[2] = type;
    made.words[3] = 1;
    if (getterWord != 0) made.words[getterWord] = getter;
    return made;
}

Entry writable(Entry made, Word size, unsigned setterWord, Word setter, Word init, unsigned applyWord, Word apply) {
    made.words[3] = 256;
    made.words[5] = size;
    made.words[setterWord] = setter;
    if (init != 0) made.words[36] = init;
    made.words[applyWord] = apply;
    return made;
}

Entry top(Entry made, unsigned setterWord, Word setter) {
    return writable(made, kHeader + 16, setterWord, setter, at(FakeTopInitContext), 37, at(FakeTopApplyContext));
}

Entry radio(Entry made, unsigned setterWord, Word setter) {
    return writable(made, kRadioSize, setterWord, setter, at(FakeRadioInitContext), 38, at(FakeRadioApplyContext));
}

Entry category(Entry made, unsigned setterWord, Word setter) {
    return writable(made, kHeader + 32, setterWord, setter, 0, 54, at(FakeCategoryApplyContext));
}

constexpr const char* kTop = "WiFi";
constexpr const char* kRadio = "WiFi.Radio.{i}";
constexpr const char* kPoint = "WiFi.AccessPoint.{i}";
constexpr const char* kDevice = "WiFi.AccessPoint.{i}.AssociatedDevice.{i}";
constexpr const char* kCategory = "WiFi.AccessPoint.{i}.AC.{i}";

}  // namespace

extern "C" {
extern const std::uint32_t gQuorvelWiFiDataModelTableInfo[4];
extern const Entry gQuorvelWiFiDataModelTable[];

const Entry gQuorvelWiFiDataModelTable[] = {
    entry(kTop, "RadioNumberOfEntries", kUnsigned, 12, at(FakeTopRadioNumberOfEntriesGet)),
    entry(kTop, "AccessPointNumberOfEntries", kUnsigned, 12, at(FakeTopAccessPointNumberOfEntriesGet)),
    top(entry(kTop, "Bridge", kText, 6, at(FakeTopBridgeGet)), 39, at(FakeTopBridgeSet)),
    radio(entry(kRadio, "Enable", kBoolean, 11, at(FakeRadioEnableGet)), 44, at(FakeRadioEnableSet)),
    radio(entry(kRadio, "Channel", kUnsigned, 13, at(FakeRadioChannelGet)), 46, at(FakeRadioChannelSet)),
    radio(entry(kRadio, "Power", kInt, 15, at(FakeRadioPowerGet)), 48, at(FakeRadioPowerSet)),
    radio(entry(kRadio, "Alias", kText, 7, at(FakeRadioAliasGet)), 40, at(FakeRadioAliasSet)),
    radio(entry(kRadio, "Push", kText, 0, 0), 40, at(FakeRadioPushSet)),
    entry(kRadio, "DcsChannelMetrics", kText, 7, at(FakeRadioDcsChannelMetricsGet)),
    entry("WiFi.Radio.{i}.Stats", "NeighboringResultNumberOfEntries", kUnsigned, 13,
          at(FakeRadioStatsResultsNumberGet)),
    entry("WiFi.Neighboring.Result.{i}", "Channel", kUnsigned, 13, at(FakeResultChannelGet)),
    entry(kPoint, "AssociatedDeviceNumberOfEntries", kUnsigned, 13, at(FakeAccessPointDevicesGet)),
    entry(kPoint, "AssociatedDeviceRSSI", kInt, 15, at(FakeAccessPointAssociatedDeviceRSSIGet)),
    entry(kDevice, "MACAddress", kText, 55, at(FakeDeviceMACAddressGet)),
    entry(kDevice, "Signal", kInt, 59, at(FakeDeviceSignalGet)),
    category(entry(kCategory, "Limit", kUnsigned, 58, at(FakeCategoryLimitGet)), 65, at(FakeCategoryLimitSet)),
    category(entry(kCategory, "Name", kText, 0, 0), 55, at(FakeCategoryNameSet)),
    category(entry(kCategory, "Policy", kBoolean, 57, at(FakeCategoryPolicyGet)), 59, at(FakeCategoryPolicySet)),
    category(entry(kCategory, "Order", kUnsigned, 0, 0), 61, at(FakeCategoryOrderSet)),
};
const std::uint32_t gQuorvelWiFiDataModelTableInfo[4] = {
    0, 0, 0, sizeof gQuorvelWiFiDataModelTable / sizeof gQuorvelWiFiDataModelTable[0]};
}
