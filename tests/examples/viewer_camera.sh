#!/bin/bash
# SPDX-License-Identifier: MIT
# Shows a camera on the network in the viewer. The camera is Aravis' fake one, alone with the viewer in a network
# namespace, so that the discovery finds it and nothing else.
# Usage: viewer_camera.sh VIEWER CHECKER
set -u
viewer=$1
checker=$2

if [ -z "${IN_NAMESPACE:-}" ]; then
    for tool in unshare ip ss arv-fake-gv-camera-0.8; do
        command -v "$tool" >/dev/null || { echo "$tool is missing"; exit 1; }
    done
    IN_NAMESPACE=1 exec unshare --map-root-user --net bash "$0" "$@"
fi

ip link set lo up || exit 1
folder=$(mktemp -d)
arv-fake-gv-camera-0.8 -i lo &
camera=$!
trap 'kill -KILL $camera 2>/dev/null; rm -rf "$folder"' EXIT

fail() {
    echo "FAILED: $1"
    exit 1
}

# Asks for at most 20 seconds.
wait_until() {
    for _ in $(seq 200); do
        "$@" && return 0
        sleep 0.1
    done
    fail "waited in vain: $*"
}

camera_listens() { ss --no-header --listening --udp --numeric 'sport = :3956' | grep -q .; }
received_bytes() { awk '$1 == "lo:" { print $2 }' /proc/net/dev; }
show() { timeout 60 "$viewer" --source camera --zoom 100 "$@"; }

wait_until camera_listens
show --format Mono8 --frames 40 --screenshot "$folder/8.png" || fail "the viewer ended with $?"
"$checker" "$folder/8.png" || fail "not the camera's picture"
show --format Mono12 --frames 1 2>"$folder/refusal" && fail "a format that the camera does not have"
grep PixelFormat "$folder/refusal" || fail "$(cat "$folder/refusal")"

# The camera dies while its frames are coming in. It comes back with other settings, and sends some packets never.
show --format Mono16 --frames 100 --screenshot "$folder/16.png" >"$folder/counts" 2>"$folder/loss" &
running=$!
before=$(received_bytes)
frames_come() { [ "$(received_bytes)" -gt $((before + 40 * 2 * 512 * 512)) ]; }
wait_until frames_come
kill -KILL $camera; wait $camera 2>/dev/null # beside one that still lives, the next one hears nothing
arv-fake-gv-camera-0.8 -i lo -r 2 &
camera=$!
wait $running || fail "the viewer ended with $?"
"$checker" "$folder/16.png" || fail "not the camera's picture after its return"
cat "$folder/loss" "$folder/counts"
grep -q "the camera was lost" "$folder/loss" && grep -q "the camera is back" "$folder/loss" || fail "loss of the camera"
grep -qE "Received: [0-9]{3} .*Lost: [1-9].*No buffer: 0 .*Skipped: " "$folder/counts" || fail "counts of frames"
