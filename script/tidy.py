#!/usr/bin/env python3
"""Runs clang-tidy over the sources below the given folders that changed since it last found nothing in them.

    script/tidy.py BUILD FOLDER...

BUILD holds compile_commands.json and the objects: the build makes a source's object anew when the source or one of its
headers changes, so that an object younger than the source's mark asks for another look. Exit status: 0 nothing found,
1 something found, 2 wrong usage.
"""

import concurrent.futures
import json
import os
import pathlib
import re
import subprocess
import sys
import time


def commands(build, root, folders):
    """The first command of each source: some are compiled for several targets, always from the same text."""
    found = {}
    for command in json.loads((build / "compile_commands.json").read_text()):
        source = os.path.relpath(command["file"], root)
        if source.startswith(tuple(folder + "/" for folder in folders)):
            found.setdefault(source, command)
    return found


def is_checked(mark, command, newest_of_all):
    if not mark.exists():
        return False
    object_file = re.search(r" -o (\S+)", command["command"])
    path = pathlib.Path(command["directory"], object_file.group(1))
    return path.exists() and mark.stat().st_mtime > max(path.stat().st_mtime, newest_of_all)


def look(database, source):
    started = time.time()
    run = subprocess.run(["clang-tidy", "-p", database, "--quiet", source], capture_output=True, text=True)
    remarks = [line for line in run.stderr.splitlines() if not re.match(r"\d+ warnings? (generated|treated)", line)]
    return run.returncode == 0, started, run.stdout + "\n".join(remarks)


def main(arguments):
    if len(arguments) < 2:
        print("usage: script/tidy.py BUILD FOLDER...", file=sys.stderr)
        return 2
    build, folders = pathlib.Path(arguments[0]), arguments[1:]
    marks = build / "tidy"
    marks.mkdir(parents=True, exist_ok=True)
    own = max(os.stat(path).st_mtime for path in (".clang-tidy", __file__))
    found = commands(build, os.getcwd(), folders)
    if not found:
        print(f"error: no source below {' '.join(folders)} in {build}/compile_commands.json", file=sys.stderr)
        return 1
    (marks / "compile_commands.json").write_text(json.dumps(list(found.values())))

    def mark_of(source):
        return marks / (source.replace("/", "+") + ".clean")

    changed = [source for source, command in found.items() if not is_checked(mark_of(source), command, own)]
    print(f"{len(found)} sources, {len(changed)} to look at", file=sys.stderr)
    faulty = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        looks = {pool.submit(look, str(marks), source): source for source in changed}
        for count, done in enumerate(concurrent.futures.as_completed(looks), 1):
            source = looks[done]
            clean, started, remarks = done.result()
            print(f"[{count}/{len(changed)}] {source}{'' if clean else ': see below'}", file=sys.stderr)
            if clean:
                # A file that was saved during the check is younger.
                mark_of(source).touch()
                os.utime(mark_of(source), (started, started))
            else:
                faulty += 1
                print(remarks, flush=True)
    print(f"clang-tidy: {len(found) - faulty} sources clean, {faulty} with findings", file=sys.stderr)
    return 1 if faulty else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
