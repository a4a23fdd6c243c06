# pkg-config tells where the plug-in goes and how its headers are found.
include(${CMAKE_CURRENT_LIST_DIR}/Common.cmake)
set(root ${WORK}/root)
install_below(${root} development)
set(ask ${CMAKE_COMMAND} -E env --unset=PKG_CONFIG_PATH PKG_CONFIG_LIBDIR=${root}/usr/${LIBDIR}/pkgconfig)

run(plugin_dir ${ask} pkg-config --variable=plugindir quorvel_wifi)
expect_equal("plugindir" "${plugin_dir}" "/usr/${LIBDIR}/quorvel/plugins")
run(version ${ask} pkg-config --modversion quorvel_wifi)
expect_equal("the version" "${version}" "${VERSION}")
# In an SDK the same file serves below the SDK's root.
run(flags ${ask} PKG_CONFIG_SYSROOT_DIR=${root} pkg-config --cflags quorvel_wifi)
string(STRIP "${flags}" flags)
set(headers ${root}/usr/${INCLUDEDIR}/quorvel_wifi)
expect_equal("the compiler flags" "${flags}" "-I${headers} -I${headers}/wifi")
run(libraries ${ask} pkg-config --libs quorvel_wifi)
expect_equal("what is linked" "${libraries}" "")
