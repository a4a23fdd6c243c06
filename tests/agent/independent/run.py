#!/usr/bin/env python3
"""Runs a controller that was written by others against the agent.

usage: run.py CONSOLE FOLDER [DOCUMENT]

Installs the npm package usp-js into FOLDER, for this test only; starts a broker and a board; runs controller.js, or with
a DOCUMENT the JavaScript that it shows. Exits with 77 when the package cannot be installed.
"""
import os
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time

PACKAGE = "usp-js@0.5.1"
SKIP = 77


def install(folder):
    os.makedirs(folder, exist_ok=True)
    if os.path.isdir(os.path.join(folder, "node_modules", "usp-js")):
        return
    if shutil.which("npm") is None:
        print("npm is not installed")
        sys.exit(SKIP)
    done = subprocess.run(["npm", "install", "--no-audit", "--no-fund", "--ignore-scripts", PACKAGE], cwd=folder)
    if done.returncode != 0:
        print(f"{PACKAGE} cannot be installed")
        sys.exit(SKIP)


def free_port():
    with socket.socket() as taken:
        taken.bind(("127.0.0.1", 0))
        return taken.getsockname()[1]


def start_broker(folder, port):
    path = os.path.join(folder, "broker.conf")
    with open(path, "w", encoding="utf-8") as file:
        file.write(f"listener {port} 127.0.0.1\nallow_anonymous true\n")
        if os.getuid() == 0:
            file.write("user root\n")
    program = "/usr/sbin/mosquitto" if os.path.exists("/usr/sbin/mosquitto") else "mosquitto"
    broker = subprocess.Popen([program, "-c", path], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    for _ in range(500):
        with socket.socket() as probe:
            if probe.connect_ex(("127.0.0.1", port)) == 0:
                return broker
        time.sleep(0.01)
    raise RuntimeError("the broker does not start")


def script_of(document, port):
    with open(document, encoding="utf-8") as file:
        block = re.search(r"```js\n(.*?)```", file.read(), re.DOTALL)
    return block.group(1).replace("1883", str(port))


def main():
    console, folder = sys.argv[1:3]
    document = sys.argv[3] if len(sys.argv) > 3 else None
    install(folder)
    port = free_port()
    with tempfile.TemporaryDirectory(prefix="usp-js-") as place:
        state = os.path.join(place, "state")
        broker = start_broker(place, port)

        def on_board(*words):
            return subprocess.run([console, "--state", state, *words], check=True, text=True, stdout=subprocess.PIPE).stdout

        try:
            on_board("up", "--usp", f"mqtt://127.0.0.1:{port}")
            environment = {**os.environ, "NODE_PATH": os.path.join(folder, "node_modules")}
            if document is None:
                here = os.path.dirname(os.path.abspath(__file__))
                done = subprocess.run(["node", os.path.join(here, "controller.js"), str(port), console, state],
                                      env=environment, timeout=240)
                return done.returncode
            script = subprocess.Popen(["node", "-e", script_of(document, port)], env=environment, text=True,
                                      stdout=subprocess.PIPE)
            lines = []
            for line in script.stdout:
                print(line, end="")
                lines.append(line)
                if "listening" in line:
                    on_board("station", "join", "02:5a:00:00:77:02", "1")
                if "02:5a:00:00:77:02" in line.lower():
                    break
            script.send_signal(signal.SIGTERM)
            script.wait(timeout=20)
            on_board("down")
            on_board("up")
            ssid = on_board("get", "Device.WiFi.SSID.1.SSID")
            print(ssid, end="")
            seen = "".join(lines).lower()
            return 0 if "02:5a:00:00:77:02" in seen and "lab" in ssid else 1
        finally:
            subprocess.run([console, "--state", state, "down"], stdout=subprocess.DEVNULL)
            broker.kill()


if __name__ == "__main__":
    sys.exit(main())
