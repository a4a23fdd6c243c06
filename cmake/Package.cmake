# Debian packages, one a component: script/package builds them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "Quorvel Wi-Fi")
set(CPACK_PACKAGE_CONTACT "Quorvel Wi-Fi maintainers <root@localhost>")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_THREADS 1)

set(CPACK_COMPONENTS_ALL runtime development)
if(TARGET quorvel_wifi_recorder)
    list(APPEND CPACK_COMPONENTS_ALL recorder)
endif()
if(TARGET quorvel-wifi)
    list(APPEND CPACK_COMPONENTS_ALL gateway)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
# Closed: no licence has been chosen.
set(CPACK_DEBIAN_PACKAGE_SECTION non-free/net)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Debian's word for the processor; a cross build is not for the machine that packages it.
set(quorvel_debian_x86_64 amd64)
set(quorvel_debian_i686 i386)
set(quorvel_debian_aarch64 arm64)
set(quorvel_debian_arm armhf)
set(quorvel_debian_armv7l armhf)
if(DEFINED quorvel_debian_${CMAKE_SYSTEM_PROCESSOR})
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${quorvel_debian_${CMAKE_SYSTEM_PROCESSOR}})
endif()

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME quorvel-wifi-plugin)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "Wi-Fi data-model plug-in of the gateway\n The platform's libquorvel and libwlcsm come with the firmware.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libc6")

set(CPACK_DEBIAN_RECORDER_PACKAGE_NAME quorvel-wifi-recorder)
set(CPACK_COMPONENT_RECORDER_DESCRIPTION
    "recorder of the Wi-Fi data-model plug-in\n Takes the plug-in's place on a device and records its calls, without secrets.")
set(CPACK_DEBIAN_RECORDER_PACKAGE_DEPENDS "libc6")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME quorvel-wifi-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION non-free/libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "Headers of the Wi-Fi data-model plug-in\n Exported functions and the parameter table, for hosts that load the plug-in.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_RECOMMENDS "quorvel-wifi-plugin (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_GATEWAY_PACKAGE_NAME quorvel-wifi)
set(CPACK_COMPONENT_GATEWAY_DESCRIPTION
    "simulated gateway for the Wi-Fi data-model plug-in, and its console\n Boots a board on this machine and reads and writes its data model.")
# The packages of the libraries that its programs name have the names of this distribution's release.
set(CPACK_DEBIAN_GATEWAY_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/lib)
set(CPACK_DEBIAN_GATEWAY_PACKAGE_DEPENDS
    "quorvel-wifi-plugin (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}), quorvel-wifi-recorder (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
if(TARGET quorvel-wifi-agent)
    # Loaded by its name.
    string(APPEND CPACK_DEBIAN_GATEWAY_PACKAGE_DEPENDS ", libwebsockets-evlib-uv")
endif()

# The live page is packed where script/package has built it.
set(CPACK_DEBIAN_WEB_PACKAGE_NAME quorvel-wifi-web)
set(CPACK_COMPONENT_WEB_DESCRIPTION
    "live page and metrics of the simulated gateway\n Serves what happens on a board to browsers and to Prometheus.")
set(CPACK_DEBIAN_WEB_PACKAGE_DEPENDS
    "libc6, libgcc-s1, libstdc++6, libprometheus-cpp-core1.0, quorvel-wifi (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

include(CPack)
