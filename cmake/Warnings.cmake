# quorvel_warnings: linked privately by every target of the project.
add_library(quorvel_warnings INTERFACE)
target_compile_options(quorvel_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
# GCC 12 takes the library's own string concatenation for an overlapping copy at -O3.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(quorvel_warnings INTERFACE -Wno-restrict)
endif()
# With the sanitizers it takes the library's own regular expressions for uninitialised.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND QUORVEL_SANITIZE)
    target_compile_options(quorvel_warnings INTERFACE -Wno-maybe-uninitialized)
endif()
