# docs/example-host.c does on a board what README.md says that it prints.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)
run(printed ${COMPILER} -std=c11 -Wall -Wextra -Werror ${SOURCE}/docs/example-host.c -o ${WORK}/host -ldl)
execute_process(COMMAND unshare --user --map-root-user --mount --net --pid --fork --mount-proc true
    RESULT_VARIABLE forbidden OUTPUT_QUIET ERROR_QUIET)
if(NOT forbidden EQUAL 0)
    message(STATUS "no namespaces here: no board can run")
    return()
endif()
# The board has its own /tmp and /var; the machine, whose /tmp may hold all this, stays in sight below /mnt.
file(WRITE ${WORK}/host.ini "[Device.WiFi]\nWL_Driver = wl.ko\nWLCSM_Driver = wlcsm.ko\n"
    "[Device.WiFi.Daemon]\nprogram = /mnt${BUILD}/bin/wlmngr2\narguments = -c/tmp/store\n")
file(WRITE ${WORK}/board.sh "set -e\nmount --rbind / /mnt\nmount -t tmpfs none /tmp\nmount -t tmpfs none /var\nmkdir /var/run\n"
    "exec '/mnt${WORK}/host' '/mnt${BUILD}/lib/libquorvel_wifi.so'\n")
run(printed ${CMAKE_COMMAND} -E env "PATH=/mnt${BUILD}/bin:$ENV{PATH}" LD_LIBRARY_PATH=/mnt${BUILD}/lib
    QUORVEL_CONFIG=/mnt${WORK}/host.ini QUORVEL_BOARD=/mnt${SOURCE}/gateway/boards/tri-band.json
    unshare --user --map-root-user --mount --net --pid --fork --mount-proc sh ${WORK}/board.sh)
file(READ ${SOURCE}/README.md readme)
string(REGEX REPLACE ".*on the simulated board it prints\n\n   ```\n(.*)" "\\1" expected "${readme}")
string(REGEX REPLACE "\n   ```.*" "" expected "${expected}")
string(REGEX REPLACE "(^|\n)   " "\\1" expected "${expected}")
expect_equal("what the host prints" "${printed}" "${expected}")
