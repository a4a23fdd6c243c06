define BuildPackage
.PHONY: prepare configure install
prepare:
	$$(Build/Prepare)
configure:
	@echo cmake $$(CMAKE_OPTIONS) needs $(PKG_BUILD_DEPENDS)
install:
	$$(call Package/$(1)/install,$$(TARGET))
endef
