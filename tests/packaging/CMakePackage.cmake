# A project outside finds the package in a moved tree, compiles against its headers and loads the plug-in it names.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)
set(root ${WORK}/moved)
set(components runtime development)
if(EXISTS ${BUILD}/bin/quorvel-wifi)
    list(APPEND components gateway)
endif()
install_below(${root} ${components})
set(configure ${CMAKE_COMMAND} -G Ninja -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${WORK}/build
    -DCMAKE_CXX_COMPILER=${COMPILER} -DCMAKE_PREFIX_PATH=${root}/usr)
run(printed ${configure} -DWANTED_VERSION=${VERSION})
run(printed ${CMAKE_COMMAND} --build ${WORK}/build)
run(place ${CMAKE_COMMAND} -E cat ${WORK}/build/plugin.txt)
expect_equal("the plug-in's place" "${place}" "${root}/usr/${LIBDIR}/quorvel/plugins/libquorvel_wifi.so")
if("gateway" IN_LIST components)
    # The stand-ins take the place of the platform's libraries.
    run(counted ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${root}/usr/${LIBEXECDIR}/quorvel-wifi/lib
        ${WORK}/build/consumer ${place})
    stated_numbers(objects parameters)
    expect_equal("what the host counted" "${counted}" "${parameters} parameters")
endif()

execute_process(COMMAND ${configure} -DWANTED_VERSION=99.0 RESULT_VARIABLE status OUTPUT_QUIET ERROR_VARIABLE errors)
if(status EQUAL 0 OR NOT errors MATCHES "99\\.0")
    message(FATAL_ERROR "A version that is not installed was found: ${errors}")
endif()
