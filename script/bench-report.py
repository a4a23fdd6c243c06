#!/usr/bin/env python3
"""Makes one table of what script/bench measured: prints it, and writes it into the document's place for it."""
import json
import os
import platform
import re
import statistics
import sys

folder, document = sys.argv[1], sys.argv[2]


def lines(name):
    try:
        with open(os.path.join(folder, name)) as file:
            return file.read().splitlines()
    except FileNotFoundError:
        return []


rows = []


def row(what, arm="", native="", target="", met=None):
    rows.append((what, arm, native, target, "" if met is None else "yes" if met else "**no**"))


# Instructions of a call, its floor's, and the difference, by operation.
def counts_in(name):
    counts = {}
    for line in lines(name)[1:]:
        words = line.split()
        if len(words) >= 4:
            counts[words[0]] = [float(word) for word in words[1:4]]
    return counts


arm_counts = counts_in("arm-counts")
native_counts = counts_in("counts")


def cost(counts, name):
    return f"{counts[name][0]:,.0f}" if name in counts else "not measured"


def instructions(name, what, limit=None):
    arm = cost(arm_counts, name)
    if name in arm_counts:
        arm += f" (floor {arm_counts[name][1]:,.0f})" if arm_counts[name][1] else ""
    if limit is None:
        row(what, arm, cost(native_counts, name))
    else:
        row(what, arm, cost(native_counts, name), f"≤ {limit:,}",
            name in arm_counts and arm_counts[name][0] <= limit)


instructions("mapped-number-read", "instructions of a mapped number read (`WiFiRadioLastChangeGet`)", 340)
instructions("mapped-text-read", "… of a mapped text read, 64 characters (`WiFiRadioAliasGet`)", 560)
instructions("staged-set", "… of a staged set (`WiFiRadioChannelSet`)", 80)
instructions("apply-one-of-65", "… of an apply of one staged number on a radio, 65 nodes", 2400)
instructions("apply-one-of-24", "… of an apply of one staged number on an access point, 24 nodes")
instructions("snapshot-ssid", "… of a snapshot of an SSID")


# Through the recorder, against the plain call.
recorded_counts = counts_in("arm-recorded")
for name, what, limited in (("mapped-number-read", "a mapped number read through the recorder, in the calling thread", True),
                            ("mapped-text-read", "… of a mapped text read through it", False),
                            ("staged-set", "… of a staged set through it", False)):
    if name not in recorded_counts or name not in arm_counts:
        continue
    ratio = recorded_counts[name][0] / arm_counts[name][0]
    arm = f"{cost(recorded_counts, name)} ({ratio:.2f} × the plain call)"
    what = f"instructions of {what}" if limited else what
    row(what, arm, "", *(("≤ 3 ×", ratio <= 3) if limited else ()))


def relocations(name):
    """Relocations of a library: those of the parameter table, other addresses in it, and names that the loader looks up."""
    elf = "\n".join(lines(name))
    table = re.search(r": (\w+) +(\w+) OBJECT .* gQuorvelWiFiDataModelTable$", elf, re.MULTILINE)
    begin = int(table[1], 16)
    end = begin + int(table[2], 0)
    of_table = others = looked_up = 0
    for offset, kind in re.findall(r"^(\w+) +\w+ R_\w+?_(RELATIVE|GLOB_DAT|JUMP_SLOT?|ABS32|64)\b", elf, re.MULTILINE):
        if begin <= int(offset, 16) < end:
            of_table += 1
        elif kind == "RELATIVE":
            others += 1
        else:
            looked_up += 1
    return of_table, others, looked_up


size = int(lines("armhf.size")[0])
row("file, stripped, bytes", f"{size:,}", "", "≤ 196,608", size <= 196608)
elf = "\n".join(lines("armhf.elf"))
text = int(re.search(r" \.text +PROGBITS +\S+ +\S+ +(\S+)", elf).group(1), 16)
row("… of it code (`.text`)", f"{text:,}")
for index, what in enumerate(("relocations of the parameter table, which needs them", "… of other tables' addresses",
                              "… by name: calls and data of other libraries")):
    row(what, *(f"{relocations(name)[index]:,}" for name in ("armhf.elf", "native.elf")))

benchmarks = {}
timed = os.path.exists(os.path.join(folder, "time.json"))
if timed:
    with open(os.path.join(folder, "time.json")) as file:
        result = json.load(file)
    for entry in result["benchmarks"]:
        if entry.get("run_type") != "iteration":
            continue
        name = entry["run_name"].split("/process_time")[0]
        benchmarks.setdefault(name, []).append(entry)


# The smallest of the repetitions: whatever else the machine does only adds.
def cpu(name, key="cpu_time"):
    return min(entry[key] for entry in benchmarks[name])


if "whole-model-read" in arm_counts:
    row("whole model read, instructions beyond its floor (user mode)",
        *(f"{counts['whole-model-read'][2] / 1e6:.1f} M (floor {counts['whole-model-read'][1] / 1e6:.1f} M)"
          if "whole-model-read" in counts else "not measured" for counts in (arm_counts, native_counts)))
if timed:
    ratio = cpu("wholeModel") / cpu("wholeModelFloor")
    reads = cpu("wholeModel", "reads")
    row(f"whole model read ({reads:,.0f} reads: 24 access points, 8 stations each) against its floor, time", "", f"{ratio:.2f} ×",
        "≤ 1.4 ×", ratio <= 1.4)
if "path-to-value" in native_counts:
    value = native_counts["path-to-value"][0]
    row("full path to value in the host process (`Device.WiFi.Radio.2.LastChange`), instructions", "", f"{value:.0f}",
        "≤ 800", value <= 800)
else:
    row("full path to value in the host process, instructions", "", "not measured", "≤ 800")

if timed:
    for name, what in (("stationFields", "three fields of every station"), ("stationList", "station list")):
        points = [(n, cpu(f"{name}/{n}")) for n in (1, 8, 64, 256)]
        slopes = [(b[1] - a[1]) / (b[0] - a[0]) for a, b in zip(points, points[1:])]
        middle = statistics.median(slopes)
        spread = max(abs(slope / middle - 1) for slope in slopes)
        row(f"{what} at 1, 8, 64, 256 stations, ns per further station", "", ", ".join(f"{slope:.1f}" for slope in slopes),
            "constant within 15%", spread <= 0.15)

    ratios = [cpu(f"neighbourResults/{n}") / cpu(f"neighbourTwoPasses/{n}") for n in (100, 1000, 10000)]
    row("neighbour results, 100, 1,000, 10,000 entries against two bare passes over the file", "",
        ", ".join(f"{value:.2f} ×" for value in ratios), "≤ 3 ×", max(ratios) <= 3)

    rate = cpu("eventsBareLoop") / cpu("eventsThroughListener")
    row("events through the listener against a bare loop, rate", "", f"{rate:.2f} ×", "≥ 0.9 ×", rate >= 0.9)

stack = {line.split()[0]: line.split()[1:] for line in lines("stack")}
own = int(stack["allocations-of-the-plug-in"][0])
row("heap allocations of the plug-in in all gets, sets, applies and snapshots", "", str(own), "0", own == 0)
row("… of the C library's streams for the files and commands that the same reads open", "",
    stack["allocations-of-streams"][0])

if timed:
    row("load and unload against an empty library, µs", "", f"{cpu('loadPlugin'):.0f} against {cpu('loadEmptyLibrary'):.0f}")
for key, what, limit in (("stack-outside-snapshots", "largest stack depth of an exported function", 8192),
                         ("stack-in-snapshots", "largest stack depth of a snapshot", 16384)):
    depth = int(stack[key][0])
    row(f"{what}, bytes ({' '.join(stack[key][1:])})", "", f"{depth:,}", f"≤ {limit:,}", depth <= limit)

rates = [int(line.split()[1]) for line in lines("manager.rate")]
if rates:
    row("manager requests per second through `libwlcsm.so` and the daemon, against one byte to a process and back", "",
        " against ".join(f"{rate:,}" for rate in rates))
for line in lines("idle"):
    row("processor time of an idle daemon in 5 s, ticks of 10 ms", "", line)
boards = {}
for line in lines("board"):
    path, time, values = line.split()
    boards.setdefault(path, []).append((int(time), int(values)))
if len(boards) == 2:
    start = statistics.median(time for time, _ in boards["Device.WiFi.RadioNumberOfEntries"])
    whole = statistics.median(time for time, _ in boards["Device.WiFi."])
    values = boards["Device.WiFi."][0][1]
    row("start-up of a board, one read and its end, ms", "", f"{start / 1000:.0f}")
    row(f"`quorvel-wifi get Device.WiFi.` ({values:,} lines) on a board started for it, ms", "", f"{whole / 1000:.0f}")

header = ("What", "32-bit ARM", "64-bit", "Target", "Met")
table = ["| " + " | ".join(header) + " |", "|---|---|---|---|---|"]
table += ["| " + " | ".join(cells) + " |" for cells in rows]
width = max(len(cells[0]) for cells in rows)
for what, arm, native, target, met in (header, *rows):
    print(f"{what:<{width}}  {arm:<28} {native:<34} {target:<20} {met.replace('*', '')}".rstrip())


def processor():
    with open("/proc/cpuinfo") as file:
        names = [line.split(":", 1)[1].strip() for line in file if line.startswith("model name")]
    return f"{names[0]}, {len(names)} cores" if names else platform.machine()


load = os.getloadavg()[0]
machine = f"Measured on {processor()}, Linux {platform.release()}, load average {load:.1f}; 64-bit instructions with callgrind."
if not timed:
    machine += " No times were measured in this run."


def alternatives():
    """The table of what other options make of the library, and the chosen ones'."""
    named = [line.split(maxsplit=2) for line in lines("alternatives")]
    table = ["| Options | Number read | Text read | Staged set | Apply, radio | File, bytes |", "|---|---|---|---|---|---|"]
    for name, bytes_of_file, options in named:
        counts = counts_in(f"alternative-{name}")
        cells = [cost(counts, each) for each in ("mapped-number-read", "mapped-text-read", "staged-set", "apply-one-of-65")]
        table.append("| " + " | ".join([options, *cells, f"{int(bytes_of_file):,}"]) + " |")
    return table if named else []


begin, end = "<!-- begin of what script/bench writes -->", "<!-- end of what script/bench writes -->"
with open(document) as file:
    content = file.read()
before, rest = content.split(begin)
after = rest.split(end)[1]
with open(document, "w") as file:
    file.write(before + begin + "\n" + machine + "\n\n" + "\n".join(table) + "\n\n" + "\n".join(alternatives()) + "\n" + end + after)
