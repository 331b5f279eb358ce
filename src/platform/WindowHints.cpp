// SPDX-License-Identifier: MIT
// What the frame of a window offers.
#include "platform/WindowHints.h"

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

// The toolkit's ways make the native window's style anew, without its state, or hide the window. The button follows the
// entry of the system's menu, as it does where the toolkit makes a native window of these flags.
void setCloseButton(QWidget& window, bool hasButton)
{
    window.overrideWindowFlags(hints(window, hasButton));
    const auto handle = reinterpret_cast<HWND>(window.effectiveWinId()); // null before there is one
    EnableMenuItem(GetSystemMenu(handle, FALSE), SC_CLOSE, MF_BYCOMMAND | (hasButton ? MF_ENABLED : MF_GRAYED));
    DrawMenuBar(handle); // the frame, too
}

#else

// The toolkit's own way hides the window for a moment. The window manager withdraws it then, which loses its state.
void setCloseButton(QWidget& window, bool hasButton)
{
    window.overrideWindowFlags(hints(window, hasButton));
    if (QWindow* const native = window.windowHandle())
        native->setFlags(window.windowFlags());
}

#endif

} // namespace Vistrel
