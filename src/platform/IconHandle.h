// SPDX-License-Identifier: MIT
// Converts native icons.
#pragma once

#include <Vistrel/NativeTypes.h>

#if defined(_WIN32)

#include <QtGui/QPixmap>

namespace Vistrel {

/// Returns a copy of the icon with its transparency; a null pixmap for null or a handle that is no icon. The caller
/// keeps the icon. User-interface thread.
QPixmap pixmapFromIcon(HICON icon);

} // namespace Vistrel

#endif
