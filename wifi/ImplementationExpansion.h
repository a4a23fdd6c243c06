// Defines an object's implementation functions that follow from its definition: the mapped reads and the inert ones.
// Included once by each implementation file, after it has named the definition as QUORVEL_DEFINITION.
#include "wifi/QuorvelWiFiInternal.h"

// The front ends of mapped rows read without these; they are for who needs a value under the lock.
#define IMPL_MAPPED(node, name, type)                                                                    \
    uint32_t FUNCTION(name, GetImpl)(INSTANCES OUTPUT_##type) {                                          \
        return quorvel::readMapped(quorvel::QUORVEL_CAT3(k, THIS_OBJECT, Object), MAPPED_INSTANCE, node, \
                                   PASS_OUTPUT_##type);                                                  \
    }
#define IMPL_BYPASSED(node, name, type) IMPL_MAPPED(node, name, type)
// Success without a word written: what the caller's output held stays.
#define IMPL_INERT(node, name, type)                                          \
    uint32_t FUNCTION(name, GetImpl)(UNUSED_INSTANCES UNUSED_OUTPUT_##type) { \
        return 0;                                                             \
    }
#define IMPL_OWN(node, name, type)
#define IMPL_STATION(node, name, type)
#define IMPL_NONE(node, name, type)
#define IMPL_COUNTER(node, name, type) QUORVEL_COUNTER(node, name, type)
#define IMPL_RESULT(node, name, type) QUORVEL_RESULT(node, name, type)
#define IMPL_STATION_TEXT(node, name, type) QUORVEL_STATION_TEXT(node, name, type)
#define IMPL_STATION_NUMBER(node, name, type) QUORVEL_STATION_NUMBER(node, name, type)
#define PARAMETER(node, name, access, type, accepted, read, ...) IMPL_##read(node, name, type)
#include QUORVEL_DEFINITION
#undef PARAMETER

// An apply that has nothing to write: staged values are dropped.
#ifdef QUORVEL_INERT_APPLY
#define OBJECT(...)                                                           \
    uint32_t OBJECT_FUNCTION(ApplyContextImpl)(void* UNUSED_LAST_INSTANCES) { \
        return 0;                                                             \
    }
#include QUORVEL_DEFINITION
#undef OBJECT
#endif
