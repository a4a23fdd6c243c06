# What the packaging tests share. They get SOURCE, BUILD, WORK (a folder of their own) and the installation folders.
cmake_minimum_required(VERSION 3.25)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

# Runs a command that must succeed and stores what it prints.
function(run output)
    execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE printed ERROR_VARIABLE errors RESULT_VARIABLE status
        OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT status EQUAL 0)
        list(JOIN ARGN " " command)
        message(FATAL_ERROR "'${command}' ended with ${status}:\n${printed}\n${errors}")
    endif()
    set(${output} "${printed}" PARENT_SCOPE)
endfunction()

function(expect_equal what actual expected)
    if(NOT "${actual}" STREQUAL "${expected}")
        message(FATAL_ERROR "${what} is\n${actual}\ninstead of\n${expected}")
    endif()
endfunction()

# The numbers of objects and parameters, which the interface's test states.
function(stated_numbers objects parameters)
    file(STRINGS ${SOURCE}/tests/abi/DataModel.txt stated REGEX "^model ")
    string(REGEX MATCH "^model ([0-9]+) ([0-9]+)$" stated "${stated}")
    set(${objects} ${CMAKE_MATCH_1} PARENT_SCOPE)
    set(${parameters} ${CMAKE_MATCH_2} PARENT_SCOPE)
endfunction()

# Installs components (all when none is named) below a folder that stands for the root.
function(install_below root)
    if(NOT ARGN)
        run(printed ${CMAKE_COMMAND} -E env DESTDIR=${root} ${CMAKE_COMMAND} --install ${BUILD} --prefix /usr)
    endif()
    foreach(component IN LISTS ARGN)
        run(printed ${CMAKE_COMMAND} -E env DESTDIR=${root}
            ${CMAKE_COMMAND} --install ${BUILD} --prefix /usr --component ${component})
    endforeach()
endfunction()

# Lists files and links below a folder, one a line, links with what they lead to.
function(list_files root output)
    run(files sh -c "cd '${root}' && find . '(' -type f -printf '%P\\n' ')' -o '(' -type l -printf '%P -> %l\\n' ')' | LC_ALL=C sort")
    set(${output} "${files}" PARENT_SCOPE)
endfunction()

# Reads the manifests of components, for the installation folders of this build.
function(read_manifests output)
    set(text "")
    foreach(component IN LISTS ARGN)
        file(READ ${SOURCE}/packaging/manifest-${component}.txt of_component)
        string(REGEX REPLACE "#[^\n]*\n" "" of_component "${of_component}")
        string(APPEND text "${of_component}")
    endforeach()
    string(CONFIGURE "${text}" text @ONLY)
    file(WRITE ${WORK}/expected.txt "${text}")
    run(sorted ${CMAKE_COMMAND} -E env LC_ALL=C sort ${WORK}/expected.txt)
    set(${output} "${sorted}" PARENT_SCOPE)
endfunction()

# Fails with the lines that only one of two listings has. A line with * in what is expected stands for what it matches, and
# must match something.
function(expect_same_files actual expected)
    string(REPLACE "\n" ";" lines "${expected}")
    list(FILTER lines INCLUDE REGEX "\\*")
    foreach(line IN LISTS lines)
        string(REPLACE "." "\\." pattern "${line}")
        string(REPLACE "*" "[^\n/]*" pattern "${pattern}")
        string(REGEX REPLACE "(^|\n)${pattern}(\n${pattern})*(\n|$)" "\\1${line}\\3" actual "${actual}")
    endforeach()
    file(WRITE ${WORK}/actual.txt "${actual}\n")
    file(WRITE ${WORK}/expected.txt "${expected}\n")
    run(printed ${CMAKE_COMMAND} -E env LC_ALL=C sort -o ${WORK}/actual.txt ${WORK}/actual.txt)
    execute_process(COMMAND diff ${WORK}/expected.txt ${WORK}/actual.txt OUTPUT_VARIABLE difference RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
        # Indented, or the message is taken for prose and its lines are joined.
        string(REPLACE "\n" "\n  " difference "${difference}")
        message(FATAL_ERROR "The files are not those of packaging/manifest-*.txt (< missing, > not listed):\n  ${difference}")
    endif()
endfunction()

# A library that is to be found by the loader's own rules names no folders.
function(expect_no_runpath file)
    run(dynamic ${CMAKE_COMMAND} -E env LC_ALL=C readelf -d ${file})
    if(NOT dynamic MATCHES "NEEDED")
        message(FATAL_ERROR "${file} has no dynamic section to look at:\n${dynamic}")
    endif()
    if(dynamic MATCHES "RUNPATH|RPATH")
        message(FATAL_ERROR "${file} has a RUNPATH:\n${dynamic}")
    endif()
endfunction()
