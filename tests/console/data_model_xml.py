#!/usr/bin/env python3
"""Reads the DM XML form of the data model back and compares it with the JSON form.

usage: data_model_xml.py CONSOLE
"""
import json
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as xml


def run(state, *words):
    return subprocess.run([sys.argv[1], "--state", state, *words], check=True, text=True, stdout=subprocess.PIPE).stdout


def access_of(parameter):
    if parameter.find("syntax").get("hidden") == "true":
        return "writeOnly"
    return parameter.get("access")


with tempfile.TemporaryDirectory() as state:
    expected = json.loads(run(state, "dump", "datamodel", "--json"))["parameters"]
    document = xml.fromstring(run(state, "dump", "datamodel", "--format", "bbf-xml").encode())

assert document.tag == "{urn:broadband-forum-org:cwmp:datamodel-1-14}document", document.tag
read = []
for entry in document.find("model").findall("object"):
    table = entry.get("name").endswith("{i}.")
    assert entry.get("maxEntries") == ("unbounded" if table else "1"), entry.get("name")
    for parameter in entry.findall("parameter"):
        read.append({"path": entry.get("name") + parameter.get("name"), "type": parameter.find("syntax")[0].tag,
                     "access": access_of(parameter)})


def by_path(item):
    return item["path"]


assert len(read) > 200, len(read)
assert sorted(read, key=by_path) == sorted(expected, key=by_path)
print(f"{len(read)} parameters read back")
