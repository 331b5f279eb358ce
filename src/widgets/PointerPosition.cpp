// SPDX-License-Identifier: MIT
// The exact position of the pointer in a widget.
#include "widgets/PointerPosition.h"

#include <QtGui/QMouseEvent>
#include <QtWidgets/QWidget>

#include <algorithm>
#include <cmath>

namespace Vistrel {

namespace {

// Whether two positions may differ by Qt's rounding alone.
bool isSame(const QPointF& a, const QPointF& b)
{
    return std::max(std::abs(a.x() - b.x()), std::abs(a.y() - b.y())) < 1;
}

} // namespace

QPointF PointerPosition::of(const QMouseEvent& event)
{
    const QWidget* const native = m_widget.windowHandle() ? &m_widget : m_widget.nativeParentWidget();
    const QPointF exact = native ? event.windowPos() - m_widget.mapTo(native, QPoint(0, 0)) : event.localPos();
    // An event that was made by hand may not tell the position in the window.
    m_last = isSame(exact, event.localPos()) ? exact : event.localPos();
    m_lastGlobal = event.screenPos();
    return m_last;
}

QPointF PointerPosition::ofGlobal(const QPointF& global) const
{
    const QPointF origin = m_widget.mapToGlobal(QPoint(0, 0));
    const QPointF exactOrigin = m_lastGlobal - m_last;
    if (!isSame(origin, exactOrigin))
        return global - origin;
    return isSame(global, m_lastGlobal) ? m_last : global - exactOrigin;
}

} // namespace Vistrel
