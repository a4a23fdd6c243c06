// Opens the implementation functions of one object, for its implementation file: included, like BeginFrontEnds.h,
// before the object's definition and EndRows.h. It defines <Obj><Param>GetImpl of the rows whose reading follows from
// their words; the other functions are written out. An object with COUNTER or CONTENTION rows specialises
// quorvel::Reads before it. Included once for each object, hence no include guard.
#include "wifi/bridge/Reader.h"
#include "wifi/model/Implementations.h"

#define READS_MAPPED(...) __VA_ARGS__
#define READS_BYPASSED(...) __VA_ARGS__
#define READS_INERT(...) __VA_ARGS__
#define READS_COUNTER(...) __VA_ARGS__
#define READS_CONTENTION(...) __VA_ARGS__
#define READS_OWN(...)
#define READS_STATION(...)
#define READS_NONE(...)
#define PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, type, accepted, read, ...)  \
    READS_##read(uint32_t prefix##stem##GetImpl(LEADING(INSTANCES_##depth) OUTPUT_##type) {       \
        return quorvel::Reader<quorvel::model::rowOf(quorvel::k##prefix##Object, node)>::readRow( \
            LEADING(PASS_INSTANCES_##depth) PASS_OUTPUT_##type);                                  \
    })

#include "wifi/model/BeginRows.h"
