// For programs that end a listener. Quirk: it leaves one receive buffer for each registration.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
    return "leak:qvl_thread_main_loop\n";
}
