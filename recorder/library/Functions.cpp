#include "recorder/library/Functions.h"

#include <array>
#include <string_view>

#include "wifi/model/Contexts.h"

namespace quorvel::recorder {

constinit const char* const kFunctionNames[kFunctionCount] = {
#define FUNCTION(result, name, parameters, arguments) #name,
#include "wifi/model/ExportedFunctions.def"
};

namespace {

constexpr uint16_t kHeader = kContextHeaderSize;

// The uses in the order of the exported functions: the rows' functions first, then the others.
struct Uses {
    std::array<ContextUse, kFunctionCount> all{};

    constexpr Uses() {
#define OBJECT_ROW(prefix, depth, apply, path)                                 \
    all[kCall_##prefix##InitContext] = {sizeof(prefix##Context), 0, 0, false}; \
    all[kCall_##prefix##CheckContextNodeSet] = {kHeader, 0, 0, true};          \
    all[kCall_##prefix##ApplyContext] = {sizeof(prefix##Context), 0, 0, true}; \
    all[kCall_##prefix##InstanceGet] = {sizeof(prefix##Context), 0, 0, true};
#define PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, type, ...)                            \
    WITH_STAGED_SETTER_##access(all[kCall_##prefix##stem##Set] = {kHeader, offsetof(prefix##Context, name), \
                                                                  sizeof(prefix##Context::name), true};)
#define WITH_STAGED_SETTER_RO(...)
#define WITH_STAGED_SETTER_RW(...) __VA_ARGS__
#define WITH_STAGED_SETTER_WO(...) __VA_ARGS__
#define WITH_STAGED_SETTER_RW_NOW(...)
#define WITH_STAGED_SETTER_RW_COMMAND(...)
#include "wifi/model/DataModel.def"
        all[kCall_WiFiSystemInitContext] = {kHeader, 0, 0, false};
        all[kCall_WiFiSystemCheckContextNodeSet] = {kHeader, 0, 0, true};
        all[kCall_WiFiSystemApplyContext] = {kHeader, 0, 0, true};
        all[kCall_WiFiSystemApplyContextImpl] = {kHeader, 0, 0, true};
        all[kCall_WiFiSystemInstanceGet] = {kHeader, 0, 0, true};
        all[kCall_WiFiAccessPointWPSMethodSet] = {kHeader, offsetof(WiFiAccessPointWPSContext, Method),
                                                  sizeof(WiFiAccessPointWPSContext::Method), true};
        all[kCall_WiFiAccessPointWPSCancel] = {kHeader, 0, 0, true};
    }
};

constexpr Uses kUses;

}  // namespace

constinit const std::array<ContextUse, kFunctionCount> kContextUses = kUses.all;

}  // namespace quorvel::recorder
