#include "wifi/bridge/SpecialValues.h"

#include <quorvel.h>

#include <cstring>
#include <iterator>

#include "wifi/Log.h"
#include "wifi/bridge/Conversion.h"
#include "wifi/parsing/Text.h"

namespace quorvel {
namespace {

using model::SpecialValue;

constexpr const char* kLogFile = "wifi/QuorvelWiFiBaseAPI";

void storeByte(void* out, bool value) {
    *static_cast<uint8_t*>(out) = value ? 1 : 0;
}

void storeWord(void* out, uint32_t value) {
    memcpy(out, &value, sizeof value);
}

}  // namespace

bool readSpecial(SpecialValue special, const char* text, void* out) {
    switch (special) {
        case SpecialValue::kFilterSwitch:
            storeByte(out, !startsWith(text, "disabled"));
            return true;
        case SpecialValue::kFilterListIsEmpty:
            storeByte(out, text[0] == '\0');
            return true;
        case SpecialValue::kFilterAllows:
            storeWord(out, startsWith(text, "allow") ? 1 : 0);
            return true;
        case SpecialValue::kCipher:
            // The last match wins: "tkip+aes" begins with "tkip" too.
            for (const WpaEncryptionPair& pair : wpaEncryptionMapper) {
                if (startsWith(text, pair.manager)) storeWord(out, pair.code);
            }
            return true;
        case SpecialValue::kFilterList:
        case SpecialValue::kNone:
            break;
    }
    return false;
}

bool readAbsent(SpecialValue special, void* out) {
    switch (special) {
        case SpecialValue::kFilterListIsEmpty:
            storeByte(out, true);
            return true;
        case SpecialValue::kFilterList:
            *static_cast<char*>(out) = '\0';
            return true;
        case SpecialValue::kFilterSwitch:
        case SpecialValue::kFilterAllows:
        case SpecialValue::kCipher:
        case SpecialValue::kNone:
            break;
    }
    return false;
}

Writing writeSpecial(SpecialValue special, const char* field, char* text) {
    switch (special) {
        case SpecialValue::kFilterSwitch:
            // Enabling writes nothing: the mode comes with AccessControlFilterAccessAllow.
            if (*field != 0) return Writing::kSkipped;
            copyText(text, kValueSize, "disabled");
            return Writing::kSpecial;
        case SpecialValue::kFilterListIsEmpty:
            // Writes the empty text, which empties the list.
            return *field == 1 ? Writing::kSpecial : Writing::kSkipped;
        case SpecialValue::kFilterAllows:
            copyText(text, kValueSize, wordAt(field) == 1 ? "allow" : "deny");
            return Writing::kSpecial;
        case SpecialValue::kCipher: {
            const uint32_t code = wordAt(field);
            if (code < std::size(wpaEncryptionMapper)) {
                copyText(text, kValueSize, wpaEncryptionMapper[code].manager);
            } else {
                // Quirk: an unknown code is logged, and the empty text is written.
                QUORVEL_LOG(Error, "Quorvel_P_WiFiSpecialCaseSet", "Invalid wpaEncryption[%d]", code);
            }
            return Writing::kSpecial;
        }
        case SpecialValue::kFilterList:
        case SpecialValue::kNone:
            break;
    }
    return Writing::kConverted;
}

}  // namespace quorvel

constinit const WpaEncryptionPair wpaEncryptionMapper[3] = {
#define WPA_ENCRYPTION(code, manager) {code, manager},
#include "wifi/model/Mappers.def"
};
