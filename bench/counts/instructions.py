#!/usr/bin/env python3
"""Counts the ARM instructions of the plug-in's operations under the user-mode emulator.

The emulator translates one instruction a block and logs each block that it executes. The program (bench_emulated) runs an
operation in two loops of different length between marks; the difference of the two counts is the cost of a call. Only the
calling thread is counted. The counts depend on the library, the compiler and the C library, never on the machine.

Prints a line for each operation: name, instructions, those of its floor, their difference, and the budget if it has one.
Exit status: 0, 1 when a count is over its budget or the program failed, 2 for wrong usage, 77 when the emulator is missing.
"""
import argparse
import bisect
import collections
import os
import re
import shutil
import subprocess
import sys
import tempfile

MARK = "quorvelBenchMark"
EXECUTED = re.compile(rb"Trace 0: [^[]*\[[^/]*/([0-9a-f]+)")
CALLS_OF_OTHERS = "calls through the linkage table"
SKIPPED = 77


class Failure(Exception):
    pass


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


class Library:
    """The functions of a loaded file, by their addresses in it."""

    def __init__(self, path, tools):
        self.name = os.path.basename(path)
        listing = output(tools + "nm", "-SC", "--defined-only", path) + output(tools + "nm", "-SCD", "--defined-only", path)
        functions = {}
        for line in listing.splitlines():
            words = line.split(maxsplit=3)
            if len(words) == 4 and words[2] in "tTwWiI":
                # A Thumb function's address is odd. The name without a version wins.
                functions.setdefault(int(words[0], 16) & ~1, (int(words[1], 16), words[3].split("@")[0]))
        self.functions = sorted((address, *rest) for address, rest in functions.items())
        headers = output(tools + "readelf", "-lSW", path)
        self.segments = [(int(offset, 16), int(address, 16))
                         for offset, address in re.findall(r"LOAD +(0x\w+) (0x\w+)", headers)]
        self.linkage = [(int(address, 16), int(address, 16) + int(size, 16))
                        for address, size in re.findall(r"\] \.plt +\S+ +(\w+) \w+ (\w+)", headers)]

    def function_at(self, offset):
        """The name of the function whose code is at `offset` of the file."""
        address = max(start + offset - begin for begin, start in self.segments if begin <= offset)
        if any(begin <= address < end for begin, end in self.linkage):
            return CALLS_OF_OTHERS
        at = bisect.bisect_right(self.functions, address, key=lambda function: function[0]) - 1
        if at >= 0:
            start, size, name = self.functions[at]
            if address < start + max(size, 1):
                return name
        return "(no symbol)"


class Profile:
    """Turns addresses of a process into names of functions."""

    def __init__(self, maps, tools):
        self.tools = tools
        self.libraries = {}
        self.mapped = []
        for line in maps:
            words = line.split()
            if len(words) == 6 and "x" in words[1] and os.path.exists(words[5]):
                begin, end = (int(word, 16) for word in words[0].split("-"))
                self.mapped.append((begin, end, int(words[2], 16), words[5]))

    def function_at(self, address):
        for begin, end, offset, path in self.mapped:
            if begin <= address < end:
                if path not in self.libraries:
                    self.libraries[path] = Library(path, self.tools)
                library = self.libraries[path]
                return library.name, library.function_at(address - begin + offset)
        return "", "(not mapped)"


def address_of_mark(program, tools):
    for line in output(tools + "nm", program).splitlines():
        words = line.split()
        if words[-1] == MARK:
            return int(words[0], 16) & ~1
    raise Failure(f"{program} has no function {MARK}")


class Log:
    """The emulator's log, read while it is written: the executions between marks."""

    def __init__(self, mark, keep_addresses):
        self.mark = b"/%08x/" % mark
        self.keep_addresses = keep_addresses
        self.counts = [0]
        self.addresses = [collections.Counter()]

    def _take(self, lines):
        self.counts[-1] += lines.count(b"Trace 0:")
        if self.keep_addresses:
            self.addresses[-1].update(EXECUTED.findall(lines))

    def read(self, stream):
        rest = b""
        while chunk := stream.read(1 << 20):
            chunk = rest + chunk
            whole = chunk.rfind(b"\n") + 1
            rest = chunk[whole:]
            at = 0
            while (found := chunk.find(self.mark, at, whole)) >= 0:
                line = chunk.rfind(b"\n", 0, found) + 1
                self._take(chunk[at:line])
                at = chunk.find(b"\n", found) + 1
                self.counts.append(0)
                self.addresses.append(collections.Counter())
            self._take(chunk[at:whole])


def run(arguments, platform, operations, keep_addresses):
    """Runs the operations named on a platform. Returns the log and what the program printed."""
    log = Log(address_of_mark(arguments.program, arguments.tools), keep_addresses)
    folders = ":".join([platform, os.path.dirname(os.path.abspath(arguments.library))])
    reading, writing = os.pipe()
    command = [*arguments.emulator, "-E", f"LD_LIBRARY_PATH={folders}", "-singlestep", "-d", "exec,nochain",
               "-D", f"/dev/fd/{writing}", os.path.abspath(arguments.program), *operations]
    with tempfile.TemporaryFile("w+") as printed, open(reading, "rb", buffering=0) as stream:
        # Without an environment: its size would move the stack.
        child = subprocess.Popen(command, stdout=printed, pass_fds=[writing], env={})
        os.close(writing)
        log.read(stream)
        if child.wait() != 0:
            raise Failure(f"{' '.join(command)} ended with status {child.returncode}")
        printed.seek(0)
        return log, printed.read().splitlines()


class Sides:
    """What the program measured: a row for each operation and side, and the section of the log with its first loop."""

    def __init__(self, printed):
        self.rows = []
        section = 1
        for line in printed:
            words = line.split()
            if words and words[0] == "loops":
                self.rows.append((words[1], words[2], int(words[3]), section))
                section += 3


def measure(arguments, platform, operations):
    log, printed = run(arguments, platform, operations, False)
    costs = {}
    for name, side, calls, section in Sides(printed).rows:
        costs[name, side] = (log.counts[section + 1] - log.counts[section]) / calls
    return costs


def print_profile(arguments, operation):
    log, printed = run(arguments, arguments.counting_platform or arguments.platform, [operation], True)
    profile = Profile(printed, arguments.tools)
    for name, side, calls, section in Sides(printed).rows:
        if (name, side) != (operation, "whole"):
            continue
        by_function = collections.Counter()
        executed = log.addresses[section + 1]
        executed.subtract(log.addresses[section])
        for address, times in executed.items():
            by_function[profile.function_at(int(address, 16))] += times
        print(f"{operation}: {sum(by_function.values()) / calls:.1f} instructions a call, its loop included")
        for (library, function), times in by_function.most_common():
            if times != 0:
                print(f"{times / calls:10.1f}  {library}  {function}")


def read_budgets(path):
    """The limits by operation: instructions, and whether they are those beyond the floor."""
    budgets = {}
    with open(path) as file:
        for line in file:
            words = line.split("#")[0].split()
            if words:
                budgets[words[0]] = (float(words[1]), words[2:] == ["added"])
    return budgets


def report(costs, budgets):
    """Prints the table. Returns whether every budget is kept."""
    kept = True
    loop = costs["loop", "whole"]
    print(f"{'operation':<22} {'instructions':>12} {'floor':>10} {'added':>10} {'budget':>10}")
    for (name, side), cost in costs.items():
        if side != "whole" or name == "loop":
            continue
        cost -= loop
        floor = costs.get((name, "floor"), loop) - loop
        line = f"{name:<22} {cost:>12.1f} {floor:>10.1f} {cost - floor:>10.1f}"
        if name in budgets:
            limit, of_added = budgets.pop(name)
            over = (cost - floor if of_added else cost) > limit
            line += f" {limit:>10.0f}{' added' if of_added else ''}{'  EXCEEDED' if over else ''}"
            kept = kept and not over
        print(line)
    for name in budgets:
        print(f"{name}: has a budget, but was not measured")
    return kept and not budgets


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--emulator", required=True, type=lambda words: words.split(";"),
                        help="the emulator's command, its words separated by semicolons")
    parser.add_argument("--tools", default="arm-linux-gnueabihf-", help="what the names of the binary tools begin with")
    parser.add_argument("--program", required=True, help="bench_emulated")
    parser.add_argument("--library", required=True, help="the plug-in")
    parser.add_argument("--platform", required=True, help="folder of the do-nothing platform that does not count its calls")
    parser.add_argument("--counting-platform", help="folder of the one that does, which the whole model needs")
    parser.add_argument("--budgets", help="file of limits: operation, instructions, and 'added' when the floor is left out")
    parser.add_argument("--profile", metavar="OPERATION", help="prints one operation's instructions by function instead")
    arguments = parser.parse_args()
    if shutil.which(arguments.emulator[0]) is None:
        print(f"SKIPPED: {arguments.emulator[0]} is not installed, so no ARM instructions were counted. "
              "Install the package qemu-user.")
        return SKIPPED
    try:
        if arguments.profile:
            print_profile(arguments, arguments.profile)
            return 0
        costs = measure(arguments, arguments.platform, [])
        if arguments.counting_platform:
            costs.update(measure(arguments, arguments.counting_platform, ["whole-model-read"]))
    except (Failure, subprocess.CalledProcessError) as failure:
        print(f"error: {failure}", file=sys.stderr)
        return 1
    return 0 if report(costs, read_budgets(arguments.budgets) if arguments.budgets else {}) else 1


if __name__ == "__main__":
    sys.exit(main())
