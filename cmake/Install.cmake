# The places of installed files, but for the programs and stand-in libraries of gateway/ and console/, which name their own.
# Components: runtime (the plug-in), recorder (the library that takes its place to record), development (its headers, CMake
# package and .pc file), gateway (the simulated gateway and the console, whose programs are with the stand-in libraries in a
# private folder).
include(CMakePackageConfigHelpers)

set(QUORVEL_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/quorvel/plugins)
set(QUORVEL_HEADER_DIR ${CMAKE_INSTALL_INCLUDEDIR}/quorvel_wifi)
set(QUORVEL_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/quorvel_wifi)
set(QUORVEL_PRIVATE_DIR ${CMAKE_INSTALL_LIBEXECDIR}/quorvel-wifi)

install(TARGETS quorvel_wifi LIBRARY DESTINATION ${QUORVEL_PLUGIN_DIR} COMPONENT runtime)

# The exported functions are expanded from the definitions, which are part of the headers therefore.
file(GLOB definitions ${PROJECT_SOURCE_DIR}/wifi/*.def)
install(FILES
    ${PROJECT_SOURCE_DIR}/wifi/QuorvelWiFiExports.h ${PROJECT_SOURCE_DIR}/wifi/QuorvelWiFiTable.h ${definitions}
    DESTINATION ${QUORVEL_HEADER_DIR}/wifi COMPONENT development)
install(FILES
    ${PROJECT_SOURCE_DIR}/wifi/model/BeginRows.h ${PROJECT_SOURCE_DIR}/wifi/model/DataModel.def
    ${PROJECT_SOURCE_DIR}/wifi/model/EndRows.h ${PROJECT_SOURCE_DIR}/wifi/model/ExportedFunctions.def
    ${PROJECT_SOURCE_DIR}/wifi/model/Signatures.h
    DESTINATION ${QUORVEL_HEADER_DIR}/wifi/model COMPONENT development)

# The CMake package finds the installed files from its own place; the .pc file names their places on the target,
# which is known when they are installed.
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/quorvel_wifi-config.cmake.in
    ${CMAKE_BINARY_DIR}/package/quorvel_wifi-config.cmake
    INSTALL_DESTINATION ${QUORVEL_PACKAGE_DIR}
    PATH_VARS QUORVEL_PLUGIN_DIR QUORVEL_HEADER_DIR
    NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/quorvel_wifi-config-version.cmake
    COMPATIBILITY SameMinorVersion)
install(FILES
    ${CMAKE_BINARY_DIR}/package/quorvel_wifi-config.cmake ${CMAKE_BINARY_DIR}/package/quorvel_wifi-config-version.cmake
    DESTINATION ${QUORVEL_PACKAGE_DIR} COMPONENT development)
install(CODE "
    set(PROJECT_VERSION ${PROJECT_VERSION})
    set(CMAKE_INSTALL_LIBDIR ${CMAKE_INSTALL_LIBDIR})
    set(QUORVEL_HEADER_DIR ${QUORVEL_HEADER_DIR})
    set(QUORVEL_PLUGIN_DIR ${QUORVEL_PLUGIN_DIR})
    configure_file(\"${CMAKE_CURRENT_LIST_DIR}/quorvel_wifi.pc.in\" \"${CMAKE_BINARY_DIR}/package/quorvel_wifi.pc\" @ONLY)"
    COMPONENT development)
install(FILES ${CMAKE_BINARY_DIR}/package/quorvel_wifi.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# The private folder looks like a build folder: bin/, lib/ with the plug-in, boards/ and share/.
function(quorvel_install_link target place)
    get_filename_component(folder ${place} DIRECTORY)
    get_filename_component(name ${place} NAME)
    file(RELATIVE_PATH way "/prefix/${folder}" "/prefix/${target}")
    set(links ${CMAKE_BINARY_DIR}/package/links/${folder})
    file(MAKE_DIRECTORY ${links})
    file(REMOVE ${links}/${name})
    file(CREATE_LINK ${way} ${links}/${name} SYMBOLIC)
    install(FILES ${links}/${name} DESTINATION ${folder} COMPONENT gateway)
endfunction()
if(TARGET quorvel-wifi)
    if(QUORVEL_DATA_MODEL_JSON)
        install(FILES ${QUORVEL_DATA_MODEL_JSON} DESTINATION ${CMAKE_INSTALL_DATADIR}/quorvel-wifi COMPONENT gateway)
    endif()
    quorvel_install_link(${QUORVEL_PRIVATE_DIR}/bin/quorvel-wifi ${CMAKE_INSTALL_BINDIR}/quorvel-wifi)
    quorvel_install_link(${QUORVEL_PLUGIN_DIR}/libquorvel_wifi.so ${QUORVEL_PRIVATE_DIR}/lib/libquorvel_wifi.so)
    if(TARGET quorvel_wifi_recorder)
        quorvel_install_link(${CMAKE_INSTALL_LIBDIR}/quorvel/libquorvel_wifi_recorder.so
            ${QUORVEL_PRIVATE_DIR}/lib/libquorvel_wifi_recorder.so)
    endif()
    quorvel_install_link(${CMAKE_INSTALL_DATADIR}/quorvel-wifi/boards ${QUORVEL_PRIVATE_DIR}/boards)
    quorvel_install_link(${CMAKE_INSTALL_DATADIR}/quorvel-wifi/scenarios ${QUORVEL_PRIVATE_DIR}/scenarios)
    quorvel_install_link(${CMAKE_INSTALL_DATADIR}/quorvel-wifi ${QUORVEL_PRIVATE_DIR}/share/quorvel-wifi)
endif()
