#!/bin/bash
# SPDX-License-Identifier: MIT
# Shows a camera on the network in the viewer. The camera is Aravis' fake one, alone with the viewer in a network
# namespace, so that the discovery finds it and nothing else.
# Usage: viewer_camera.sh VIEWER
set -eu
viewer=$1

if [ -z "${IN_NAMESPACE:-}" ]; then
    for tool in unshare ip ss arv-fake-gv-camera-0.8; do
        command -v "$tool" >/dev/null || { echo "$tool is missing"; exit 1; }
    done
    IN_NAMESPACE=1 exec unshare --map-root-user --net bash "$0" "$@"
fi

ip link set lo up
arv-fake-gv-camera-0.8 -i lo &
camera=$!
trap 'kill -KILL $camera 2>/dev/null' EXIT

for _ in $(seq 200); do
    ss --no-header --listening --udp --numeric 'sport = :3956' | grep -q . && break
    sleep 0.1
done
for format in Mono8 Mono16; do
    timeout 60 "$viewer" --source camera --format $format --frames 40
done
