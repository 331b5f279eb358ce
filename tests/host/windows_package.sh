#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Packs the library for Windows, unpacks it elsewhere, runs its viewer from there and looks at the screen, and makes hosts
# from what was unpacked: windows_package.sh <check_test_picture.exe>; the build's settings come in the environment.
set -euo pipefail
checker=$1
. "$SOURCE_DIR/scripts/common.sh"
. "$SOURCE_DIR/scripts/windows/common.sh"
export LC_ALL=C.UTF-8

echo "== Packing"
"$SOURCE_DIR/scripts/windows/package"
rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR/für Kameras" # a name as users have it
unzip -q "$SOURCE_DIR"/build/Vistrel-*-windows-x86_64.zip -d "$WORK_DIR/für Kameras"
package=$(echo "$WORK_DIR/für Kameras"/*)
use_wine # nothing but the package can be found

echo "== Running the viewer from $package"
wine "$package/bin/viewer.exe" --help | grep -- --format
wine "$package/bin/viewer.exe" --size 640x480 --fps 30 &
viewer=$!
trap 'kill $viewer 2>/dev/null || true' EXIT
seen=false
for _ in $(seq 60); do
    sleep 0.5
    kill -0 $viewer || { echo "FAIL: the viewer ended"; exit 1; }
    import -window root "$WORK_DIR/first.png"
    import -window root "$WORK_DIR/second.png"
    "$SOURCE_DIR/scripts/windows/run" "$checker" 640x480 "$WORK_DIR/first.png" "$WORK_DIR/second.png" -platform offscreen &&
        seen=true && break
done
$seen || { echo "FAIL: the viewer's moving picture is not on the screen"; exit 1; }
kill $viewer
wait $viewer || true
wine "$package/bin/viewer.exe" --frames 30

for toolkit in ON OFF; do
    echo "== Building hosts; without the toolkit's headers: $toolkit"
    "$CMAKE" -S "$HOST_DIR" -B "$WORK_DIR/build" -G "$GENERATOR" -DCMAKE_BUILD_TYPE=Release \
        -DVistrel_DIR="$package/lib/cmake/Vistrel" --toolchain "$SOURCE_DIR/cmake/windows.cmake" \
        -DCMAKE_DISABLE_FIND_PACKAGE_Qt5=$toolkit --fresh
    "$CMAKE" --build "$WORK_DIR/build"
    cp "$WORK_DIR"/build/*.exe "$package/bin"
    wine "$package/bin/plain.exe"
    wine "$package/bin/plain_c.exe"
done
wine "$package/bin/host.exe"
echo "== All ran from the package"
