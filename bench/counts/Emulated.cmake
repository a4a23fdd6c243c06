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

# The recorder in the plug-in's place, with the plug-in behind it, in a folder of its own.
if(TARGET quorvel_wifi_recorder)
    set(quorvel_recorded_folder ${CMAKE_BINARY_DIR}/bench/recorded)
    file(GENERATE OUTPUT ${quorvel_recorded_folder}/libquorvel_wifi_recorder.conf CONTENT
"QUORVEL_RECORDER_LIBRARY=$<TARGET_FILE:quorvel_wifi>
QUORVEL_RECORDER_FILE=${quorvel_recorded_folder}/count.rec
")
    add_custom_command(OUTPUT ${quorvel_recorded_folder}/libquorvel_wifi.so
        COMMAND ${CMAKE_COMMAND} -E copy $<TARGET_FILE:quorvel_wifi_recorder> ${quorvel_recorded_folder}/libquorvel_wifi.so
        DEPENDS quorvel_wifi_recorder)
    add_custom_target(quorvel_recorded_plugin ALL DEPENDS ${quorvel_recorded_folder}/libquorvel_wifi.so)
endif()

# Adds the library as other options make it, for the comparison in docs/performance.md: `often` for the sources that most calls
# pass through, `rest` for the others, and options for all of them. Its file is in the build's folder bench/<name>.
get_target_property(quorvel_wifi_folder quorvel_wifi SOURCE_DIR)
get_target_property(quorvel_wifi_sources quorvel_wifi SOURCES)
function(quorvel_add_alternative name often rest)
    set(target quorvel_wifi_${name})
    foreach(part often rest)
        set(sources ${quorvel_wifi_sources})
        if(part STREQUAL "often")
            set(sources ${QUORVEL_WIFI_OFTEN_CALLED})
        else()
            list(REMOVE_ITEM sources ${QUORVEL_WIFI_OFTEN_CALLED})
        endif()
        list(TRANSFORM sources PREPEND ${quorvel_wifi_folder}/)
        add_library(${target}_${part} OBJECT EXCLUDE_FROM_ALL ${sources})
        target_link_libraries(${target}_${part} PRIVATE quorvel_wifi_options quorvel_warnings)
        target_compile_options(${target}_${part} PRIVATE ${${part}} ${ARGN})
    endforeach()
    add_library(${target} SHARED EXCLUDE_FROM_ALL
        $<TARGET_OBJECTS:${target}_often> $<TARGET_OBJECTS:${target}_rest>)
    target_link_options(${target} PRIVATE ${QUORVEL_WIFI_LINK_OPTIONS} -nostartfiles ${ARGN})
    target_link_libraries(${target} PRIVATE ${QUORVEL_PLATFORM_LIBRARIES})
    set_target_properties(${target} PROPERTIES OUTPUT_NAME quorvel_wifi
        LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bench/${name})
    add_dependencies(bench_alternatives ${target})
endfunction()

if(NOT QUORVEL_WIFI_OFTEN_CALLED)
    return()
endif()
add_custom_target(bench_alternatives)
quorvel_add_alternative(small -Os -Os)
quorvel_add_alternative(fast -O2 -O2)
quorvel_add_alternative(small-lto -Os -Os -flto)
quorvel_add_alternative(mixed-lto -O2 -Os -flto)
quorvel_add_alternative(mixed-arm -O2 -Os -marm)
