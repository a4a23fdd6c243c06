"""Makes a pod that podman plays of the StatefulSet on standard input: its template, config maps and secret, for pod 0.

The pod has no network here, so its broker is the one that the test runs in the pod's own network name space.
"""
import sys

import yaml

objects = [each for each in yaml.safe_load_all(sys.stdin) if each]
stateful = next(each for each in objects if each["kind"] == "StatefulSet")
template = stateful["spec"]["template"]
maps = {each["metadata"]["name"]: each for each in objects if each["kind"] == "ConfigMap"}
# podman 4.3 reads no envFrom of a config map with a generated name and no probes by exec in a pod without systemd, and needs
# a word on whether a secret may be absent: these are put in its own words.
pod = template["spec"]
container = pod["containers"][0]
settings = maps[container.pop("envFrom")[0]["configMapRef"]["name"]]["data"]
settings["BROKER"] = "mqtt://127.0.0.1:1883"
container["env"] = [{"name": name, "value": value} for name, value in settings.items()]
container["env"].append({"name": "HOSTNAME", "value": "quorvel-wifi-0"})
for probe in ("startupProbe", "readinessProbe", "livenessProbe"):
    container.pop(probe)
for volume in pod["volumes"]:
    if "secret" in volume:
        volume["secret"]["optional"] = False
documents = [each for each in objects if each["kind"] in ("ConfigMap", "Secret")]
documents.append({"apiVersion": "v1", "kind": "Pod", "spec": pod,
                  "metadata": {"name": "quorvel-wifi-0", "labels": template["metadata"]["labels"]}})
print(yaml.safe_dump_all(documents))
