# SPDX-License-Identifier: MIT
# Shared by the scripts for Windows. Sourced by bash after ../common.sh, not run.

# The output folder of scripts/windows/toolchain; cmake/windows.cmake also uses it.
windows_cache=${XDG_CACHE_HOME:-${HOME:?names no folder to build in}/.cache}/vistrel/windows
windows_prefix=$windows_cache/prefix

# The folders of the installed compiler's run-time libraries.
compiler_folders() {
    printf '%s\n' /usr/lib/gcc/x86_64-w64-mingw32/*-posix /usr/x86_64-w64-mingw32/lib
}

windows_packages=(cmake ninja-build make pkg-config python3 dpkg-dev g++ g++-mingw-w64-x86-64-posix
    libboost1.74-tools-dev librsvg2-bin fonts-liberation llvm)
wine_packages=(wine64 wine fonts-wine imagemagick zip unzip clang lld)

# use_wine [FOLDER]...: sets up this shell so that `wine` finds libraries in these folders. Its state is in this tree.
use_wine() {
    local folders=
    [ $# -eq 0 ] || folders=$(printf 'Z:%s;' "$@")
    export WINEPATH=${folders//\//\\} WINEPREFIX=$root/build/windows/wine WINEDEBUG=${WINEDEBUG:--all}
    # Suppresses Wine's offers to download more, its entries in the desktop's menus, and its debugger, in which a program
    # that has crashed, even one of Wine's own, would wait for ever.
    export WINEDLLOVERRIDES='mscoree,mshtml=;winemenubuilder.exe,winedbg.exe=d'
    mkdir -p "$root/build/windows"
}
