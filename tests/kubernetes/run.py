#!/usr/bin/env python3
"""Checks the files for continuous integration and for Kubernetes.

  run.py SOURCES FOLDER    builds each overlay with kubectl, validates every object by the npm package kubernetes-models,
                           which it installs into FOLDER for this test only, and checks what the overlays promise

Exit status: 0, 1 for a mistake, 77 when a tool is missing or cannot be had.
"""
import json
import os
import re
import shutil
import subprocess
import sys

try:
    import yaml
except ImportError:
    print("NOT TESTED: python3-yaml is not installed")
    sys.exit(77)

PACKAGE = "kubernetes-models@5.1.0"
SECONDS = 240
mistakes = []


def check(holds, text):
    if not holds:
        mistakes.append(text)
        print("WRONG: " + text)


def load(path):
    with open(path, encoding="utf-8") as file:
        return yaml.safe_load(file)


def check_ci(sources):
    """The jobs have the form that the services read, and play scenarios that are shipped."""
    github = load(os.path.join(sources, "packaging/ci/github-actions.yml"))
    # YAML reads the key "on" as true.
    check(set(github) == {"name", True, "jobs"}, "github-actions.yml has the members name, on and jobs")
    job = github["jobs"]["scenarios"]
    check(job["runs-on"] == "ubuntu-latest", "the GitHub job says where it runs")
    check(all(("run" in step) != ("uses" in step) for step in job["steps"]), "each GitHub step runs or uses something")
    upload = job["steps"][-1]
    check(upload["if"] == "always()" and upload["with"]["path"].endswith(".xml"), "GitHub keeps the reports always")
    gitlab = load(os.path.join(sources, "packaging/ci/gitlab-ci.yml"))
    job = gitlab["simulated-gateway"]
    check(all(isinstance(line, str) for line in job["script"]), "each line of the GitLab script is a text")
    check(job["image"]["entrypoint"] == [""], "GitLab runs a shell in the image")
    check(job["artifacts"]["when"] == "always" and "junit" in job["artifacts"]["reports"], "GitLab reads the reports")
    text = " ".join(job["script"]) + " ".join(step.get("run", "") for step in github["jobs"]["scenarios"]["steps"])
    played = set(re.findall(r"play ([a-z][a-z-]+)", text)) | set(re.search(r"for scenario in ([a-z -]+);", text)[1].split())
    shipped = {name[:-5] for name in os.listdir(os.path.join(sources, "gateway/scenarios"))}
    check(len(played) > 1 and played <= shipped, f"the jobs play shipped scenarios: {sorted(played)}")
    for line in text.split("docker run")[1:]:
        check("--privileged" not in line and "--cap-add" not in line, "the container asks for no privilege")


def build(overlay):
    done = subprocess.run(["kubectl", "kustomize", overlay], text=True, capture_output=True)
    check(done.returncode == 0, f"{overlay} builds: {done.stderr}")
    return [each for each in yaml.safe_load_all(done.stdout) if each]


def the(objects, kind):
    found = [each for each in objects if each["kind"] == kind]
    check(len(found) >= 1, f"there is a {kind}")
    return found


def check_pod(pod):
    """The pod meets the restricted pod security standard."""
    check(pod["securityContext"]["runAsNonRoot"] is True, "the pod does not run as root")
    check(pod["securityContext"]["seccompProfile"]["type"] == "RuntimeDefault", "the pod has the usual seccomp profile")
    check(pod["automountServiceAccountToken"] is False, "the pod gets no token")
    check(not any(pod.get(each) for each in ("hostNetwork", "hostPID", "hostIPC")), "the pod shares nothing of its host")
    allowed = {"configMap", "emptyDir", "secret"}
    check(all(set(volume) - {"name"} <= allowed for volume in pod["volumes"]), "the pod mounts nothing of its host")
    for container in pod["containers"]:
        context = container["securityContext"]
        check(context["allowPrivilegeEscalation"] is False, "a container gains no privileges")
        check(context["capabilities"] == {"drop": ["ALL"]}, "a container has no capabilities")
        check(context["readOnlyRootFilesystem"] is True, "a container writes to its volumes only")
        for probe in ("startupProbe", "readinessProbe", "livenessProbe"):
            check(probe in container, f"there is a {probe}")


def check_overlay(sources, name, objects):
    settings = next(each for each in the(objects, "ConfigMap") if "GATEWAYS_PER_POD" in each["data"])
    per_pod = int(settings["data"]["GATEWAYS_PER_POD"])
    stateful = the(objects, "StatefulSet")[0]
    pods = stateful["spec"]["replicas"]
    check(pods * per_pod == int(name), f"overlay {name} has {pods} pods with {per_pod} gateways each")
    check(stateful["spec"]["podManagementPolicy"] == "Parallel", "pods start at once")
    pod = stateful["spec"]["template"]["spec"]
    check_pod(pod)
    resources = pod["containers"][0]["resources"]
    scale = [sys.executable, os.path.join(sources, "script/scale"), "--resources", str(per_pod)]
    needed = json.loads(subprocess.run(scale, check=True, text=True, capture_output=True).stdout)
    check(resources == needed, f"overlay {name} asks for {resources}; the measured table says {needed}")
    labels = stateful["spec"]["template"]["metadata"]["labels"]
    policy = the(objects, "NetworkPolicy")[0]["spec"]
    selected = policy["podSelector"]["matchLabels"]
    check(selected.items() <= labels.items(), "the network policy selects the pods")
    check(policy["ingress"] == [] and set(policy["policyTypes"]) == {"Ingress", "Egress"}, "nothing reaches the pods")
    ports = sorted((port["protocol"], port["port"]) for rule in policy["egress"] for port in rule["ports"])
    check(ports == [("TCP", 53), ("TCP", 1883), ("TCP", 8883), ("UDP", 53)], f"pods reach broker and names only: {ports}")
    check(all("to" in rule for rule in policy["egress"]), "each way out names its peers")
    secret = the(objects, "Secret")[0]["metadata"]["name"]
    check(any(volume.get("secret", {}).get("secretName") == secret for volume in pod["volumes"]), "the secret is mounted")


def validate(folder, objects):
    done = subprocess.run(["npm", "install", "--no-audit", "--no-fund", "--ignore-scripts", "--loglevel=error", PACKAGE],
                          cwd=folder, text=True, capture_output=True, timeout=SECONDS)
    if done.returncode != 0:
        print(f"NOT TESTED: npm cannot install {PACKAGE}: {done.stderr[-300:]}")
        sys.exit(77)
    with open(os.path.join(folder, "objects.json"), "w", encoding="utf-8") as file:
        json.dump(objects, file)
    shutil.copy(os.path.join(os.path.dirname(os.path.abspath(__file__)), "validate.cjs"), folder)
    done = subprocess.run(["node", "validate.cjs", "objects.json"], cwd=folder, text=True, capture_output=True, timeout=SECONDS)
    print(done.stdout, end="")
    check(done.returncode == 0, "kubernetes-models accepts every object: " + done.stderr)


def main():
    sources, folder = sys.argv[1:3]
    check_ci(sources)
    for tool in ("kubectl", "npm", "node"):
        if shutil.which(tool) is None:
            print(f"NOT TESTED: {tool} is not installed")
            sys.exit(1 if mistakes else 77)
    everything = []
    overlays = os.path.join(sources, "packaging/kubernetes/overlays")
    for name in sorted(os.listdir(overlays), key=int):
        objects = build(os.path.join(overlays, name))
        check_overlay(sources, name, objects)
        everything += objects
    os.makedirs(folder, exist_ok=True)
    validate(folder, everything)
    print(f"{len(everything)} objects of {len(os.listdir(overlays))} overlays, {len(mistakes)} mistakes")
    sys.exit(1 if mistakes else 0)


main()
