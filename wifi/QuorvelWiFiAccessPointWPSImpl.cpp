// WPS: the switch, the board-wide mode that follows it, and exchanges.
#include <wlcsm.h>

#include <cstring>

#include "wifi/Log.h"
#include "wifi/Result.h"
#include "wifi/bridge/ManagerText.h"
#include "wifi/bridge/Mapped.h"
#include "wifi/model/Implementations.h"
#include "wifi/parsing/DecimalText.h"
#include "wifi/parsing/Text.h"

using quorvel::kSuccess;
using quorvel::kValueSize;
using quorvel::kWiFiAccessPointWPSObject;

namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiAccessPointWPSImpl";
constexpr char kApply[] = "WiFiAccessPointWPSApplyContextImpl";

// The radios, a bit each, on which this library has switched WPS on since it was loaded. Guarded by the global lock.
uint32_t wpsRadios;

}  // namespace

#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiAccessPointWPS.def"

#include "wifi/model/EndRows.h"

uint32_t WiFiAccessPointWPSEnableGetImpl(uint32_t ap, uint8_t* out) {
    char mode[kValueSize + 1] = {};
    const uint32_t result =
        quorvel::readNode<quorvel::kWiFiAccessPointWPSObject, WiFiAccessPointWPSNode::Enable>(ap, mode, kValueSize);
    if (result != 0) {
        QUORVEL_LOG(Error, __func__, "WPS enable get fail");
        return result;
    }
    *out = strcmp(mode, "disabled") == 0 ? 0 : 1;
    return kSuccess;
}

uint32_t WiFiAccessPointWPSStatusGetImpl(uint32_t, int32_t* out) {
    *out = 0;
    const char* status = wlcsm_nvram_get("wps_proc_status");
    if (status != nullptr) *out = static_cast<int32_t>(quorvel::decimalNumber(status));
    return kSuccess;
}

namespace {

// An access point's marked context, and where its writes go. The manager's results are ignored.
struct Staged {
    WiFiAccessPointWPSContext& context;
    uint32_t ap;
    uint32_t radio;  // from 0
    uint32_t sub;

    [[nodiscard]] bool has(uint32_t node) const {
        return WiFiAccessPointWPSCheckContextNodeSet(&context, node) != 0;
    }
    // Returns whether the host has cleared the mark.
    bool clear(uint32_t node) const {
        return Quorvel_ContextClearMap(&context, node) == 0;
    }
    void write(const char* variable, const char* value) const {
        (void)wlcsm_mngr_set(radio, sub, variable, value);
    }
    void exchange(const char* command) const {
        write("wlWscConfig", command);
        write("wsc_force_restart", "n");
    }
    [[nodiscard]] bool wpsIsEnabled() const {
        uint8_t enabled = 0;
        (void)WiFiAccessPointWPSEnableGetImpl(ap, &enabled);  // an unread switch is off
        if (enabled == 0) {
            QUORVEL_LOG(Error, kApply, "WPS is not enabled.");
        }
        return enabled != 0;
    }
};

void applyEnable(const Staged& staged) {
    const uint32_t bit = staged.radio < 32 ? uint32_t{1} << staged.radio : 0;
    if (staged.context.Enable == 1) {
        staged.write("wlWscMode", "enabled");
        (void)wlcsm_nvram_set("wps_mode", "enabled");
        wpsRadios |= bit;
    } else {
        staged.write("wlWscMode", "disabled");
        wpsRadios &= ~bit;
        if (wpsRadios == 0) (void)wlcsm_nvram_set("wps_mode", "disabled");
    }
    (void)staged.clear(WiFiAccessPointWPSNode::Enable);
}

// Starts the exchange of the staged method.
void startExchange(const Staged& staged) {
    constexpr uint32_t kPinLength = 16;
    char method[sizeof staged.context.Method + 1] = {};
    memcpy(method, staged.context.Method, sizeof staged.context.Method);
    if (strcmp(method, "PushButton") == 0) {
        staged.exchange("client-pbc");
    } else if (strcmp(method, "PIN") == 0) {
        char pin[kPinLength + 1] = {};
        (void)WiFiAccessPointWPSEnrolleePinGetImpl(staged.ap, pin, kPinLength);  // an unread PIN is empty
        const size_t length = strlen(pin);
        if (length == 4 || length == 8) {
            staged.exchange("client-pin");
        } else {
            QUORVEL_LOG(Error, kApply, "Invalid Station Pin Length.");
        }
    } else {
        QUORVEL_LOG(Error, kApply, "Not supported WPSMethod[%s]\n", method);
    }
    staged.write("wlWscAuthoStaMac", nullptr);
}

}  // namespace

uint32_t WiFiAccessPointWPSApplyContextImpl(void* ctx, uint32_t ap) {
    const uint32_t radio = WiFiSystemAccessPointRadioInstanceGet(ap);
    const Staged staged{*static_cast<WiFiAccessPointWPSContext*>(ctx), ap, radio - 1, quorvel::subIndex(ap)};
    if (staged.has(WiFiAccessPointWPSNode::Enable)) applyEnable(staged);
    // Quirk: starts an exchange whatever value is staged.
    if (staged.has(WiFiAccessPointWPSNode::ButtonPush)) {
        if (staged.wpsIsEnabled()) startExchange(staged);
        (void)staged.clear(WiFiAccessPointWPSNode::ButtonPush);
    }
    constexpr auto kRows = static_cast<uint32_t>(quorvel::mappingRowsOf(kWiFiAccessPointWPSObject));
    // Quirk: walks one node more than the table has rows; it is not marked by then, and only a marked node's row is
    // read.
    uint32_t count = kRows + 1;
    if (staged.has(WiFiAccessPointWPSNode::Cancel)) {
        if (staged.wpsIsEnabled()) staged.exchange("cancel");
        // A mark that the host leaves must not lead behind the table.
        if (!staged.clear(WiFiAccessPointWPSNode::Cancel)) count = kRows;
    }
    constexpr quorvel::OwnRow kHeader = quorvel::ownRow(kWiFiAccessPointWPSObject, 0);
    return quorvel::applyOwn(kHeader, radio, ap, ctx, count);
}
