// SPDX-License-Identifier: MIT
// Marks what leaves the library, and what of it stays inside.
#pragma once

#if defined(__MINGW32__) && defined(__cplusplus)
// Behind an exported class that it meets before this header, GCC exports the types of all other classes too.
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
