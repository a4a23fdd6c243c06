SUMMARY = "Wi-Fi data-model plug-in of the gateway"
DESCRIPTION = "Serves Device.WiFi. from the WLAN manager. A host framework loads it from ${libdir}/quorvel/plugins."
LICENSE = "CLOSED"

# The folder of the sources; set it in local.conf.
QUORVEL_WIFI_SOURCE ?= "${TOPDIR}/../quorvel-wifi"
# The recipe that brings libquorvel and libwlcsm with their headers into the sysroot.
QUORVEL_PLATFORM ?= "quorvel-platform"

inherit cmake pkgconfig externalsrc
EXTERNALSRC = "${QUORVEL_WIFI_SOURCE}"

DEPENDS = "${QUORVEL_PLATFORM}"

EXTRA_OECMAKE = " \
    -DQUORVEL_SDK=${STAGING_DIR_TARGET}${prefix} \
    -DQUORVEL_BUILD_GATEWAY=OFF \
    -DQUORVEL_BUILD_CONSOLE=OFF \
    -DQUORVEL_BUILD_TESTS=OFF \
"

# The plug-in has no version in its name, but belongs on the device.
FILES:${PN} = "${libdir}/quorvel/plugins/libquorvel_wifi.so"
FILES:${PN}-dev = "${includedir}/quorvel_wifi ${libdir}/cmake ${libdir}/pkgconfig"

do_install:append() {
    if readelf -d ${D}${libdir}/quorvel/plugins/libquorvel_wifi.so | grep -q -E 'RPATH|RUNPATH'; then
        bbfatal "the plug-in has a RUNPATH"
    fi
}
