// Security: mode names, WEP modes derived from the key's length, and the reset rule.
#include <wlcsm.h>

#include <cstring>

#include "wifi/Log.h"
#include "wifi/QuorvelWiFiAccessPointSecurityImpl.h"
#include "wifi/Result.h"
#include "wifi/bridge/ManagerText.h"
#include "wifi/bridge/Mapped.h"
#include "wifi/model/Implementations.h"
#include "wifi/parsing/Text.h"

using quorvel::kFailed;
using quorvel::kSuccess;
using quorvel::ManagerAddress;
using quorvel::ManagerText;
using quorvel::startsWith;

namespace {

constexpr const char* kLogFile = "wifi/QuorvelWiFiAccessPointSecurityImpl";

// A mode's name at the manager.
constexpr size_t kManagerModeSize = 32;

// Whether a text in a buffer of `size` bytes, which it may fill, is exactly `name`.
bool equals(const char* text, uint32_t size, const char* name) {
    const size_t length = strlen(name);
    return strnlen(text, size) == length && strncmp(text, name, length) == 0;
}

// Reads a variable of which only so many characters count as a mode's buffer has.
void readMode(uint32_t ap, const char* variable, ManagerText& value) {
    const ManagerAddress address(ap);
    (void)quorvel::readManager(address.radio, address.sub, variable, value);
    value.text[kManagerModeSize] = '\0';
}

}  // namespace

#include "wifi/frontend/BeginImplementations.h"

#include "wifi/QuorvelWiFiAccessPointSecurity.def"

#include "wifi/model/EndRows.h"

constinit const AuthModePair authModeMapper[8] = {
#define AUTH_MODE(dataModel, manager) {dataModel, manager},
#include "wifi/model/Mappers.def"
};

uint32_t wlcsm_dm_adjust_security(char* dataModel, uint32_t dataModelLen, char* manager, uint32_t managerLen,
                                  uint8_t loading) {
    if (loading != 0) {
        const char* mode = "open";
        for (const AuthModePair& pair : authModeMapper) {
            if (!equals(dataModel, dataModelLen, pair.dataModel)) continue;
            mode = pair.manager;
            break;
        }
        quorvel::copyText(manager, managerLen, mode);
    } else {
        const char* mode = "None";
        for (const AuthModePair& pair : authModeMapper) {
            if (!equals(manager, managerLen, pair.manager)) continue;
            mode = pair.dataModel;
            break;
        }
        quorvel::copyText(dataModel, dataModelLen, mode);
    }
    const quorvel::LoggedText<quorvel::kValueSize> dataModelText(dataModel, dataModelLen);
    const quorvel::LoggedText<quorvel::kValueSize> managerText(manager, managerLen);
    QUORVEL_LOG(Traffic, __func__, "dm_value[%s], wlmngr_value[%s], loading[%u]\n", dataModelText.text,
                managerText.text, loading);
    return kSuccess;
}

// Quirk: reads the passphrase, not the key that was written.
uint32_t WiFiAccessPointSecurityPreSharedKeyGetImpl(uint32_t ap, char* buf, uint32_t len) {
    return WiFiAccessPointSecurityKeyPassphraseGetImpl(ap, buf, len);
}

namespace {

// Names the WEP mode by the length of the selected key.
uint32_t wepMode(uint32_t ap, char* buf, uint32_t len) {
    const char* function = "WiFiAccessPointSecurityModeEnabledGetImpl";
    constexpr uint32_t kKeyLength = 16;
    uint32_t index = 1;
    (void)WiFiAccessPointSecurityWEPIndexGetImpl(ap, &index);  // an unread index is the first
    char key[kKeyLength + 1] = {};
    // An unread key is empty.
    switch (index) {
        case 1:
            (void)WiFiAccessPointSecurityWEPKeyGetImpl(ap, key, kKeyLength);
            break;
        case 2:
            (void)WiFiAccessPointSecurityWEPKey2GetImpl(ap, key, kKeyLength);
            break;
        case 3:
            (void)WiFiAccessPointSecurityWEPKey3GetImpl(ap, key, kKeyLength);
            break;
        case 4:
            (void)WiFiAccessPointSecurityWEPKey4GetImpl(ap, key, kKeyLength);
            break;
        default:
            QUORVEL_LOG(Error, function, "Invalid keyIdx[%d]", index);
    }
    const size_t length = strlen(key);
    if (length == 5) {
        quorvel::copyText(buf, len, "WEP-64");
    } else if (length == 13) {
        quorvel::copyText(buf, len, "WEP-128");
    } else {
        QUORVEL_LOG(Error, function, "Invalid key[%s], length[%d]", key, static_cast<int>(length));
        return kFailed;
    }
    return kSuccess;
}

}  // namespace

uint32_t WiFiAccessPointSecurityModeEnabledGetImpl(uint32_t ap, char* buf, uint32_t len) {
    ManagerText value;
    readMode(ap, "wlWep", value);
    if (startsWith(value.text, "enabled")) return wepMode(ap, buf, len);
    if (!startsWith(value.text, "disabled")) {
        QUORVEL_LOG(Error, __func__, "Invalid %s value: %s", "wlWep", value.text);
        return kFailed;
    }
    value = {};
    readMode(ap, "wlAuthMode", value);
    return wlcsm_dm_adjust_security(buf, len, value.text, kManagerModeSize, 0);
}

namespace {

// Stages ModeEnabled "None", unless the access point's mode is an enterprise one or cannot be read.
void stageReset(WiFiAccessPointSecurityContext& context, uint32_t ap) {
    const char* function = "WiFiAccessPointSecurityApplyContextImpl";
    char mode[31] = {};
    if (WiFiAccessPointSecurityModeEnabledGetImpl(ap, mode, sizeof mode) != 0) {
        QUORVEL_LOG(Error, function, "WiFiAccessPointSecurityModeEnabledGetImpl fail.");
        return;
    }
    for (const char* enterprise : {"WPA-Enterprise", "WPA2-Enterprise", "WPA-WPA2-Enterprise"}) {
        if (strcmp(mode, enterprise) != 0) continue;
        QUORVEL_LOG(Error, function,
                    "WiFi.AccessPoint.Security.Reset is not allowed to set when modeEnabled[%s] is Enterprise type",
                    mode);
        return;
    }
    memset(context.ModeEnabled, 0, sizeof context.ModeEnabled);
    quorvel::copyText(context.ModeEnabled, sizeof context.ModeEnabled, "None");
    (void)Quorvel_ContextSetMap(&context, WiFiAccessPointSecurityNode::ModeEnabled);  // an initialised context takes it
}

void applyMode(const WiFiAccessPointSecurityContext& context, uint32_t ap) {
    const ManagerAddress address(ap);
    char mode[sizeof context.ModeEnabled + 1] = {};
    memcpy(mode, context.ModeEnabled, sizeof context.ModeEnabled);
    // The manager's results are ignored. Quirk: a name that only begins like a WEP mode is taken for one.
    if (startsWith(mode, "WEP-64") || startsWith(mode, "WEP-128")) {
        (void)wlcsm_mngr_set(address.radio, address.sub, "wlWep", "enabled");
        (void)wlcsm_mngr_set(address.radio, address.sub, "wlAuthMode", "open");
        return;
    }
    (void)wlcsm_mngr_set(address.radio, address.sub, "wlWep", "disabled");
    char managerMode[kManagerModeSize] = {};
    (void)wlcsm_dm_adjust_security(mode, sizeof mode, managerMode, sizeof managerMode, 1);  // always 0
    (void)wlcsm_mngr_set(address.radio, address.sub, "wlAuthMode", managerMode);
}

}  // namespace

uint32_t WiFiAccessPointSecurityApplyContextImpl(void* ctx, uint32_t ap) {
    auto& context = *static_cast<WiFiAccessPointSecurityContext*>(ctx);
    if (WiFiAccessPointSecurityCheckContextNodeSet(ctx, WiFiAccessPointSecurityNode::Reset) != 0) {
        if (context.Reset == 1) stageReset(context, ap);
        (void)Quorvel_ContextClearMap(ctx, WiFiAccessPointSecurityNode::Reset);
    }
    // Marked by a Set or by the reset, which overrules it.
    if (WiFiAccessPointSecurityCheckContextNodeSet(ctx, WiFiAccessPointSecurityNode::ModeEnabled) != 0) {
        applyMode(context, ap);
        (void)Quorvel_ContextClearMap(ctx, WiFiAccessPointSecurityNode::ModeEnabled);
    }
    return quorvel::applyMapped<quorvel::kWiFiAccessPointSecurityObject>(ap, ctx);
}
