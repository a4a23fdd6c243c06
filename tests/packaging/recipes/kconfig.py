"""Reads Buildroot's Config.in with a real Kconfig parser, and turns the switches that it depends on.

usage: kconfig.py CONFIG.IN FOLDER
"""

import os
import sys

import kconfiglib

NEEDS = ("BR2_TOOLCHAIN_GCC_AT_LEAST_12", "BR2_INSTALL_LIBSTDCPP", "BR2_TOOLCHAIN_HAS_THREADS")
FORBIDS = ("BR2_STATIC_LIBS",)


def comments(node):
    """Yields the nodes of all comments below a node."""
    while node:
        if node.item is kconfiglib.COMMENT:
            yield node
        if node.list:
            yield from comments(node.list)
        node = node.next


def main():
    recipe, folder = sys.argv[1:]
    top = os.path.join(folder, "Config.in")
    with open(top, "w", encoding="utf-8") as file:
        for switch in NEEDS + FORBIDS:
            file.write(f'config {switch}\n\tbool "{switch}"\n')
        file.write(f'source "{os.path.abspath(recipe)}"\n')
    os.environ["TOPDIR"] = "/top"
    config = kconfiglib.Kconfig(top, warn_to_stderr=False)
    if config.warnings:
        sys.exit("\n".join(config.warnings))
    package = config.syms["BR2_PACKAGE_QUORVEL_WIFI"]
    (hint,) = comments(config.top_node.list)

    def expect(visible, when):
        if (package.visibility > 0) != visible or (kconfiglib.expr_value(hint.dep) > 0) == visible:
            sys.exit(f"{when}, the package is {'not ' if visible else ''}offered, or the comment says otherwise")

    for switch in NEEDS:
        config.syms[switch].set_value("y")
    expect(True, "with all that it needs")
    for switch in NEEDS + FORBIDS:
        config.syms[switch].set_value("n" if switch in NEEDS else "y")
        expect(False, f"with {switch} turned")
        config.syms[switch].set_value("y" if switch in NEEDS else "n")
    package.set_value("y")
    source = config.syms["BR2_PACKAGE_QUORVEL_WIFI_SOURCE"].str_value
    if source != "/top/../quorvel-wifi":
        sys.exit(f"the sources are looked for in {source}")


main()
