// SPDX-License-Identifier: MIT
// Marks what leaves the library.
#pragma once

#if defined(_WIN32)
#if defined(VISTREL_BUILDING)
#define VISTREL_EXPORT __declspec(dllexport)
#else
#define VISTREL_EXPORT __declspec(dllimport)
#endif
#else
#define VISTREL_EXPORT __attribute__((visibility("default")))
#endif
