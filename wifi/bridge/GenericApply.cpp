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
    const Writing writing = writeSpecial(binding.facts.special, field, text);
    if (writing != Writing::kConverted) {
        const bool doAction = writing == Writing::kSpecial;
        QUORVEL_LOG(Traffic, "Quorvel_P_WiFiSpecialCaseSet",
                    "SpecialCaseHit: objIdx[%d], nodeIdx[%d], value[%s], doAction[%d]", binding.object, binding.node,
                    text, doAction);
        return doAction;
    }
    if (convertField(binding.facts.conversion, field, binding.facts.fieldSize, text)) return true;
    QUORVEL_LOG(Error, kFunction, "Invalid nodeType[%s] for radio[%d], ssid[%d], varName[%s].", binding.row->conversion,
                target.radio, target.ssid, binding.row->variable);
    return false;
}

// Writes one marked node.
[[gnu::noinline]] void applyNode(const Target& target, const char* ctx, const MappingRow* rows, uint32_t node) {
    const char* variable = rows[node].variable;
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
    if (!makeText(bindingOf(rows, node), target, ctx + rows[node].field, buffer.text)) return;
    if (wlcsm_mngr_set(target.radio, target.ssid, variable, buffer.text) == 0) {
        QUORVEL_LOG(Traffic, kFunction, "wlcsm_mngr_set: radio[%d], ssid[%d], varName[%s] value[%s] SUCCESS.",
                    target.radio, target.ssid, variable, buffer.text);
    } else {
        QUORVEL_LOG(Error, kFunction, "wlcsm_mngr_set: radio[%d], ssid[%d], varName[%s] value[%s] FAIL.", target.radio,
                    target.ssid, variable, buffer.text);
    }
}

}  // namespace
}  // namespace quorvel

uint32_t Quorvel_P_WiFiApplyContext(uint32_t radio, uint32_t ssid, void* ctx, const void* table, uint32_t count) {
    using quorvel::kLogFile;
    if (!quorvel::instancesAreValid(radio, ssid)) {
        QUORVEL_LOG(Error, __func__, "Invalid radioIdx[%u] or ssidIdx[%u]", radio, ssid);
        return quorvel::kInvalidInput;
    }
    const quorvel::Target target{radio - 1, quorvel::subIndex(ssid)};
    const auto* rows = static_cast<const quorvel::MappingRow*>(table);
    // One pointer for all nodes.
    const auto isSet = quorvel::kPlatform.isContextSetMap;
    // In increasing order: of two nodes that share a variable, the higher one's text stays.
    for (uint32_t node = 1; node < count; ++node) {
        if (isSet(ctx, node) != 0) quorvel::applyNode(target, static_cast<const char*>(ctx), rows, node);
    }
    QUORVEL_LOG(Trace, __func__, "%s DONE", __func__);
    return quorvel::kSuccess;
}
