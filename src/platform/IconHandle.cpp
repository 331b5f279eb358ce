// SPDX-License-Identifier: MIT
// Converts native icons.
#include "platform/IconHandle.h"

#if defined(_WIN32)

#include <windows.h>

#if defined(VISTREL_HAS_WINDOWS_EXTRAS)
#include <QtWinExtras/QtWin>
#else
// The function that QtWinExtras calls; Qt's Gui library exports it, but no header declares it.
Q_GUI_EXPORT QPixmap qt_pixmapFromWinHICON(HICON icon);
#endif

namespace Vistrel {

QPixmap pixmapFromIcon(HICON icon)
{
    // The conversion would print a warning for a handle that is no icon.
    ICONINFO information = {};
    if (!icon || !GetIconInfo(icon, &information))
        return {};
    DeleteObject(information.hbmMask);
    if (information.hbmColor)
        DeleteObject(information.hbmColor);
#if defined(VISTREL_HAS_WINDOWS_EXTRAS)
    return QtWin::fromHICON(icon);
#else
    return qt_pixmapFromWinHICON(icon);
#endif
}

} // namespace Vistrel

#endif
