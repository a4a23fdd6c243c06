# Takes OpenWrt's place: enough of it to expand the recipe and to run what it runs.
INCLUDE_DIR:=$(TOPDIR)/include
CP:=cp -fpR
INSTALL_DIR:=install -d -m0755
INSTALL_BIN:=install -m0755
