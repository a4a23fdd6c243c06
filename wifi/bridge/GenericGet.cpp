// Reads of the manager's variables.
#include <quorvel.h>
#include <wlcsm.h>

#include <cstring>

#include "wifi/Log.h"
#include "wifi/Result.h"
#include "wifi/bridge/Binding.h"
#include "wifi/bridge/Conversion.h"
#include "wifi/bridge/ManagerText.h"
#include "wifi/bridge/Mapped.h"
#include "wifi/bridge/SpecialValues.h"

namespace quorvel {
namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiBaseAPI";
constexpr const char* kFunction = "Quorvel_P_WiFiWlcsmMngrGet";

// A text output that its caller vouches for.
constexpr uint32_t kUnbounded = 0xFFFFFFFF;

struct Instance {
    uint32_t radio;  // from 1
    uint32_t ssid;   // from 1
};

[[gnu::noinline]] bool refuse(const Instance& at) {
    QUORVEL_LOG(Error, kFunction, "Invalid radioIdx[%u] or ssidIdx[%u]", at.radio, at.ssid);
    return false;
}

[[gnu::always_inline]] inline bool isValid(const Instance& at) {
    return instancesAreValid(at.radio, at.ssid) || refuse(at);
}

// Stores the value of an absent variable. An absent filter list is an empty one; no other variable may be absent.
bool storeAbsent(const Binding& binding, void* out) {
    if (strcmp(binding.variable, "wlFltMacList") != 0) return false;
    if (!readAbsent(binding.special, out)) {
        QUORVEL_LOG(Error, kFunction, "Invalid case: objIdx[%d], nodeIdx[%d]", binding.object, binding.node);
    }
    return true;
}

// Stores the value of a text that the manager has; a text is cut to `bound` bytes.
[[gnu::always_inline]] inline void store(const Binding& binding, const Instance& at, const char* text, void* out,
                                         uint32_t bound) {
    if (binding.special != model::SpecialValue::kNone && readSpecial(binding.special, text, out)) {
        QUORVEL_LOG(Traffic, "Quorvel_P_WiFiSpecialCaseGet", "SpecialCaseHit: objIdx[%d], nodeIdx[%d]", binding.object,
                    binding.node);
    } else if (!convertText(binding.conversion, text, out, bound)) {
        QUORVEL_LOG(Traffic, kFunction, "Invalid nodeType[%s] for radio[%d], ssid[%d], varName[%s].",
                    binding.conversionName, at.radio - 1, subIndex(at.ssid), binding.variable);
    }
}

// Reads a variable for a valid instance. Returns 0 or 1.
uint32_t readVariable(const Binding& binding, const Instance& at, void* out, uint32_t bound) {
    const char* variable = binding.variable;
    if (variable[0] == '\0') {
        QUORVEL_LOG(Error, kFunction, "Couldn't find node[%d] in the mapping table.", binding.node);
        return kFailed;
    }
    const uint32_t radioIndex = at.radio - 1;
    const uint32_t ssidIndex = subIndex(at.ssid);
    alignas(32) char local[kValueSize];
    clearValue(local);
    char* text = binding.conversion == model::Conversion::kUnconverted ? static_cast<char*>(out) : local;
    // Quirk: the messages name the plain call, not the extended one that is made.
    if (wlcsm_mngr_ext_get(radioIndex, ssidIndex, variable, text) != 0) {
        store(binding, at, text, out, bound);
    } else if (!storeAbsent(binding, out)) {
        QUORVEL_LOG(Error, kFunction, "wlcsm_mngr_get: radio[%d], ssid[%d], varName[%s] FAIL.", radioIndex, ssidIndex,
                    variable);
        return kFailed;
    }
    QUORVEL_LOG(Traffic, kFunction, "wlcsm_mngr_get: radio[%d], ssid[%d], varName[%s] value[%s] SUCCESS.", radioIndex,
                ssidIndex, variable, text);
    return kSuccess;
}

uint32_t readOwn(OwnRow row, uint32_t i, void* out, uint32_t bound) {
    const Instance at{radioOf(row.scope, i), ssidOf(row.scope, i)};
    if (!isValid(at)) return kInvalidInput;
    return readVariable(bindingOf(row), at, out, bound);
}

}  // namespace

uint32_t radioOf(model::Scope scope, uint32_t i) {
    return scope == model::Scope::kAccessPoint ? WiFiSystemAccessPointRadioInstanceGet(i) : i;
}

uint32_t readMapped(OwnRow row, uint32_t i, void* out) {
    return readOwn(row, i, out, kUnbounded);
}

uint32_t readMapped(OwnRow row, uint32_t i, char* buf, uint32_t len) {
    return readOwn(row, i, buf, len);
}

}  // namespace quorvel

int32_t Quorvel_P_WiFiWlcsmMngrGet(uint32_t radio, uint32_t ssid, uint32_t node, const void* table, void* out,
                                   uint32_t flags, uint32_t reserved, uint32_t outLen) {
    (void)reserved;
    constexpr uint32_t kBoundedText = 2;
    const quorvel::Instance at{radio, ssid};
    if (!quorvel::isValid(at)) return quorvel::kInvalidInput;
    const uint32_t bound = (flags & kBoundedText) != 0 ? outLen : quorvel::kUnbounded;
    const quorvel::Binding binding = quorvel::bindingOf(static_cast<const quorvel::MappingRow*>(table), node);
    return static_cast<int32_t>(quorvel::readVariable(binding, at, out, bound));
}
