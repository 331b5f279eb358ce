// SPDX-License-Identifier: MIT
// Handles the mouse over a surface in its scroll area.
#pragma once

#include <QtCore/QObject>
#include <QtCore/QPoint>

class QMouseEvent;

namespace Vistrel {

class Surface;
class SurfaceScrollArea;

/// Zooms about the pointer by the wheel, one step an event.
class ViewportEventFilter : public QObject
{
public:
    ViewportEventFilter(SurfaceScrollArea& area, Surface& surface);
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    SurfaceScrollArea& m_area;
    Surface& m_surface;
};

/// Drags the image by the left button, and makes the pixel under the pointer the active one.
class ImageSurfaceEventFilter : public QObject
{
public:
    ImageSurfaceEventFilter(SurfaceScrollArea& area, Surface& surface);
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void press(const QMouseEvent& event);
    bool doubleClick(QMouseEvent& event);
    bool move(QMouseEvent& event);
    void followPointer(const QPoint& globalPosition);

    SurfaceScrollArea& m_area;
    Surface& m_surface;
    bool m_isDragging = false;
    QPoint m_pressed; // global
    QPoint m_anchor;  // image offset plus global position; constant during a drag
};

} // namespace Vistrel
