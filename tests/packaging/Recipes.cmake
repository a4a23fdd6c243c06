# The recipes are of their tools' form, and what they run does what they are for. Buildroot's switches are read by a real Kconfig
# parser; the tools themselves are not here: small stand-ins expand the make recipes, and a checker of forms reads the others.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)
set(recipes ${SOURCE}/packaging)
set(stand_ins ${CMAKE_CURRENT_LIST_DIR}/recipes)

file(GLOB bitbake ${recipes}/yocto/*.bb)
expect_equal("the Yocto recipe" "${bitbake}" "${recipes}/yocto/quorvel-wifi_${VERSION}.bb")
run(printed python3 ${stand_ins}/syntax.py ${bitbake})
run(printed python3 ${stand_ins}/syntax.py ${recipes}/buildroot/Config.in)
# The checker sees what is wrong.
foreach(wrong "FOO = \"open" "do_install() {" "inherit" "LICENSE = \"CLOSED\"\ndo_x() {\nif\n}")
    file(WRITE ${WORK}/wrong.bb "${wrong}\n")
    execute_process(COMMAND python3 ${stand_ins}/syntax.py ${WORK}/wrong.bb RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
    if(status EQUAL 0)
        message(FATAL_ERROR "The checker lets pass: ${wrong}")
    endif()
endforeach()

# The distribution's Python has the distribution's parser.
set(kconfig /usr/bin/python3 ${stand_ins}/kconfig.py)
execute_process(COMMAND /usr/bin/python3 -c "import kconfiglib" RESULT_VARIABLE missing OUTPUT_QUIET ERROR_QUIET)
if(missing EQUAL 0)
    run(printed ${kconfig} ${recipes}/buildroot/Config.in ${WORK})
    file(READ ${recipes}/buildroot/Config.in switches)
    string(REPLACE "depends on !BR2_STATIC_LIBS" "depends on BR2_STATIC_LIBS" switches "${switches}")
    file(WRITE ${WORK}/wrong.in "${switches}")
    execute_process(COMMAND ${kconfig} ${WORK}/wrong.in ${WORK} RESULT_VARIABLE status OUTPUT_QUIET ERROR_QUIET)
    if(status EQUAL 0)
        message(FATAL_ERROR "A package that is offered in the wrong case is let pass")
    endif()
else()
    message(STATUS "no Kconfig parser here (python3-kconfiglib): only the form of Config.in was looked at")
endif()

# An SDK of the platform, made of the stand-in libraries.
set(sdk ${WORK}/staging/usr)
file(MAKE_DIRECTORY ${sdk}/lib ${sdk}/include)
file(COPY ${SOURCE}/host/quorvel.h ${SOURCE}/host/wlcsm.h DESTINATION ${sdk}/include)
foreach(library quorvel wlcsm)
    if(EXISTS ${BUILD}/lib/lib${library}.so)
        file(COPY ${BUILD}/lib/lib${library}.so DESTINATION ${sdk}/lib)
    else()
        file(WRITE ${sdk}/lib/lib${library}.so "")
    endif()
endforeach()
set(plugin_only -DQUORVEL_BUILD_GATEWAY=OFF -DQUORVEL_BUILD_CONSOLE=OFF -DQUORVEL_BUILD_TESTS=OFF)
list(JOIN plugin_only " " plugin_only_text)

# Buildroot.
file(STRINGS ${recipes}/buildroot/quorvel-wifi.mk version REGEX "^QUORVEL_WIFI_VERSION")
expect_equal("Buildroot's version" "${version}" "QUORVEL_WIFI_VERSION = ${VERSION}")
get_filename_component(tools ${CMAKE_COMMAND} DIRECTORY)
get_filename_component(tools ${tools} DIRECTORY)
set(buildroot make --no-print-directory --warn-undefined-variables -f ${stand_ins}/buildroot.mk
    RECIPE=${recipes}/buildroot/quorvel-wifi.mk BR2_PACKAGE_QUORVEL_WIFI_SOURCE=\"/sources\"
    BR2_PACKAGE_QUORVEL_WIFI_PLATFORM=\"the-platform\" STAGING_DIR=/staging
    TARGET_DIR=${WORK}/buildroot HOST_DIR=${tools} QUORVEL_WIFI_BUILDDIR=${BUILD})
run(configured ${buildroot} configure)
expect_equal("what Buildroot configures" "${configured}"
    "cmake -DQUORVEL_SDK=/staging/usr ${plugin_only_text} /sources needs the-platform")
run(printed ${buildroot} install)
list_files(${WORK}/buildroot installed)
if(NOT installed MATCHES "^[^\n]*/quorvel/plugins/libquorvel_wifi\\.so$")
    message(FATAL_ERROR "Buildroot's target gets: ${installed}")
endif()

# OpenWrt.
file(STRINGS ${recipes}/openwrt/Makefile version REGEX "^PKG_VERSION")
expect_equal("OpenWrt's version" "${version}" "PKG_VERSION:=${VERSION}")
set(openwrt make --no-print-directory -f ${recipes}/openwrt/Makefile TOPDIR=${stand_ins}/openwrt
    BUILD_DIR=${WORK}/openwrt-build STAGING_DIR=/staging QUORVEL_WIFI_SOURCE=${SOURCE}
    PKG_INSTALL_DIR=${WORK}/installed TARGET=${WORK}/openwrt)
run(configured ${openwrt} configure)
expect_equal("what OpenWrt configures" "${configured}"
    "cmake -DQUORVEL_SDK=/staging/usr ${plugin_only_text} needs quorvel-platform")
run(printed ${openwrt} prepare)
run(printed ${CMAKE_COMMAND} -G Ninja -S ${WORK}/openwrt-build/quorvel-wifi-${VERSION} -B ${WORK}/openwrt-configured
    -DQUORVEL_SDK=${sdk} ${plugin_only})
if(LIBDIR STREQUAL "lib")
    install_below(${WORK}/installed runtime)
    run(printed ${openwrt} install)
    list_files(${WORK}/openwrt installed)
    expect_equal("what OpenWrt's package has" "${installed}" "usr/lib/quorvel/plugins/libquorvel_wifi.so")
endif()
