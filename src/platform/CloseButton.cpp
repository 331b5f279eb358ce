// SPDX-License-Identifier: MIT
// The close button of a window's frame.
#include "platform/CloseButton.h"

#include <QtGui/QWindow>
#include <QtWidgets/QWidget>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace Vistrel {

namespace {

Qt::WindowFlags hints(const QWidget& window, bool hasButton)
{
    const Qt::WindowFlags type = window.windowFlags() & Qt::WindowType_Mask;
    const Qt::WindowFlags common =
        Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint | Qt::WindowMaximizeButtonHint;
    return type | common |
           (hasButton ? Qt::WindowCloseButtonHint | Qt::WindowFullscreenButtonHint : Qt::CustomizeWindowHint);
}

} // namespace

#if defined(_WIN32)

// Qt's functions reset the native window's style without its state, or hide the window. The button follows the entry of
// the system menu, as in a native window that Qt creates with these flags.
void setCloseButton(QWidget& window, bool hasButton)
{
    window.overrideWindowFlags(hints(window, hasButton));
    const auto handle = reinterpret_cast<HWND>(window.effectiveWinId()); // null before it is created
    EnableMenuItem(GetSystemMenu(handle, FALSE), SC_CLOSE, MF_BYCOMMAND | (hasButton ? MF_ENABLED : MF_GRAYED));
    DrawMenuBar(handle); // also draws the frame
}

#else

// Qt's function hides the window for a moment. The window manager then withdraws it, and its state is lost.
void setCloseButton(QWidget& window, bool hasButton)
{
    window.overrideWindowFlags(hints(window, hasButton));
    if (QWindow* const native = window.windowHandle())
        native->setFlags(window.windowFlags());
}

#endif

} // namespace Vistrel
