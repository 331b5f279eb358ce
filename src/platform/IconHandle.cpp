// SPDX-License-Identifier: MIT
// Pictures in the window system's own form.
#include "platform/IconHandle.h"

#if defined(_WIN32)

#include <windows.h>

#if defined(VISTREL_HAS_WINDOWS_EXTRAS)
#include <QtWinExtras/QtWin>
#else
// What the extras call; the Gui library exports it, and no header of its declares it.
Q_GUI_EXPORT QPixmap qt_pixmapFromWinHICON(HICON icon);
#endif

namespace Vistrel {

QPixmap pixmapFromIcon(HICON icon)
{
    // The conversion warns of a handle that is no icon; here that is an answer.
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
