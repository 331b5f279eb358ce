// SPDX-License-Identifier: MIT
// Handles the pointer over a surface in its scroll area.
#pragma once

#include "widgets/PointerPosition.h"
#include "widgets/SurfaceGeometry.h"
#include "widgets/WheelSteps.h"

#include <QtCore/QObject>
#include <QtCore/QPointF>

#include <optional>

class QGestureEvent;
class QMouseEvent;
class QNativeGestureEvent;

namespace Vistrel {

class Navigator;
class Surface;
class SurfaceScrollArea;

constexpr int dragDistance = 3; // pixels, Manhattan; a shorter move counts as a click

/// Drags the image by the left button, zooms about the pointer by the wheel and about the fingers by a pinch, and makes
/// the pixel under the pointer the active one.
class ImageSurfaceEventFilter : public QObject
{
public:
    ImageSurfaceEventFilter(SurfaceScrollArea& area, Navigator& navigator, Surface& surface);
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void changeButtons(const QMouseEvent& event);
    bool doubleClick(QMouseEvent& event);
    bool move(QMouseEvent& event);
    bool release(QMouseEvent& event);
    void drag(const QPointF& position);
    void endDrag();
    bool turnWheel(QWheelEvent& event);
    bool pinch(QGestureEvent& event);
    bool pinch(const QNativeGestureEvent& event);
    QPointF positionOf(const QMouseEvent& event);
    QPointF lastPosition() const;
    void followPointer(const QPointF& position);

    SurfaceScrollArea& m_area;
    Navigator& m_navigator;
    Surface& m_surface;
    WheelSteps m_wheel;
    PointerPosition m_pointer;
    QPointF m_last; // of the pointer at its last event; on the screen
    bool m_isPinched = false;

    std::optional<QPointF> m_pressed; // in the surface; while the left button may drag
    bool m_isDragging = false;
    QPointF m_anchor;        // offset plus pointer; constant while nothing else moves the view
    SurfaceGeometry m_moved; // what the drag left; without an image when the drag must start anew
};

} // namespace Vistrel
