# The libraries of the USP agent. It is built where they are installed, on this machine's own processor only;
# script/common.sh names the packages.
find_package(PkgConfig)
set(quorvel_has_agent_libraries OFF)
if(PkgConfig_FOUND AND NOT CMAKE_CROSSCOMPILING AND CMAKE_SIZEOF_VOID_P EQUAL 8)
    pkg_check_modules(QUORVEL_MQTT IMPORTED_TARGET libmosquitto)
    pkg_check_modules(QUORVEL_WEBSOCKET IMPORTED_TARGET libwebsockets)
    pkg_check_modules(QUORVEL_UV IMPORTED_TARGET libuv)
    pkg_check_modules(QUORVEL_TLS IMPORTED_TARGET openssl)
    pkg_check_modules(QUORVEL_PROTOBUF IMPORTED_TARGET protobuf)
    find_program(QUORVEL_PROTOC protoc)
    if(QUORVEL_MQTT_FOUND AND QUORVEL_WEBSOCKET_FOUND AND QUORVEL_UV_FOUND AND QUORVEL_TLS_FOUND
       AND QUORVEL_PROTOBUF_FOUND AND QUORVEL_PROTOC)
        set(quorvel_has_agent_libraries ON)
    endif()
endif()
option(QUORVEL_BUILD_AGENT "Build the USP agent" ${quorvel_has_agent_libraries})
