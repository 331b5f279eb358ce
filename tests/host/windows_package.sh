#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Packs the library for Windows, unpacks it elsewhere, runs the unpacked viewer and checks the screen, and builds hosts
# with the unpacked files: windows_package.sh <check_test_picture.exe>. The build's settings are in the environment.
set -euo pipefail
checker=$1
. "$SOURCE_DIR/scripts/common.sh"
. "$SOURCE_DIR/scripts/windows/common.sh"
export LC_ALL=C.UTF-8

echo "== Packing, twice the same"
"$SOURCE_DIR/scripts/windows/package"
zips=("$SOURCE_DIR"/build/Vistrel-*-windows-x86_64*.zip)
first=$(sha256sum "${zips[@]}")
sleep 2 # the resolution of file times in these archives
"$SOURCE_DIR/scripts/windows/package"
[ "$first" = "$(sha256sum "${zips[@]}")" ] || { echo "FAIL: the packages differ"; exit 1; }
x86_64-w64-mingw32-objdump -p "$BUILD_DIR/bin/Vistrel.dll" | grep 'Time/Date.* 1970'
rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR/für Kameras" # a name with a blank and an umlaut
unzip -q "$SOURCE_DIR"/build/Vistrel-*-windows-x86_64.zip -d "$WORK_DIR/für Kameras"
package=$(echo "$WORK_DIR/für Kameras"/*)

echo "== Looking for papers and sources"
for paper in qt boost highway gcc mingw-w64 LGPL-3 GPL-3 Apache-2.0; do
    test -s "$package/licences/$paper.txt"
done
if grep -rn /usr/share/common-licenses "$package/licences"; then
    echo "FAIL: a paper names a text that is not here"
    exit 1
fi
listing=$(unzip -l "$SOURCE_DIR"/build/Vistrel-*-windows-x86_64-sources.zip)
grep 'qt/qtbase.*\.orig\.tar' <<<"$listing"
grep 'qt/qtbase.*\.debian\.tar' <<<"$listing"

use_wine # without folders, so that only the package is found

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

echo "== Building a C host by a compiler of the other kind"
clang --target=x86_64-pc-windows-msvc -std=c99 -Wall -Wextra -Werror -ffreestanding -I"$package/include" \
    -c "$HOST_DIR/plain.c" -o "$WORK_DIR/plain.obj"
lld-link /nologo /subsystem:console /entry:start /nodefaultlib "/out:$package/bin/plain_other.exe" "$WORK_DIR/plain.obj" \
    "$package/lib/Vistrel.lib" /usr/x86_64-w64-mingw32/lib/libkernel32.a
wine "$package/bin/plain_other.exe"
echo "== All ran from the package"
