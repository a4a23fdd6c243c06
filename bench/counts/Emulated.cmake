# The program whose instructions instructions.py counts. It is run with the do-nothing platform in place of the platform's
# two libraries, whose own start would be most of what the emulator logs.
add_compile_options(-O2)

# Adds a do-nothing platform whose libraries are in the build's folder bench/<folder>.
function(quorvel_add_null_platform target folder)
    add_library(${target} SHARED NullPlatform.cpp)
    target_include_directories(${target} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
    target_link_libraries(${target} PRIVATE quorvel_platform quorvel_warnings ${CMAKE_DL_LIBS})
    add_library(${target}_wlcsm SHARED ${PROJECT_SOURCE_DIR}/bench/Empty.cpp)
    set_target_properties(${target} PROPERTIES OUTPUT_NAME quorvel)
    set_target_properties(${target}_wlcsm PROPERTIES OUTPUT_NAME wlcsm)
    set_target_properties(${target} ${target}_wlcsm PROPERTIES
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bench/${folder})
    target_link_options(${target} PRIVATE -static-libgcc -static-libstdc++)
    target_link_options(${target}_wlcsm PRIVATE -static-libgcc -static-libstdc++)
    add_dependencies(${target} ${target}_wlcsm)
endfunction()

quorvel_add_null_platform(quorvel_null_platform counting)
quorvel_add_null_platform(quorvel_uncounted_platform plain)
target_compile_definitions(quorvel_uncounted_platform PRIVATE QUORVEL_BENCH_UNCOUNTED)

# Loaded where it was linked, so that the address of its mark is known.
add_executable(bench_emulated Emulated.cpp Operations.cpp WholeModel.cpp)
target_include_directories(bench_emulated PRIVATE ${PROJECT_SOURCE_DIR}/wifi)
target_compile_options(bench_emulated PRIVATE -fno-pie)
target_link_options(bench_emulated PRIVATE -no-pie -static-libgcc -static-libstdc++)
target_link_libraries(bench_emulated PRIVATE
    quorvel_platform quorvel_null_platform quorvel_wifi quorvel_warnings)
add_dependencies(bench_emulated quorvel_uncounted_platform)
set_target_properties(bench_emulated PROPERTIES POSITION_INDEPENDENT_CODE OFF)
