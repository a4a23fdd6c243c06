// Opens an object's definition. Included once by every definition file, hence no include guard.
//
// A definition is a list of rows:
//   OBJECT(index, path, parameters, contextSize, nodeLimit)           once, first
//   PARAMETER(node, name, access, type, accepted, read, source, variable, unit, remark)   one a parameter, by node
//   EXTRA_FIELD(type, name)                                           context fields without a node, last
// Who includes it defines the rows it wants and finds THIS_OBJECT and THIS_DEPTH in them. Columns:
//   access    RO, RW (staged), WO (staged, not readable), RW_NOW (its setter acts at once)
//   type      boolean, unsignedInt, int, string(capacity)
//   accepted  any, range(low, high), lengths(one, other) of a text; none without a setter. Booleans are 0 or 1.
//   read      MAPPED (the source variable, converted), BYPASSED (mapped, but the front end reads elsewhere),
//             OWN (its own function), INERT (success, value untouched), STATION (takes a station's MAC text), NONE;
//             COUNTER, RESULT, STATION_TEXT, STATION_NUMBER: by the object
//   source    the conversion of the manager's variable, or what the object reads
#if !defined(OBJECT) && !defined(PARAMETER) && !defined(EXTRA_FIELD)
#error "define OBJECT, PARAMETER or EXTRA_FIELD before including a definition"
#endif
#ifndef OBJECT
#define OBJECT(...)
#define QUORVEL_NO_OBJECT
#endif
#ifndef PARAMETER
#define PARAMETER(...)
#define QUORVEL_NO_PARAMETER
#endif
#ifndef EXTRA_FIELD
#define EXTRA_FIELD(...)
#define QUORVEL_NO_EXTRA_FIELD
#endif
#ifndef OBJECT_END
#define OBJECT_END
#define QUORVEL_NO_OBJECT_END
#endif
// What an object's apply takes after the instances, declared and as an argument.
#define THIS_APPLY_EXTRA
#define PASS_APPLY_EXTRA
