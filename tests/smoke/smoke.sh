#!/usr/bin/env bash
# Usage: smoke.sh PROGRAM EMULATOR...: sets and saves a channel, and looks for it after a power cycle.
set -euo pipefail
program=$1
shift
# An emulated process cannot create the user namespace that an ordinary user needs.
[ "$(id -u)" -eq 0 ] || set -- unshare --user --map-root-user "$@"
state=$(mktemp -d)
trap 'rm -rf "$state"' EXIT

# Says what a command printed when it is not what was expected.
expect() {
    local expected=$1
    shift
    local seen
    seen=$("$@" 2>&1) || true
    [ "$seen" = "$expected" ] && return
    printf 'expected: %s\nseen:     %s\n' "$expected" "$seen" >&2
    exit 1
}

channel=Device.WiFi.Radio.2.Channel
expect "$channel => 149" "$@" "$program" --state "$state/board" get $channel
expect "$channel => 44" "$@" "$program" --state "$state/board" set $channel=44
expect "$channel => 149" "$@" "$program" --state "$state/board" get $channel
expect "$channel => 44" "$@" "$program" --state "$state/board" set $channel=44 --save
expect "$channel => 44" "$@" "$program" --state "$state/board" get $channel
expect "Device.WiFi.AccessPoint.1.AssociatedDeviceNumberOfEntries => 2" \
    "$@" "$program" --state "$state/board" get Device.WiFi.AccessPoint.1.AssociatedDeviceNumberOfEntries
