// SPDX-License-Identifier: MIT
// The exact position of the pointer in a widget.
#pragma once

#include <QtCore/QPointF>

class QMouseEvent;
class QWidget;

namespace Vistrel {

/// Qt rounds a pointer's position in a child widget, and that of a window on the screen, to whole logical pixels. With
/// fractional or large device pixel ratios that is another device pixel.
class PointerPosition
{
public:
    explicit PointerPosition(const QWidget& widget) : m_widget(widget) {}

    QPointF of(const QMouseEvent& event);
    /// Of a position on the screen. After a mouse event it is exact, also for the rounded position of a pointer that
    /// rests there, until the widget moves.
    QPointF ofGlobal(const QPointF& global) const;

private:
    const QWidget& m_widget;
    QPointF m_last;       // in the widget, at the last event
    QPointF m_lastGlobal; // the same on the screen
};

} // namespace Vistrel
