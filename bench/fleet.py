"""Measures fleets: called by script/bench-fleet."""
import argparse
import json
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import time

HERE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
RESULT = os.path.join(HERE, "bench/fleet.json")
SIZES = [10, 100, 1000]
PATIENCE = 600  # seconds, for any one step


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Broker:
    """A mosquitto on loopback."""

    def __init__(self, folder):
        self.port = free_port()
        self.configuration = os.path.join(folder, "mosquitto.conf")
        with open(self.configuration, "w", encoding="utf-8") as file:
            file.write(f"listener {self.port} 127.0.0.1\nallow_anonymous true\nmax_connections -1\n")
        self.process = None

    def start(self):
        program = shutil.which("mosquitto") or "/usr/sbin/mosquitto"
        self.process = subprocess.Popen([program, "-c", self.configuration], stdout=subprocess.DEVNULL,
                                        stderr=subprocess.DEVNULL)
        while True:
            try:
                socket.create_connection(("127.0.0.1", self.port)).close()
                return
            except OSError:
                time.sleep(0.05)

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait()

    def mib(self):
        with open(f"/proc/{self.process.pid}/smaps_rollup", encoding="ascii") as file:
            return sum(int(line.split()[1]) for line in file if line.startswith("Private_")) / 1024


def available_kib():
    with open("/proc/meminfo", encoding="ascii") as file:
        return next(int(line.split()[1]) for line in file if line.startswith("MemAvailable:"))


class Fleet:
    def __init__(self, program, folder):
        self.command = [program, "--state", folder, "--json"]

    def run(self, *words):
        done = subprocess.run([*self.command, "fleet", *words], text=True, capture_output=True)
        if not done.stdout:
            raise SystemExit(f"error: fleet {' '.join(words)}: {done.stderr}")
        return json.loads(done.stdout)

    def await_connected(self, count, begun):
        while True:
            status = self.run("status", "--seconds", "0.1")
            if status["connected"] == count:
                return time.time() - begun, status
            if time.time() - begun > PATIENCE:
                raise SystemExit(f"error: {status['connected']} of {count} connected after {PATIENCE} s")


def measure(program, count, busy):
    with tempfile.TemporaryDirectory(prefix="quorvel-bench-") as folder:
        broker = Broker(folder)
        broker.start()
        fleet = Fleet(program, os.path.join(folder, "fleet"))
        try:
            before = available_kib()
            broker_before = broker.mib()
            begun = time.time()
            result = fleet.run("up", str(count), "--usp", f"mqtt://127.0.0.1:{broker.port}")
            up = time.time() - begun
            if result["up"] != count:
                raise SystemExit(f"error: {result['up']} of {count} are up: {result['failed'][:3]}")
            connected, status = fleet.await_connected(count, begun)
            start_processor = status["processorSeconds"]
            time.sleep(15)  # what the start has left to do
            status = fleet.run("status", "--seconds", "30")
            row = {"gateways": count, "up_seconds": up, "connected_seconds": connected,
                   "slowest_start": status["slowestStart"]["seconds"], "pss_mib": status["memoryKiB"] / 1024 / count,
                   "available_mib": (before - available_kib()) / 1024 / count,
                   "processor_percent": status["processor"] * 100, "start_processor_seconds": start_processor,
                   "broker_mib": broker.mib() - broker_before, "processes": status["processes"]}
            if busy:
                del row["available_mib"]  # others take and give memory meanwhile
            broker.stop()
            fleet.await_connected(0, time.time())
            broker.start()
            row["restart_seconds"] = fleet.await_connected(count, time.time())[0]
            return row
        finally:
            subprocess.run([*fleet.command, "fleet", "down"], capture_output=True)
            broker.stop()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", default=os.path.join(HERE, "build/release"))
    parser.add_argument("--only", type=int, nargs="+", default=SIZES)
    parser.add_argument("--busy", metavar="WHY", default="")
    arguments = parser.parse_args()
    program = os.path.abspath(os.path.join(arguments.build, "bin/quorvel-wifi"))
    rows = {}
    if os.path.exists(RESULT):
        with open(RESULT, encoding="utf-8") as file:
            rows = {row["gateways"]: row for row in json.load(file)["rows"]}
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    machine = f"{os.cpu_count()} processors with {memory:.0f} GiB" + (f" ({arguments.busy})" if arguments.busy else "")
    for count in arguments.only:
        print(f"{count} gateways ...", flush=True)
        row = measure(program, count, bool(arguments.busy))
        rows[count] = {name: round(value, 3) for name, value in row.items()}
        print("  " + ", ".join(f"{name} {value}" for name, value in rows[count].items()), flush=True)
        with open(RESULT, "w", encoding="utf-8") as file:
            json.dump({"machine": machine, "rows": [rows[each] for each in sorted(rows)]}, file, indent=2)
            file.write("\n")


main()
