#!/usr/bin/env bash
# Plays a pod without a network, gives it a broker, and prints its log once its gateways have come up: pod.sh POD.yaml WORK
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
for ((tries = 0; tries < 300; tries++)); do
    podman logs "$name" 2>&1 | grep -q 'gateways are up' && break
    sleep 0.2
done
podman logs "$name"
