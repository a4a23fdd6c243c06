"""Checks the form of a BitBake recipe (FILE.bb) or of a Kconfig file: every statement is one that the tool knows.

It stands in for the tools' own parsers and knows no more than what such files are made of.
"""

import re
import subprocess
import sys

NAME = r"[A-Za-z_][A-Za-z0-9_.${}-]*(:[A-Za-z0-9${}-]+)*"
BITBAKE = [
    re.compile(rf'^{NAME}(\[[a-z]+\])?\s*(\?\?=|\?=|:=|\+=|=\+|\.=|=\.|=)\s*("[^"]*"|\'[^\']*\')$'),
    re.compile(r"^(inherit|require|include)( [a-z0-9_./-]+)+$"),
]
KCONFIG = [
    re.compile(r"^(config|menuconfig) BR2_PACKAGE_[A-Z0-9_]+$"),
    re.compile(r"^\t(bool|string)( \"[^\"]+\")?$"),
    re.compile(r"^\t(depends on|select) !?[A-Z0-9_]+(( |\t)*(&&|\|\|)( |\t)*!?[A-Z0-9_]+)*( # .*)?$"),
    re.compile(r"^\tdefault (\"[^\"]*\"|y|n)$"),
    re.compile(r"^comment \"[^\"]+\"$"),
    re.compile(r"^if !?[A-Z0-9_]+$"),
    re.compile(r"^endif$"),
]


def statements(lines):
    """Yields (number, text) with continued lines joined."""
    text, first = "", 0
    for number, line in enumerate(lines, 1):
        first = first or number
        if line.endswith("\\"):
            text += line[:-1]
            continue
        yield first, text + line
        text, first = "", 0
    if text:
        raise SystemExit(f"line {first}: the file ends in the middle of a statement")


def known(text, forms):
    return any(form.match(text) for form in forms)


def check_bitbake(lines):
    body = None
    for number, text in statements(lines):
        if body is not None:
            if text == "}":
                # A task is a shell function.
                subprocess.run(["sh", "-n"], input="\n".join(body), text=True, check=True)
                body = None
            else:
                body.append(text)
        elif re.match(rf"^{NAME}\(\) {{$", text):
            body = []
        elif text and not text.startswith("#") and not known(text, BITBAKE):
            raise SystemExit(f"line {number}: no statement of a recipe: {text}")
    if body is not None:
        raise SystemExit("a task has no end")
    if not any(re.match(r'^LICENSE = "CLOSED"$', line) for line in lines):
        raise SystemExit("the recipe is not marked closed")


def check_kconfig(lines):
    helping, depth = False, 0
    for number, text in statements(lines):
        if helping and (not text or text.startswith("\t  ")):
            continue
        helping = text == "\thelp"
        if not text or helping:
            continue
        if not known(text, KCONFIG):
            raise SystemExit(f"line {number}: no statement of Kconfig: {text}")
        depth += text.startswith("if ") - (text == "endif")
        if depth < 0:
            raise SystemExit(f"line {number}: endif without if")
    if depth:
        raise SystemExit("an if has no endif")


def main():
    name = sys.argv[1]
    with open(name, encoding="utf-8") as file:
        lines = file.read().splitlines()
    (check_bitbake if name.endswith(".bb") else check_kconfig)(lines)


main()
