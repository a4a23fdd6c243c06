"""Runs the commands of a document and compares what they print.

usage: document.py DOCUMENT FOLDER

Commands are the lines after "$ " in ```console blocks; all run in one Bash, in FOLDER. What follows a command up to the next is
what it must print, on both outputs, and nothing else; a line "..." stands for any lines, and "..." within a line for anything in
it. A command that fails ends the run.
"""

import re
import subprocess
import sys


def examples(text):
    """Yields (command, expected lines)."""
    for block in re.findall(r"^```console\n(.*?)^```$", text, re.DOTALL | re.MULTILINE):
        command, expected = None, []
        for line in block.splitlines():
            if line.startswith("$ "):
                if command is not None:
                    yield command, expected
                command, expected = line[2:], []
            else:
                expected.append(line)
        if command is not None:
            yield command, expected


def as_expected(printed, expected):
    """Tells whether the lines printed are those expected."""
    gap = re.escape("...")
    pattern = "".join(
        "(.*\n)*?" if line == "..." else re.escape(line).replace(gap, ".*") + "\n" for line in expected)
    return re.fullmatch(pattern, printed) is not None


END = "== end of command"


def main():
    document, folder = sys.argv[1:]
    with open(document, encoding="utf-8") as file:
        wanted = list(examples(file.read()))
    if not wanted:
        sys.exit(f"{document} has no example")
    shell = subprocess.Popen(
        ["bash", "--noprofile", "--norc"], cwd=folder, text=True,
        stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    for command, expected in wanted:
        # The empty line keeps the end apart from output without a last newline.
        shell.stdin.write(f"{command}\nprintf '\\n{END} %s\\n' \"$?\"\n")
        shell.stdin.flush()
        lines = []
        for line in shell.stdout:
            if line.startswith(END):
                break
            lines.append(line)
        printed = "".join(lines).removesuffix("\n")
        status = line.split()[-1] if line.startswith(END) else "the shell's end"
        if status != "0":
            sys.exit(f"$ {command}\n{printed}\nended with {status}")
        if not as_expected(printed, expected):
            sys.exit(f"$ {command}\nprinted\n{printed}\ninstead of\n" + "\n".join(expected))
    shell.stdin.close()
    shell.wait()
    print(f"{len(wanted)} examples of {document} print what they say")


main()
