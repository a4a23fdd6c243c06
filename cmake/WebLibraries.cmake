# The libraries of the live page's server. It is built where they are installed, on this machine's own processor only;
# script/common.sh names the packages.
find_package(PkgConfig)
set(quorvel_has_web_libraries OFF)
if(PkgConfig_FOUND AND NOT CMAKE_CROSSCOMPILING AND CMAKE_SIZEOF_VOID_P EQUAL 8)
    pkg_check_modules(QUORVEL_PROMETHEUS IMPORTED_TARGET prometheus-cpp-core)
    find_path(QUORVEL_BEAST_INCLUDE boost/beast/version.hpp)
    if(QUORVEL_PROMETHEUS_FOUND AND QUORVEL_BEAST_INCLUDE)
        set(quorvel_has_web_libraries ON)
    endif()
endif()
option(QUORVEL_BUILD_WEB "Build the live page's server" ${quorvel_has_web_libraries})
