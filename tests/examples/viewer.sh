#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs the viewer as a user does: it shows its moving test picture and a folder's pictures, and ends.
# Usage: viewer.sh VIEWER CHECKER
set -euo pipefail
viewer=$1 checker=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

for frames in 2 30; do
    "$viewer" --size 320x240 --zoom 100 --frames $frames --screenshot $frames.png
done
"$checker" 320x240 2.png 30.png
"$viewer" --source files . --frames 3
