# Takes Buildroot's place: enough of it to expand the recipe and to run what it runs.
qstrip = $(strip $(subst ",,$(1)))
define cmake-package
.PHONY: configure install
configure:
	@echo cmake $(QUORVEL_WIFI_CONF_OPTS) $(QUORVEL_WIFI_SITE) needs $(QUORVEL_WIFI_DEPENDENCIES)
install:
	$$(QUORVEL_WIFI_INSTALL_TARGET_CMDS)
endef
include $(RECIPE)
