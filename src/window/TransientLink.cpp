// SPDX-License-Identifier: MIT
// Keeps a display window above a top-level window of the host.
#include "window/TransientLink.h"

#include "platform/TransientParents.h"

#include <QtCore/QEvent>
#include <QtWidgets/QWidget>

namespace Vistrel {

TransientLink::TransientLink(QWidget* window) : m_window(window)
{
    window->installEventFilter(this);
}

TransientLink::~TransientLink()
{
    forget();
}

void TransientLink::setParent(HWND parent)
{
    const auto child = reinterpret_cast<HWND>(m_window->winId());
    const bool isKept = parent && addTransientChild(parent, child); // replaces an earlier registration
    if (parent && !isKept && parent != m_parent)
        return;
    if (!isKept || m_child != child)
        forget();
    if (!isKept)
        return;
    m_child = child;
    m_parent = parent;
}

HWND TransientLink::parentHandle() const
{
    return isTransientChild(m_child) ? m_parent : nullptr;
}

void TransientLink::forget()
{
    if (m_child)
        removeTransientChild(m_child);
    m_child = nullptr;
    m_parent = nullptr;
}

// Qt clears the parent of a native window that it makes anew, and on X11 of one that it shows. A new window is ready
// only after its event. ShowToParent follows the showing at once, so the window is registered before the host raises
// the parent.
bool TransientLink::eventFilter(QObject*, QEvent* event)
{
    if (m_parent && event->type() == QEvent::WinIdChange)
        QMetaObject::invokeMethod(this, "renew", Qt::QueuedConnection);
    else if (m_parent && event->type() == QEvent::ShowToParent)
        renew();
    return false;
}

void TransientLink::renew()
{
    setParent(parentHandle());
}

} // namespace Vistrel
