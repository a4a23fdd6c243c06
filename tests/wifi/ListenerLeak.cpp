// For programs that end a listener: it leaves its receive buffer behind, one a registration; that is accepted.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:qvl_thread_main_loop\n";
}
