#!/usr/bin/env python3
"""Turns the report of usp_conformance_tests into a table by TP-469 number and a junit file.

usage: usp-conformance.py lines|table RUN.xml JUNIT.xml
"""
import re
import sys
import xml.etree.ElementTree as xml

OFFERED = ("it concerns sessions, roles, discovery, TraceRoute() or TriggerAction, which the agent does not offer and "
           "its supported data model does not list")

# Numbers that do not apply, with the reason.
NOT_APPLICABLE = {number: OFFERED for number in ("1.63", "1.85", "1.92", "1.93", "1.94")}


def key(number):
    return [int(part) for part in number.split(".")]


def words(name):
    """CamelCase into words."""
    return re.sub(r"(?<=[a-z0-9])(?=[A-Z])|(?<=[A-Z])(?=[A-Z][a-z])", " ", name).capitalize()


def results(path):
    found = {}
    for case in xml.parse(path).iter("testcase"):
        match = re.fullmatch(r"T(\d+)_(\d+)_(\w+)", case.get("name", ""))
        if match is None or case.get("status") == "notrun":
            continue
        number = f"{match[1]}.{match[2]}"
        failures = [failure.get("message", "") for failure in case.iter("failure")]
        if case.find("skipped") is not None:
            outcome, reason = "not applicable", case.find("skipped").get("message", "")
        else:
            outcome, reason = ("fail", failures[0]) if failures else ("pass", "")
        found[number] = (words(match[3]), outcome, reason, float(case.get("time", "0")))
    return found


def write_junit(path, rows):
    suite = xml.Element("testsuite", name="TP-469", tests=str(len(rows)),
                        failures=str(sum(row[2] == "fail" for row in rows)),
                        skipped=str(sum(row[2] == "not applicable" for row in rows)))
    for number, title, outcome, reason, seconds in rows:
        case = xml.SubElement(suite, "testcase", classname="TP-469", name=f"{number} {title}", time=f"{seconds:.3f}")
        if outcome == "fail":
            xml.SubElement(case, "failure", message=reason)
        elif outcome == "not applicable":
            xml.SubElement(case, "skipped", message=reason)
    xml.ElementTree(suite).write(path, encoding="utf-8", xml_declaration=True)


def main():
    form, run, junit = sys.argv[1:4]
    found = results(run)
    rows = [(number, *found[number]) for number in found]
    rows += [(number, "", "not applicable", reason, 0.0) for number, reason in NOT_APPLICABLE.items()
             if number not in found]
    rows.sort(key=lambda row: key(row[0]))
    write_junit(junit, rows)
    if form == "table":
        print("| Test | Subject | Result |\n|---|---|---|")
    for number, title, outcome, reason, _ in rows:
        result = f"{outcome}: {reason.splitlines()[0]}" if reason else outcome
        print(f"| {number} | {title} | {result} |" if form == "table" else f"{number:7} {result:15} {title}")
    counts = {name: sum(row[2] == name for row in rows) for name in ("pass", "fail", "not applicable")}
    print(f"\n{counts['pass']} pass, {counts['fail']} fail, {counts['not applicable']} not applicable", file=sys.stderr)
    return 1 if counts["fail"] or not counts["pass"] else 0


if __name__ == "__main__":
    sys.exit(main())
