#!/usr/bin/env bash
# Builds the image and runs it as users do: in a default container without privileges or network.
#   image.sh [--build DIR]    takes the programs of this build instead of the release build's
# The last line is "image: N passed, M failed, K skipped". Where no container can be run, it says why and skips.
# Image and base stay in build/image, so that the next time is quicker.
set -uo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

passed=0
failed=0
skipped=0
pass() { passed=$((passed + 1)) && printf 'ok    %s\n' "$1"; }
wrong() { failed=$((failed + 1)) && printf 'WRONG %s\n' "$1"; }
finish() {
    trap - EXIT
    [ -z "${broker:-}" ] || kill "$broker" 2>/dev/null
    [ -z "${containers:-}" ] || podman rm --force --time 0 $containers >/dev/null 2>&1
    buildah rmi --prune >/dev/null 2>&1 # the image of the time before
    rm -rf "$work"
    printf 'image: %d passed, %d failed, %d skipped\n' "$passed" "$failed" "$skipped"
    [ "$failed" -eq 0 ]
    exit
}
work=$(mktemp -d)
containers=
trap finish EXIT

# Storage of its own, where no image of the user's is.
storage=$PWD/build/image
mkdir -p "$storage"
export CONTAINERS_STORAGE_CONF=$work/storage.conf CONTAINERS_CONF=$work/containers.conf STORAGE_DRIVER=vfs
printf '[storage]\ndriver = "vfs"\nrunroot = "%s"\ngraphroot = "%s"\n' "$storage/run" "$storage/storage" >"$CONTAINERS_STORAGE_CONF"
printf '[containers]\ndefault_ulimits = []\n[engine]\nevents_logger = "none"\ncgroup_manager = "cgroupfs"\nruntime = "runc"\n' >"$CONTAINERS_CONF"

image=localhost/quorvel-wifi:latest
if ! reason=$([ "$(id -u)" -eq 0 ] || { echo "only root builds an image here" && exit 1; } && unshare --mount true 2>&1); then
    skipped=$((skipped + 1))
    printf 'NOT TESTED: no image can be built here: %s\n' "$reason"
    exit
fi
if ! script/image --output "$work/image.tar" "$@" >"$work/log" 2>&1; then
    tail -n 30 "$work/log"
    wrong "the image is built"
    exit
fi
pass "the image is built"

size=$(stat -c %s "$work/image.tar")
if [ "$size" -le $((60 * 1024 * 1024)) ]; then
    pass "the image has at most 60 MiB compressed: $((size / 1024 / 1024)) MiB"
else
    wrong "the image has at most 60 MiB compressed: $((size / 1024 / 1024)) MiB"
fi

run=(podman --runtime runc --cgroup-manager cgroupfs run --network none --ulimit nofile=1024:1024 --ulimit nproc=4096:4096)
if ! "${run[@]}" --rm --entrypoint /bin/true "$image" >"$work/log" 2>&1; then
    skipped=$((skipped + 1))
    printf 'NOT TESTED: no container can be run here: %s\n' "$(tail -n 1 "$work/log")"
    exit
fi
# The gateway runs beside a process that does nothing, as in a CI job.
if ! container=$("${run[@]}" --detach --entrypoint /bin/sleep "$image" 600 2>"$work/log"); then
    cat "$work/log"
    wrong "a container starts"
    exit
fi
containers=$container
pass "a container starts"

# Runs a command of the console in the container.
inside() { podman exec "$container" quorvel-wifi "$@"; }
# expect NAME PATTERN COMMAND...: the command succeeds and its output matches.
expect() {
    local name=$1 pattern=$2 text
    shift 2
    if text=$("$@" 2>&1) && grep -qE -- "$pattern" <<<"$text"; then
        pass "$name"
    else
        wrong "$name"
        printf '%s\n' "$text" | tail -n 10
    fi
}

expect "the user is nobody special" '^10001$' podman exec "$container" id -u
# The broker runs outside, in the container's network name space.
process=$(podman inspect --format '{{.State.Pid}}' "$container")
printf 'listener 1883 127.0.0.1\nallow_anonymous true\n' >"$work/mosquitto.conf"
PATH=$PATH:/usr/sbin nsenter --net --target "$process" mosquitto -c "$work/mosquitto.conf" >"$work/broker.log" 2>&1 &
broker=$!
expect "a board starts with its agent" 'is up' inside up --usp mqtt://127.0.0.1:1883
expect "a channel reads" '^Device.WiFi.Radio.1.Channel => 36$' inside get Device.WiFi.Radio.1.Channel
expect "a counter reads" '^Device.WiFi.SSID.1.Stats.BytesSent => [0-9]+$' inside get Device.WiFi.SSID.1.Stats.BytesSent
# Connecting takes a moment.
connected() {
    local tries
    for tries in $(seq 100); do
        inside usp status --plain | grep -E 'MQTT.*Up' && return
        [ "$tries" -eq 100 ] || sleep 0.2
    done
    return 1
}
expect "the agent is connected" 'Up' connected
expect "the image is healthy" '' podman healthcheck run "$container"
expect "the board stops" 'is down' inside down
expect "a scenario plays" 'expectations held' inside play guest-network --junit /tmp/report.xml
expect "its report says so" 'failures="0"' podman exec "$container" cat /tmp/report.xml
expect "a fleet comes up" '^2 of 2 gateways are up' inside fleet up 2 --usp mqtt://127.0.0.1:1883
expect "a fleet goes" '2 gateways ended' inside fleet down
# Counts processes of the gateway: running ones, and with Z those that nobody has taken in.
count_processes() {
    podman exec "$1" sh -c 'cat /proc/[0-9]*/stat 2>/dev/null' | awk -v zombies="${2:-}" '
        { at = match($0, /\) [A-Z] /); state = substr($0, at + 2, 1) }
        /\((quorvel|wlmngr|wl)/ && (state == "Z") == (zombies == "Z") { ++count } END { print count + 0 }'
}
expect "nothing is left" '^0$' count_processes "$container"

# A fleet as the container's only command takes in what its gateways leave behind when they reboot.
if stays=$("${run[@]}" --detach "$image" fleet up 2 --stay 2>"$work/log"); then
    containers+=" $stays"
    await_fleet() {
        local tries
        for tries in $(seq 150); do
            podman logs "$1" 2>&1 | grep 'gateways are up' && return
            [ "$tries" -eq 150 ] || sleep 0.2
        done
        return 1
    }
    expect "a fleet comes up as the container's command" '^2 of 2 gateways are up' await_fleet "$stays"
    expect "its gateways reboot" '4 gateways rebooted' podman exec "$stays" quorvel-wifi fleet churn --reboot 2 --for 2
    await_none_left() {
        local tries
        for tries in $(seq 25); do
            [ "$(count_processes "$stays" Z)" -ne 0 ] || break
            sleep 0.2
        done
        count_processes "$stays" Z
    }
    expect "nothing of their last lives is left" '^0$' await_none_left
    expect "it ends when it is stopped" '^0$' sh -c "podman stop --time 30 $stays >/dev/null && podman wait $stays"
else
    cat "$work/log"
    wrong "a fleet comes up as the container's command"
fi

# The pod template of the StatefulSet, as a pod.
if command -v kubectl >/dev/null && python3 -c 'import yaml' 2>/dev/null; then
    kubectl kustomize packaging/kubernetes/overlays/10 2>/dev/null | python3 tests/image/pod.py >"$work/pod.yaml"
    expect "the pod template runs as a pod, and is ready" "^connected.10$" tests/image/pod.sh "$work/pod.yaml" "$work"
else
    skipped=$((skipped + 1))
    echo "NOT TESTED: kubectl or python3-yaml is missing, so no pod is run"
fi
exit
