// SPDX-License-Identifier: MIT
// The window system's own handles, without its headers.
#pragma once

// The same types as in the Windows headers, which may be included before or after this one, or not at all.
#if defined(_WIN32) && defined(NO_STRICT) && !defined(STRICT)
typedef void* HWND;
typedef void* HICON;
#else
/// A native top-level window: a window handle on Windows; on X11 the window's number, as a pointer. The system's own
/// functions take and return device pixels; this library's take and return logical pixels, as Qt's do. A logical pixel
/// has as many device pixels in a row as the scale of its screen says: 1.5 at 150 %.
typedef struct HWND__* HWND; // NOLINT(bugprone-reserved-identifier): the system's own
#if defined(_WIN32)
typedef struct HICON__* HICON;
#endif
#endif
