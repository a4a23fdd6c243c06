################################################################################
#
# quorvel-wifi
#
################################################################################

QUORVEL_WIFI_VERSION = 0.2.0
QUORVEL_WIFI_SITE = $(call qstrip,$(BR2_PACKAGE_QUORVEL_WIFI_SOURCE))
QUORVEL_WIFI_SITE_METHOD = local
QUORVEL_WIFI_LICENSE = PROPRIETARY
QUORVEL_WIFI_REDISTRIBUTE = NO
QUORVEL_WIFI_INSTALL_STAGING = YES
QUORVEL_WIFI_DEPENDENCIES = $(call qstrip,$(BR2_PACKAGE_QUORVEL_WIFI_PLATFORM))

QUORVEL_WIFI_CONF_OPTS = \
	-DQUORVEL_SDK=$(STAGING_DIR)/usr \
	-DQUORVEL_BUILD_GATEWAY=OFF \
	-DQUORVEL_BUILD_CONSOLE=OFF \
	-DQUORVEL_BUILD_TESTS=OFF

# The device needs the plug-in alone.
define QUORVEL_WIFI_INSTALL_TARGET_CMDS
	DESTDIR=$(TARGET_DIR) $(HOST_DIR)/bin/cmake --install $(QUORVEL_WIFI_BUILDDIR) --component runtime
endef

$(eval $(cmake-package))
