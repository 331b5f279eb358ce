// SPDX-License-Identifier: MIT
// Marks what the library exports, and what it keeps local.
#pragma once

#if defined(__MINGW32__) && defined(__cplusplus)
// When GCC meets an exported class before this header, it also exports the type information of all other classes.
#include <typeinfo>
#endif

#if defined(_WIN32)
#if defined(VISTREL_BUILDING)
#define VISTREL_EXPORT __declspec(dllexport)
#else
#define VISTREL_EXPORT __declspec(dllimport)
#endif
#define VISTREL_LOCAL
#else
#define VISTREL_EXPORT __attribute__((visibility("default")))
#define VISTREL_LOCAL __attribute__((visibility("hidden")))
#endif
