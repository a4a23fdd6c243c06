// Opens the front ends of one object, for its front-end file:
//   #include "wifi/frontend/BeginFrontEnds.h"
//
//   #include "wifi/QuorvelWiFi<Object>.def"
//
//   #include "wifi/model/EndRows.h"
// defines <Obj>InitContext, <Obj>CheckContextNodeSet, <Obj>ApplyContext, <Obj>InstanceGet, and the getters and setters
// of its rows. Deviations (quorvel::FrontEnds) come before it. Included once for each object, hence no include guard.
#include "wifi/frontend/Pattern.h"
#include "wifi/model/Implementations.h"

#define OBJECT_ROW(prefix, depth, apply, path)                                                                     \
    uint32_t prefix##InitContext(void* ctx) {                                                                      \
        static constexpr auto site = quorvel::siteOf(quorvel::k##prefix##Object, #prefix "InitContext", __LINE__); \
        return quorvel::initContext(ctx, sizeof(prefix##Context), site);                                           \
    }                                                                                                              \
    uint32_t prefix##CheckContextNodeSet(void* ctx, uint32_t node) {                                               \
        static constexpr auto site =                                                                               \
            quorvel::siteOf(quorvel::k##prefix##Object, #prefix "CheckContextNodeSet", __LINE__);                  \
        constexpr uint32_t kLimit = quorvel::model::nodeLimitOf(quorvel::k##prefix##Object);                       \
        return quorvel::FrontEnds<quorvel::k##prefix##Object>::checkNode(ctx, node, kLimit, site);                 \
    }                                                                                                              \
    uint32_t prefix##ApplyContext(void* ctx TRAILING(INSTANCES_##apply)) {                                         \
        static constexpr auto site =                                                                               \
            quorvel::contextSiteOf<quorvel::k##prefix##Object>(#prefix "ApplyContext", __LINE__);                  \
        return quorvel::FrontEnds<quorvel::k##prefix##Object>::applyContext(&prefix##ApplyContextImpl, site,       \
                                                                            ctx TRAILING(PASS_INSTANCES_##apply)); \
    }                                                                                                              \
    uint32_t prefix##InstanceGet(void* ctx TRAILING(INSTANCES_##depth)) {                                          \
        static constexpr auto site =                                                                               \
            quorvel::snapshotSiteOf<quorvel::k##prefix##Object>(#prefix "InstanceGet", __LINE__);                  \
        using FrontEnds = quorvel::FrontEnds<quorvel::k##prefix##Object>;                                          \
        return FrontEnds::snapshot(site, FrontEnds::kGetterWithoutEntry, ctx TRAILING(PASS_INSTANCES_##depth));    \
    }

#define PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, type, ...)                                   \
    WITH_GETTER_##access(uint32_t prefix##stem##Get(LEADING(INSTANCES_##depth) OUTPUT_##type) {                    \
        using Getter = quorvel::Getter<quorvel::model::rowOf(quorvel::k##prefix##Object, node)>;                   \
        static constexpr auto site = Getter::siteOf(#prefix #stem "Get", __LINE__);                                \
        return Getter::get(&prefix##stem##GetImpl, site, LEADING(PASS_INSTANCES_##depth) PASS_OUTPUT_##type);      \
    }) WITH_VALUE_SETTER_##access(uint32_t prefix##stem##Set(void* ctx, LEADING(INSTANCES_##depth) INPUT_##type) { \
        using Setter = quorvel::Setter<quorvel::model::rowOf(quorvel::k##prefix##Object, node)>;                   \
        static constexpr auto site = Setter::siteOf(#prefix #stem "Set", __LINE__);                                \
        return Setter::set(site, ctx, LEADING(PASS_INSTANCES_##depth) PASS_INPUT_##type);                          \
    })

#include "wifi/model/BeginRows.h"
