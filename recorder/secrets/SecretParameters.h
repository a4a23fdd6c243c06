// Which parameters of the data model are secrets, with their functions, variables and fields.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "wifi/model/Contexts.h"
#include "wifi/model/Rows.h"

namespace quorvel::recorder {

enum class SecretClass : uint8_t {
    kNone,
    kKey,   ///< passphrases, keys, PINs, RADIUS secrets: always replaced
    kSsid,  ///< names of networks: replaced unless they are kept
};

/// Returns the class of a parameter.
constexpr SecretClass secretClassOf(ObjectIndex object, std::string_view name) {
    constexpr std::string_view kSecurity[] = {
        "WEPKey",        "WEPKey2",      "WEPKey3",
        "WEPKey4",       "PreSharedKey", "KeyPassphrase",
        "WEPPassphrase", "RadiusSecret", "SecondaryRadiusSecret",
    };
    if (object == kWiFiAccessPointSecurityObject) {
        for (const std::string_view secret : kSecurity) {
            if (secret == name) return SecretClass::kKey;
        }
    }
    if (object == kWiFiAccessPointWPSObject && (name == "DevicePIN" || name == "EnrolleePin")) return SecretClass::kKey;
    if (object == kWiFiAccessPointAccountingObject && (name == "Secret" || name == "SecondarySecret"))
        return SecretClass::kKey;
    return name == "SSID" ? SecretClass::kSsid : SecretClass::kNone;
}

struct SecretParameter {
    SecretClass secret;
    ObjectIndex object;
    Field field;
    std::string_view getter;
    std::string_view setter;
    std::string_view variable;  ///< of the manager; empty when it has none
};

constexpr size_t countSecretParameters() {
    size_t count = 0;
    for (const model::Parameter& parameter : model::kParameters)
        count += secretClassOf(parameter.object, parameter.name) != SecretClass::kNone ? 1 : 0;
    return count;
}

constexpr auto makeSecretParameters() {
    std::array<SecretParameter, countSecretParameters()> secrets{};
    size_t next = 0;
    for (size_t row = 0; row < std::size(model::kParameters); ++row) {
        const model::Parameter& parameter = model::kParameters[row];
        const SecretClass secret = secretClassOf(parameter.object, parameter.name);
        if (secret == SecretClass::kNone || parameter.type.kind != model::Kind::kString) continue;
        secrets[next++] = {secret,           parameter.object, kFields[row],
                           parameter.getter, parameter.setter, parameter.variable};
    }
    return secrets;
}

inline constexpr auto kSecretParameters = makeSecretParameters();

}  // namespace quorvel::recorder
