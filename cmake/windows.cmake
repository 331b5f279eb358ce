# SPDX-License-Identifier: MIT
# CMake toolchain: 64-bit Windows, with Debian's MinGW-w64 and the libraries that scripts/windows/toolchain builds.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

if(NOT "$ENV{XDG_CACHE_HOME}" STREQUAL "")
  set(vistrel_cache $ENV{XDG_CACHE_HOME})
else()
  set(vistrel_cache $ENV{HOME}/.cache)
endif()
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${vistrel_cache}/vistrel/windows/prefix)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Not the build machine's libraries.
set(ENV{PKG_CONFIG_LIBDIR} ${vistrel_cache}/vistrel/windows/prefix/lib/pkgconfig)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/windows/run)
