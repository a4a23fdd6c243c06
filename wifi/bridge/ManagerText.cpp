#include "wifi/bridge/ManagerText.h"

#include <wlcsm.h>

#include "wifi/parsing/DecimalText.h"

namespace quorvel {

void clearValue(char (&text)[kValueSize]) {
#if defined(__arm__) && defined(__ARM_FP)
    // Sixty-four bytes a store: the compiler and the C library make it eight.
    char* to = text;
    asm volatile(
        "vmov d0, %1, %1\n vmov d1, %1, %1\n vmov d2, %1, %1\n vmov d3, %1, %1\n"
        "vmov d4, %1, %1\n vmov d5, %1, %1\n vmov d6, %1, %1\n vmov d7, %1, %1\n"
        ".rept 16\n vstmia %0!, {d0-d7}\n .endr"
        : "+r"(to)
        : "r"(0)
        : "memory", "d0", "d1", "d2", "d3", "d4", "d5", "d6", "d7");
#else
    memset(text, 0, sizeof text);
#endif
}

int32_t ManagerText::number() const {
    return static_cast<int32_t>(decimalNumber(text));
}

bool readManager(uint32_t radio, uint32_t sub, const char* variable, ManagerText& value) {
    return wlcsm_mngr_get(radio, sub, variable, value.text) != 0;
}

}  // namespace quorvel
