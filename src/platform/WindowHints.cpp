// SPDX-License-Identifier: MIT
// What the frame of a window offers.
#include "platform/WindowHints.h"

#include <QtGui/QWindow>
#include <QtWidgets/QWidget>

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

// The system takes the state for a part of what the flags replace, so it is set anew, in a window that is hidden.
void setCloseButton(QWidget& window, bool hasButton)
{
    const bool wasVisible = window.isVisible();
    const Qt::WindowStates state = window.windowState();
    const QRect place = window.geometry();
    window.setWindowFlags(hints(window, hasButton));
    if (state == Qt::WindowNoState)
        window.setGeometry(place);
    window.setWindowState(Qt::WindowNoState);
    window.setWindowState(state);
    window.setVisible(wasVisible);
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
