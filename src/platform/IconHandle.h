// SPDX-License-Identifier: MIT
// Pictures in the window system's own form.
#pragma once

#include <Vistrel/NativeTypes.h>

#if defined(_WIN32)

#include <QtGui/QPixmap>

namespace Vistrel {

/// A copy of the icon, which stays the caller's, with its transparency; a null pixmap for null or a handle that is no
/// icon. User-interface thread.
QPixmap pixmapFromIcon(HICON icon);

} // namespace Vistrel

#endif
