# GoogleTest is built from the system's sources, so that every target gets it.
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
target_compile_options(gtest PRIVATE -O0 -g0)
target_compile_options(gtest_main PRIVATE -O0 -g0)
include(GoogleTest)
# A gathered list of tests costs one run of the program at build time; under emulation at test time only.
set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)
