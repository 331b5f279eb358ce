#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs the library into the work folder and builds hosts with the installed files, by CMake's package and by
# pkg-config. The build's settings are in the environment.
set -euo pipefail
prefix=$WORK_DIR/prefix
rm -rf "$WORK_DIR"
mkdir -p "$WORK_DIR/runtime"
chmod 700 "$WORK_DIR/runtime"
export XDG_RUNTIME_DIR=$WORK_DIR/runtime

echo "== Installing"
"$CMAKE" --install "$BUILD_DIR" --config "$BUILD_TYPE" --prefix "$prefix" >"$WORK_DIR/install.log"

echo "== Building by the CMake package"
"$CMAKE" -S "$HOST_DIR" -B "$WORK_DIR/build" -G "$GENERATOR" -DCMAKE_BUILD_TYPE="$BUILD_TYPE" -DCMAKE_CXX_COMPILER="$CXX" \
    -DCMAKE_C_FLAGS="$FLAGS" -DCMAKE_CXX_FLAGS="$FLAGS" -DCMAKE_PREFIX_PATH="$prefix"
"$CMAKE" --build "$WORK_DIR/build"
cached=$(sed -n 's/^Vistrel_DIR:[A-Z]*=//p' "$WORK_DIR/build/CMakeCache.txt")
[ "$cached" = "$prefix/$LIBDIR/cmake/Vistrel" ] || { echo "FAIL: found another package: $cached"; exit 1; }
"$WORK_DIR/build/plain"
"$WORK_DIR/build/plain_c"
"$WORK_DIR/build/host"

echo "== Building by pkg-config"
export PKG_CONFIG_PATH=$prefix/$LIBDIR/pkgconfig
export LD_LIBRARY_PATH=$prefix/$LIBDIR
# shellcheck disable=SC2046,SC2086
"$CXX" -std=c++17 $FLAGS "$HOST_DIR/main.cpp" $(pkg-config --cflags --libs VistrelQt) -o "$WORK_DIR/host-pkg-config"
"$WORK_DIR/host-pkg-config"
# As on a machine without Qt's development files.
# shellcheck disable=SC2046,SC2086
"$CC" -std=c99 $FLAGS "$HOST_DIR/plain.c" $(PKG_CONFIG_LIBDIR=/nowhere pkg-config --cflags --libs Vistrel) -o "$WORK_DIR/c-pkg-config"
"$WORK_DIR/c-pkg-config"

if grep -rnF -e "$BUILD_DIR" -e "$SOURCE_DIR" "$prefix/include" "$prefix/$LIBDIR/cmake" "$prefix/$LIBDIR/pkgconfig"; then
    echo "FAIL: what is installed names the trees that it came from"
    exit 1
fi
echo "== All hosts ran"
