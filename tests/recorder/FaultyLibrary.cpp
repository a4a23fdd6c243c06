// Faults for a build of the plug-in whose calls of the platform come through here; QUORVEL_FAULT names the one that
// acts.
#include <quorvel.h>
#include <wlcsm.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "recorder/library/Variadic.h"

namespace {

bool hasFault(const char* name) {
    const char* const fault = std::getenv("QUORVEL_FAULT");
    return fault != nullptr && std::strcmp(fault, name) == 0;
}

// The variable that a swap holds back.
struct Waiting {
    uint32_t radio = 0;
    uint32_t sub = 0;
    const char* name = nullptr;
    std::string value;
};
Waiting waiting;

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names for a wrapped function.
extern "C" {

int32_t __real_wlcsm_mngr_set(uint32_t radio, uint32_t sub, const char* name, const char* value);
uint32_t __real_Quorvel_IsContextSetMap(void* ctx, uint32_t node);
int32_t __real_wlcsm_mngr_sta_info(uint32_t radio, uint32_t sub, const char* mac, void* record);
void __real_Quorvel_LogPrint(uint32_t level, const char* file, const char* function, uint32_t line, const char* format,
                             ...);

int32_t __wrap_wlcsm_mngr_set(uint32_t radio, uint32_t sub, const char* name, const char* value) {
    // The start time is set before: the fault is for the apply.
    const bool starts = std::strcmp(name, "wlBootTime") == 0;
    static bool swaps = false;
    if (!starts && !swaps && hasFault("order")) {
        // The next variable comes first.
        swaps = true;
        waiting = {radio, sub, name, value};
        return 0;
    }
    if (swaps && waiting.name != nullptr) {
        const int32_t code = __real_wlcsm_mngr_set(radio, sub, name, value);
        (void)__real_wlcsm_mngr_set(waiting.radio, waiting.sub, waiting.name, waiting.value.c_str());
        waiting.name = nullptr;
        return code;
    }
    if (!starts && hasFault("missing")) return 0;
    if (!starts && hasFault("extra")) (void)__real_wlcsm_mngr_set(radio, sub, name, value);
    return __real_wlcsm_mngr_set(radio, sub, name, !starts && hasFault("argument") ? "elsewhere" : value);
}

uint32_t __wrap_Quorvel_IsContextSetMap(void* ctx, uint32_t node) {
    const uint32_t marked = __real_Quorvel_IsContextSetMap(ctx, node);
    return hasFault("result") ? 0 : marked;
}

int32_t __wrap_wlcsm_mngr_sta_info(uint32_t radio, uint32_t sub, const char* mac, void* record) {
    const int32_t code = __real_wlcsm_mngr_sta_info(radio, sub, mac, record);
    if (hasFault("output")) static_cast<char*>(record)[100] = 1;
    return code;
}

void __wrap_Quorvel_LogPrint(uint32_t level, const char* file, const char* function, uint32_t line, const char* format,
                             ...) {
    std::va_list list;
    va_start(list, format);
    quorvel::recorder::FormatArguments::Room room;
    const quorvel::recorder::FormatArguments arguments(format, list, room);
    if (hasFault("log") && std::strstr(format, "SUCCESS") != nullptr && std::strncmp(format, "wlcsm_mngr_set", 14) == 0)
        level = 1;
    arguments.call(&__real_Quorvel_LogPrint, level, file, function, line, format);
    va_end(list);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
