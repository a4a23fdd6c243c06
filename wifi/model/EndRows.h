// Closes the reading of definitions that BeginRows.h opened. Included once for each reading, hence no include guard.
#ifndef QUORVEL_CALL
#error "include BeginRows.h and a definition before EndRows.h"
#endif
#undef OBJECT_ROW
#undef PARAMETER_ROW
#undef FIELD_ROW
#undef NODE_ROW
#undef ORDER_ROW
#undef WORD_ROW
#undef SPECIAL_ROW
#undef END_ROW
#undef QUORVEL_CALL
#undef OBJECT
#undef PARAMETER
#undef PARAMETER_AS
#undef EXTRA_FIELD
#undef EXTRA_NODE
#undef ENTRY_BEFORE
#undef SETTER_WORD
#undef SPECIAL_VALUE
#undef OBJECT_END
