#include "wifi/bridge/ManagerText.h"

#include <wlcsm.h>

#include "wifi/parsing/DecimalText.h"

namespace quorvel {

int32_t ManagerText::number() const {
    return static_cast<int32_t>(decimalNumber(text));
}

bool readManager(uint32_t radio, uint32_t sub, const char* variable, ManagerText& value) {
    return wlcsm_mngr_get(radio, sub, variable, value.text) != 0;
}

}  // namespace quorvel
