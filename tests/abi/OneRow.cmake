# A new parameter is one new row: in a copy of the tree that has one more, the library builds, the interface's test says what
# has changed, and after that has been stated it passes. Arguments: SOURCE, WORK, COMPILER, INTERFACE_TEST.
cmake_minimum_required(VERSION 3.25)
set(tree ${WORK}/tree)
set(lists ${WORK}/lists)
file(REMOVE_RECURSE ${WORK})
file(COPY ${SOURCE}/CMakeLists.txt ${SOURCE}/cmake ${SOURCE}/host ${SOURCE}/wifi ${SOURCE}/packaging DESTINATION ${tree})
file(COPY ${SOURCE}/tests/abi/DataModel.txt ${SOURCE}/tests/abi/Exports.txt DESTINATION ${lists})

function(edit file from to)
    file(READ ${file} text)
    string(FIND "${text}" "${from}" place)
    if(place LESS 0)
        message(FATAL_ERROR "${file} has no ${from}")
    endif()
    string(REPLACE "${from}" "${to}" text "${text}")
    file(WRITE ${file} "${text}")
endfunction()

function(run_interface_test status output)
    # The copy is not linked with the platform's libraries.
    execute_process(
        COMMAND ${CMAKE_COMMAND} -E env GTEST_FILTER=-Dependencies.AreThePlatformAndTheCLibrary
            ${INTERFACE_TEST} ${WORK}/build/lib/libquorvel_wifi.so ${lists}
        RESULT_VARIABLE result OUTPUT_VARIABLE printed ERROR_VARIABLE printed)
    set(${status} ${result} PARENT_SCOPE)
    set(${output} "${printed}" PARENT_SCOPE)
endfunction()

edit(${tree}/wifi/QuorvelWiFiSSID.def "OBJECT_END()"
    "PARAMETER(7, Mood, RW, unsignedInt, range(1, 9), MAPPED, UINT32, \"mood\", \"\", \"\")\nOBJECT_END()")

foreach(command IN ITEMS
        "-G;Ninja;-S;${tree};-B;${WORK}/build;-DCMAKE_BUILD_TYPE=Debug;-DCMAKE_CXX_FLAGS_DEBUG=-O0;-DCMAKE_CXX_COMPILER=${COMPILER};-DQUORVEL_BUILD_GATEWAY=OFF;-DQUORVEL_BUILD_CONSOLE=OFF;-DQUORVEL_BUILD_AGENT=OFF;-DQUORVEL_BUILD_WEB=OFF;-DQUORVEL_BUILD_TESTS=OFF"
        "--build;${WORK}/build;--target;quorvel_wifi")
    execute_process(COMMAND ${CMAKE_COMMAND} ${command} RESULT_VARIABLE status OUTPUT_VARIABLE printed ERROR_VARIABLE printed)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "the tree with one more row does not build:\n${printed}")
    endif()
endforeach()

run_interface_test(status printed)
if(status EQUAL 0 OR NOT printed MATCHES "WiFiSSIDMoodGet")
    message(FATAL_ERROR "the interface's test does not name the new getter (status ${status}):\n${printed}")
endif()

file(STRINGS ${lists}/DataModel.txt model REGEX "^model ")
string(REGEX MATCH "^model ([0-9]+) ([0-9]+)$" stated "${model}")
math(EXPR parameters "${CMAKE_MATCH_2} + 1")
edit(${lists}/DataModel.txt "${model}" "model ${CMAKE_MATCH_1} ${parameters}")
edit(${lists}/DataModel.txt "object WiFi.SSID.{i} WiFiSSID 6 344" "object WiFi.SSID.{i} WiFiSSID 7 348")
edit(${lists}/DataModel.txt "\nBSSID s\nSSID s w\n" "\nBSSID s\nSSID s w\nMood u w\n")
run_interface_test(status printed)
if(NOT status EQUAL 0)
    message(FATAL_ERROR "the interface with one more row is not as it was stated:\n${printed}")
endif()
