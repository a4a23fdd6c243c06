#!/usr/bin/env bash
# Plays a pod without a network, gives it a broker, and waits until its gateways are ready as the probe sees it. Prints its log
# and fleet status: pod.sh POD.yaml WORK
set -euo pipefail
pod=$1 work=$2
podman kube play --network none "$pod" >"$work/play.log" 2>&1 || podman play kube --network none "$pod" >"$work/play.log" 2>&1 || {
    tail -n 5 "$work/play.log"
    exit 1
}
name=quorvel-wifi-0-gateways
broker=
finish() {
    [ -z "$broker" ] || kill "$broker"
    podman play kube --down "$pod" >/dev/null 2>&1 || true
}
trap finish EXIT
process=$(podman inspect --format '{{.State.Pid}}' "$name")
PATH=$PATH:/usr/sbin nsenter --net --target "$process" mosquitto -c "$work/mosquitto.conf" >/dev/null 2>&1 &
broker=$!
ready=
for ((tries = 0; tries < 150 && ${#ready} == 0; tries++)); do
    ready=$(podman exec "$name" quorvel-wifi fleet status --plain 2>&1 | grep -E '^connected.10$') || sleep 0.2
done
podman logs "$name"
echo "$ready"
podman exec "$name" quorvel-wifi fleet status --plain
