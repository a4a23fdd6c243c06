#include "recorder/library/Imports.h"

#include "recorder/library/Replacements.h"

namespace quorvel::recorder {

Import imports[kImportCount] = {
#define PLATFORM_CALL(name) {#name, reinterpret_cast<void*>(&replacement::name), nullptr},
#include "recorder/format/PlatformCalls.def"
};

const char* nameOfNumber(uint16_t number) {
    if (number < kFunctionCount) return kFunctionNames[number];
    return number < kCallbackNumber ? imports[number - kFunctionCount].name : "callback";
}

}  // namespace quorvel::recorder
