/* SPDX-License-Identifier: MIT */
/* The version of the library that these headers belong to, for C and C++.
 *
 * While the major number is 0, a new minor number breaks the binary interface; later a new major number does. The build
 * reads its version here. */
#ifndef VISTREL_VERSION_H
#define VISTREL_VERSION_H

#define VT_VERSION_MAJOR 0
#define VT_VERSION_MINOR 1
#define VT_VERSION_PATCH 0

#endif
