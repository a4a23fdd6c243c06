// Opens the reading of definitions; EndRows.h closes it. Included once for each reading, hence no include guard.
//
// A definition (wifi/QuorvelWiFi<Object>.def) names its object and lists its rows:
//   #define QUORVEL_OBJECT prefix of its functions, instance numbers of a read, numbers that its apply takes
//   OBJECT(path)                                          first
//   PARAMETER(node, name, access, type, accepted, read, source, variable, unit, remark)    one a parameter, by node
//   PARAMETER_AS(node, name, stem, access, ...)           the same, when its functions are named after `stem`
//   EXTRA_FIELD(type, name)                               a context field without a node, behind the parameters
//   EXTRA_NODE(node, name)                                a node without a parameter
//   ENTRY_BEFORE(name, next)                              the exported table has the row of `name` before that of
//   `next` SETTER_WORD(type, word)                               the table's entries have setters of this type in this
//   word SPECIAL_VALUE(name, value)                            the bridge converts the node as SpecialValue::`value`
//   OBJECT_END()                                          last
// Columns:
//   access    RO, RW (staged), WO (staged, not readable), RW_NOW (its setter acts at once), RW_COMMAND (its setter
//   takes
//             nothing and acts at once; the front end's file writes it out)
//   type      boolean, unsignedInt, int, string(capacity), stationInt (an int whose getter takes a station's MAC text)
//   accepted  any, range(low, high), lengths(one, other) of a text; none without a setter. Booleans are 0 or 1.
//   read      MAPPED (the source variable, converted), BYPASSED (mapped, but the front end reads elsewhere), INERT
//             (success, value untouched), NONE (not readable), OWN and STATION (a function written out in the object's
//             implementation), COUNTER, CONTENTION, RESULT, STATION_TEXT, STATION_NUMBER (one function of the object
//             for all such rows)
//   source    the conversion of the manager's variable, or what the object's function reads
//
// The includer defines the macros for the rows that it needs. Each takes the three words of QUORVEL_OBJECT first:
//   OBJECT_ROW(prefix, depth, apply, path)
//   PARAMETER_ROW(prefix, depth, apply, node, name, stem, access, type, accepted, read, source, variable, unit, remark)
//   FIELD_ROW(..., type, name)  NODE_ROW(..., node, name)  ORDER_ROW(..., name, next)  WORD_ROW(..., type, word)
//   SPECIAL_ROW(..., name, value)  END_ROW(prefix, depth, apply)
#if !defined(OBJECT_ROW) && !defined(PARAMETER_ROW) && !defined(NODE_ROW) && !defined(ORDER_ROW) && \
    !defined(WORD_ROW) && !defined(SPECIAL_ROW)
#error "define a macro for the rows before including BeginRows.h"
#endif
#ifndef OBJECT_ROW
#define OBJECT_ROW(...)
#endif
#ifndef PARAMETER_ROW
#define PARAMETER_ROW(...)
#endif
#ifndef FIELD_ROW
#define FIELD_ROW(...)
#endif
#ifndef NODE_ROW
#define NODE_ROW(...)
#endif
#ifndef ORDER_ROW
#define ORDER_ROW(...)
#endif
#ifndef WORD_ROW
#define WORD_ROW(...)
#endif
#ifndef SPECIAL_ROW
#define SPECIAL_ROW(...)
#endif
#ifndef END_ROW
#define END_ROW(...)
#endif

// Calls a macro after QUORVEL_OBJECT has become its three words.
#define QUORVEL_CALL(macro, ...) macro(__VA_ARGS__)
#define OBJECT(path) QUORVEL_CALL(OBJECT_ROW, QUORVEL_OBJECT, path)
#define PARAMETER(node, name, ...) PARAMETER_AS(node, name, name, __VA_ARGS__)
#define PARAMETER_AS(...) QUORVEL_CALL(PARAMETER_ROW, QUORVEL_OBJECT, __VA_ARGS__)
#define EXTRA_FIELD(type, name) QUORVEL_CALL(FIELD_ROW, QUORVEL_OBJECT, type, name)
#define EXTRA_NODE(node, name) QUORVEL_CALL(NODE_ROW, QUORVEL_OBJECT, node, name)
#define ENTRY_BEFORE(name, next) QUORVEL_CALL(ORDER_ROW, QUORVEL_OBJECT, name, next)
#define SETTER_WORD(type, word) QUORVEL_CALL(WORD_ROW, QUORVEL_OBJECT, type, word)
#define SPECIAL_VALUE(name, value) QUORVEL_CALL(SPECIAL_ROW, QUORVEL_OBJECT, name, value)
#define OBJECT_END() QUORVEL_CALL(END_ROW, QUORVEL_OBJECT)
