// Defines an object's front ends from its definition. Included once by each front-end file, after it has named the
// definition as QUORVEL_DEFINITION; a front end that the file writes out itself is left out with
//   QUORVEL_OWN_CHECK, QUORVEL_OWN_APPLY, QUORVEL_OWN_SNAPSHOT
//   <Obj>CheckContextNodeSet, <Obj>ApplyContext, <Obj>InstanceGet
// QUORVEL_GETTER_WITHOUT_ENTRY is the one text getter of the object, if any, of which the exported table has the setter
// alone.
#include "wifi/FrontEnd.h"
#include "wifi/Snapshot.h"

// Context functions.
#define OBJECT(...)                                               \
    uint32_t OBJECT_FUNCTION(InitContext)(void* ctx) {            \
        QUORVEL_SITE(QUORVEL_TEXT(OBJECT_FUNCTION(InitContext))); \
        return quorvel::initContext(ctx, site);                   \
    }
#include QUORVEL_DEFINITION
#undef OBJECT

#ifndef QUORVEL_OWN_CHECK
#define OBJECT(...)                                                                                   \
    uint32_t OBJECT_FUNCTION(CheckContextNodeSet)(void* ctx, uint32_t node) {                         \
        QUORVEL_RECORD(quorvel::NodeCheck, check, QUORVEL_TEXT(OBJECT_FUNCTION(CheckContextNodeSet)), \
                       quorvel::QUORVEL_CAT3(k, THIS_OBJECT, NodeLimit));                             \
        return quorvel::checkContextNodeSet(ctx, node, check);                                        \
    }
#include QUORVEL_DEFINITION
#undef OBJECT
#endif

#ifndef QUORVEL_OWN_APPLY
#define OBJECT(...)                                                                                                \
    uint32_t OBJECT_FUNCTION(ApplyContext)(void* ctx LAST_INSTANCES THIS_APPLY_EXTRA) {                            \
        QUORVEL_SITE(QUORVEL_TEXT(OBJECT_FUNCTION(ApplyContext)));                                                 \
        if (const uint32_t result = quorvel::beginApply(ctx, site)) return result;                                 \
        return quorvel::endApply(ctx, OBJECT_FUNCTION(ApplyContextImpl)(ctx PASS_LAST_INSTANCES PASS_APPLY_EXTRA), \
                                 site);                                                                            \
    }
#include QUORVEL_DEFINITION
#undef OBJECT
#endif

// Getters.
#define MINIMUM_boolean
#define MINIMUM_unsignedInt
#define MINIMUM_int
#define MINIMUM_string(capacity) capacity,
#define DEFINE_GET(node, name, type)                                                                           \
    uint32_t FUNCTION(name, Get)(INSTANCES OUTPUT_##type) {                                                    \
        QUORVEL_SITE(QUORVEL_TEXT(FUNCTION(name, Get)));                                                       \
        return quorvel::get(PASS_INSTANCES PASS_OUTPUT_##type, &FUNCTION(name, GetImpl), MINIMUM_##type site); \
    }
// The mapped ones need no function of their own behind them.
#define GET_MAPPED(node, name, type)                                                                       \
    uint32_t FUNCTION(name, Get)(INSTANCES OUTPUT_##type) {                                                \
        QUORVEL_RECORD(quorvel::Mapped, mapped, QUORVEL_TEXT(FUNCTION(name, Get)), CAPACITY_##type, node); \
        return quorvel::getMapped(MAPPED_INSTANCE, PASS_OUTPUT_##type, mapped);                            \
    }
#define GET_OWN(node, name, type) DEFINE_GET(node, name, type)
// The inert ones neither.
#define INERT_boolean out
#define INERT_unsignedInt out
#define INERT_int out
#define INERT_string(capacity) buf, len, capacity
#define GET_INERT(node, name, type)                                \
    uint32_t FUNCTION(name, Get)(UNUSED_INSTANCES OUTPUT_##type) { \
        QUORVEL_SITE(QUORVEL_TEXT(FUNCTION(name, Get)));           \
        return quorvel::getInert(INERT_##type, site);              \
    }
#define GET_COUNTER(node, name, type) DEFINE_GET(node, name, type)
#define GET_RESULT(node, name, type) DEFINE_GET(node, name, type)
#define GET_STATION_TEXT(node, name, type) DEFINE_GET(node, name, type)
#define GET_STATION_NUMBER(node, name, type) DEFINE_GET(node, name, type)
#define GET_STATION(node, name, type)                                               \
    uint32_t FUNCTION(name, Get)(uint32_t ap, const char* mac, int32_t* out) {      \
        QUORVEL_SITE(QUORVEL_TEXT(FUNCTION(name, Get)));                            \
        return quorvel::getOfStation(ap, mac, out, &FUNCTION(name, GetImpl), site); \
    }
#define GET_BYPASSED(node, name, type)
#define GET_NONE(node, name, type)
#define PARAMETER(node, name, access, type, accepted, read, ...) GET_##read(node, name, type)
#include QUORVEL_DEFINITION
#undef PARAMETER

// Setters.
#define STAGE_boolean quorvel::stageByte
#define STAGE_unsignedInt quorvel::stageWord
#define STAGE_int quorvel::stageWord
#define STAGE_string(capacity) quorvel::stageText
#define STAGED_boolean value
#define STAGED_unsignedInt value
#define STAGED_int static_cast<uint32_t>(value)
#define STAGED_string(capacity) src, len
#define HIGHEST_boolean 1
#define HIGHEST_unsignedInt quorvel::kNoLimit
#define HIGHEST_int quorvel::kNoLimit
#define HIGHEST_string(capacity) quorvel::kNoLimit
#define SET_RO(node, name, type, accept)
#define SET_RW(node, name, type, accept)                                                   \
    uint32_t FUNCTION(name, Set)(void* ctx, UNUSED_INSTANCES INPUT_##type) {               \
        QUORVEL_RECORD(quorvel::Staging, staging, QUORVEL_TEXT(FUNCTION(name, Set)), node, \
                       offsetof(OBJECT_CONTEXT, name), sizeof(OBJECT_CONTEXT::name),       \
                       quorvel::atMost(quorvel::accepted::accept, HIGHEST_##type));        \
        return STAGE_##type(ctx, STAGED_##type, staging);                                  \
    }
#define SET_WO(node, name, type, accept) SET_RW(node, name, type, accept)
#define SET_RW_NOW(node, name, type, accept)
#define PARAMETER(node, name, access, type, accepted, ...) SET_##access(node, name, type, accepted)
#include QUORVEL_DEFINITION
#undef PARAMETER

// Snapshot.
#ifndef QUORVEL_OWN_SNAPSHOT
#ifndef QUORVEL_GETTER_WITHOUT_ENTRY
#define QUORVEL_GETTER_WITHOUT_ENTRY nullptr
#endif
#define FIELD_KIND_boolean quorvel::kBooleanField
#define FIELD_KIND_unsignedInt quorvel::kUnsignedField
#define FIELD_KIND_int quorvel::kIntField
#define FIELD_KIND_string(capacity) capacity
#define SNAPSHOT_(name, type) {offsetof(OBJECT_CONTEXT, name), FIELD_KIND_##type},
#define SNAPSHOT_MAPPED(name, type) SNAPSHOT_(name, type)
#define SNAPSHOT_BYPASSED(name, type) SNAPSHOT_(name, type)
#define SNAPSHOT_OWN(name, type) SNAPSHOT_(name, type)
#define SNAPSHOT_INERT(name, type) SNAPSHOT_(name, type)
#define SNAPSHOT_COUNTER(name, type) SNAPSHOT_(name, type)
#define SNAPSHOT_RESULT(name, type) SNAPSHOT_(name, type)
#define SNAPSHOT_STATION_TEXT(name, type) SNAPSHOT_(name, type)
#define SNAPSHOT_STATION_NUMBER(name, type) SNAPSHOT_(name, type)
#define SNAPSHOT_STATION(name, type) {0, quorvel::kSkippedField},
#define SNAPSHOT_NONE(name, type) {0, quorvel::kSkippedField},
#define SNAPSHOT_INSTANCES_0 0, 0
#define SNAPSHOT_INSTANCES_1 i, 0
#define SNAPSHOT_INSTANCES_2 i, j
#define SNAPSHOT_INSTANCES QUORVEL_CAT(SNAPSHOT_INSTANCES_, THIS_DEPTH)
#define OBJECT(...)                                                   \
    uint32_t OBJECT_FUNCTION(InstanceGet)(void* ctx LAST_INSTANCES) { \
        static constexpr quorvel::SnapshotStep steps[] = {
#define PARAMETER(node, name, access, type, accepted, read, ...) SNAPSHOT_##read(name, type)
#define OBJECT_END                                                                                        \
    }                                                                                                     \
    ;                                                                                                     \
    QUORVEL_RECORD(quorvel::Snapshot, snapshot, QUORVEL_TEXT(OBJECT_FUNCTION(InstanceGet)), THIS_DEPTH,   \
                   quorvel::firstRowOf(quorvel::QUORVEL_CAT3(k, THIS_OBJECT, Object)), std::size(steps)); \
    return quorvel::takeSnapshot(ctx, SNAPSHOT_INSTANCES, steps, snapshot, QUORVEL_GETTER_WITHOUT_ENTRY); \
    }
#include QUORVEL_DEFINITION
#undef OBJECT
#undef PARAMETER
#undef OBJECT_END
#endif
