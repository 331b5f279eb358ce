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
    const bool isKept = parent && addTransientChild(parent, child); // which ends an earlier one of the child's
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

// Qt takes the parent from a native window that it makes anew, which is there after the event, and from one that it
// shows on X11. ShowToParent comes right after that, so a host that raises the parent next finds the window registered.
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
