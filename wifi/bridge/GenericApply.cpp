// Writes of the manager's variables.
#include <quorvel.h>
#include <wlcsm.h>

#include <cstring>

#include "wifi/Log.h"
#include "wifi/Platform.h"
#include "wifi/QuorvelWiFiExports.h"
#include "wifi/Result.h"
#include "wifi/bridge/Binding.h"
#include "wifi/bridge/Conversion.h"
#include "wifi/bridge/ManagerText.h"
#include "wifi/bridge/Mapped.h"
#include "wifi/bridge/SpecialValues.h"

namespace quorvel {
namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiBaseAPI";
constexpr const char* kFunction = "Quorvel_P_WiFiApplyContext";

// Where writes go, indices from 0.
struct Target {
    uint32_t radio;
    uint32_t ssid;
};

// Makes the text of a node's field, in a cleared buffer. Returns whether it is to be written.
bool makeText(const Binding& binding, const Target& target, const char* field, char* text) {
    const Writing writing = writeSpecial(binding.special, field, text);
    if (writing != Writing::kConverted) {
        const bool doAction = writing == Writing::kSpecial;
        QUORVEL_LOG(Traffic, "Quorvel_P_WiFiSpecialCaseSet",
                    "SpecialCaseHit: objIdx[%d], nodeIdx[%d], value[%s], doAction[%d]", binding.object, binding.node,
                    text, doAction);
        return doAction;
    }
    if (convertField(binding.conversion, field, binding.fieldSize, text)) return true;
    QUORVEL_LOG(Error, kFunction, "Invalid nodeType[%s] for radio[%d], ssid[%d], varName[%s].", binding.conversionName,
                target.radio, target.ssid, binding.variable);
    return false;
}

// A mapping table, a caller's or one of the library's own.
struct Table {
    const MappingRow* foreign;  // null for an own one
    OwnRow header;

    [[nodiscard]] Binding bindingOf(uint32_t node) const {
        if (foreign != nullptr) return quorvel::bindingOf(foreign, node);
        return quorvel::bindingOf(OwnRow{static_cast<uint8_t>(header.number + node), header.scope});
    }
};

// Writes one marked node.
[[gnu::noinline]] void applyNode(const Target& target, const char* ctx, const Table& table, uint32_t node) {
    const Binding binding = table.bindingOf(node);
    const char* variable = binding.variable;
    if (variable[0] == '\0') {
        QUORVEL_LOG(Error, kFunction, " No direct wlmgnr mapping for node[%d].", node);
        return;
    }
    // One byte more than a value, so that a foreign table's longest text is terminated.
    struct {
        alignas(32) char text[kValueSize];
        char end;
    } buffer;
    clearValue(buffer.text);
    buffer.end = '\0';
    if (!makeText(binding, target, ctx + binding.field, buffer.text)) return;
    if (wlcsm_mngr_set(target.radio, target.ssid, variable, buffer.text) == 0) {
        QUORVEL_LOG(Traffic, kFunction, "wlcsm_mngr_set: radio[%d], ssid[%d], varName[%s] value[%s] SUCCESS.",
                    target.radio, target.ssid, variable, buffer.text);
    } else {
        QUORVEL_LOG(Error, kFunction, "wlcsm_mngr_set: radio[%d], ssid[%d], varName[%s] value[%s] FAIL.", target.radio,
                    target.ssid, variable, buffer.text);
    }
}

uint32_t applyMarked(uint32_t radio, uint32_t ssid, void* ctx, const Table& table, uint32_t count) {
    if (!instancesAreValid(radio, ssid)) {
        QUORVEL_LOG(Error, kFunction, "Invalid radioIdx[%u] or ssidIdx[%u]", radio, ssid);
        return kInvalidInput;
    }
    const Target target{radio - 1, subIndex(ssid)};
    // One pointer for all nodes.
    const auto isSet = kPlatform.isContextSetMap;
    // In increasing order: of two nodes that share a variable, the higher one's text stays.
    for (uint32_t node = 1; node < count; ++node) {
        if (isSet(ctx, node) != 0) applyNode(target, static_cast<const char*>(ctx), table, node);
    }
    QUORVEL_LOG(Trace, kFunction, "%s DONE", kFunction);
    return kSuccess;
}

}  // namespace

uint32_t applyOwn(OwnRow header, uint32_t radio, uint32_t ssid, void* ctx, uint32_t count) {
    return applyMarked(radio, ssid, ctx, {nullptr, header}, count);
}

}  // namespace quorvel

uint32_t Quorvel_P_WiFiApplyContext(uint32_t radio, uint32_t ssid, void* ctx, const void* table, uint32_t count) {
    return quorvel::applyMarked(radio, ssid, ctx, {static_cast<const quorvel::MappingRow*>(table), {}}, count);
}
