# What README.md shows is what its commands print, by a newcomer who has nothing saved yet.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)
execute_process(COMMAND unshare --user --map-root-user --mount --net true RESULT_VARIABLE forbidden OUTPUT_QUIET ERROR_QUIET)
if(NOT forbidden EQUAL 0)
    message(STATUS "no namespaces here: no board can run")
    return()
endif()
# What ./run does once everything is built.
file(WRITE ${WORK}/run "#!/bin/sh\n[ $# -gt 0 ] || set -- demo\nexec '${BUILD}/bin/quorvel-wifi' \"$@\"\n")
file(CHMOD ${WORK}/run PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
file(MAKE_DIRECTORY ${WORK}/home)
run(printed ${CMAKE_COMMAND} -E env --unset=XDG_STATE_HOME --unset=XDG_RUNTIME_DIR HOME=${WORK}/home
    python3 ${CMAKE_CURRENT_LIST_DIR}/document.py ${SOURCE}/README.md ${WORK})
message(STATUS "${printed}")

# The files that it leads to are there.
file(READ ${SOURCE}/README.md text)
string(REGEX MATCHALL "[(](docs|wifi)/[A-Za-z./-]+" links "${text}")
foreach(link IN LISTS links)
    string(SUBSTRING "${link}" 1 -1 place)
    if(NOT EXISTS ${SOURCE}/${place})
        message(FATAL_ERROR "README.md leads to ${place}, which is not there")
    endif()
endforeach()
