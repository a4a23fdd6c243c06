// Closes an object's definition. OBJECT_END, when the including file defines it, stands once after the last row.
OBJECT_END
#undef THIS_OBJECT
#undef THIS_DEPTH
#undef THIS_APPLY_EXTRA
#undef PASS_APPLY_EXTRA
#ifdef QUORVEL_NO_OBJECT
#undef OBJECT
#undef QUORVEL_NO_OBJECT
#endif
#ifdef QUORVEL_NO_PARAMETER
#undef PARAMETER
#undef QUORVEL_NO_PARAMETER
#endif
#ifdef QUORVEL_NO_EXTRA_FIELD
#undef EXTRA_FIELD
#undef QUORVEL_NO_EXTRA_FIELD
#endif
#ifdef QUORVEL_NO_OBJECT_END
#undef OBJECT_END
#undef QUORVEL_NO_OBJECT_END
#endif
