// SPDX-License-Identifier: MIT
// Handles the pointer over a surface in its scroll area.
#include "widgets/SurfaceInput.h"

#include "widgets/Navigator.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include <QtCore/QPointer>
#include <QtGui/QCursor>
#include <QtGui/QMouseEvent>
#include <QtGui/QWheelEvent>
#include <QtWidgets/QGesture>

namespace Vistrel {

namespace {

bool hasMoved(const SurfaceGeometry& before, const SurfaceGeometry& now)
{
    return before.imageSize() != now.imageSize() || before.viewSize() != now.viewSize() ||
           before.scaling() != now.scaling() || before.scaledOffset() != now.scaledOffset();
}

} // namespace

ImageSurfaceEventFilter::ImageSurfaceEventFilter(SurfaceScrollArea& area, Navigator& navigator, Surface& surface)
    : m_area(area), m_navigator(navigator), m_surface(surface), m_pointer(surface)
{
    surface.setMouseTracking(true);
    surface.setCursor(Qt::OpenHandCursor);
    surface.grabGesture(Qt::PinchGesture);
    surface.installEventFilter(this);
    // The image may move under a pointer that does not.
    const auto follow = [this] {
        if (m_surface.underMouse() && !m_isDragging)
            followPointer(m_pointer.ofGlobal(QCursor::pos()));
    };
    connect(&surface, &Surface::pixelRangeChanged, this, follow);
    connect(&surface, &Surface::pixelOffsetChanged, this, follow);
}

bool ImageSurfaceEventFilter::eventFilter(QObject*, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        changeButtons(*static_cast<QMouseEvent*>(event));
        return false;
    case QEvent::MouseButtonDblClick:
        return doubleClick(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
        return move(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonRelease:
        return release(*static_cast<QMouseEvent*>(event));
    case QEvent::Enter:
        followPointer(m_pointer.ofGlobal(QCursor::pos()));
        return false;
    case QEvent::Leave:
        m_surface.setActivePixel(-1, -1);
        endDrag();
        return false;
    case QEvent::Wheel:
        return turnWheel(*static_cast<QWheelEvent*>(event));
    case QEvent::Gesture:
        return pinch(*static_cast<QGestureEvent*>(event));
    case QEvent::NativeGesture:
        return pinch(*static_cast<QNativeGestureEvent*>(event));
    default:
        return false;
    }
}

QPointF ImageSurfaceEventFilter::positionOf(const QMouseEvent& event)
{
    const QPointF position = m_pointer.of(event);
    m_last = position + m_surface.mapToGlobal(QPoint(0, 0));
    return position;
}

// Also when the surface was moved meanwhile.
QPointF ImageSurfaceEventFilter::lastPosition() const
{
    return m_last - m_surface.mapToGlobal(QPoint(0, 0));
}

void ImageSurfaceEventFilter::followPointer(const QPointF& position)
{
    m_surface.setActivePixel(m_surface.viewGeometry().pixelAt(position));
}

// Dragging ------------------------------------------------------------------------------------------------------------

// Only the left button alone drags. While another one is down, too, the drag rests.
void ImageSurfaceEventFilter::changeButtons(const QMouseEvent& event)
{
    const QPointF position = positionOf(event);
    m_moved = SurfaceGeometry();
    if (event.type() != QEvent::MouseButtonRelease && event.button() == Qt::LeftButton)
        endDrag(); // another widget may have got the last release
    if (event.buttons() != Qt::LeftButton || m_pressed)
        return;
    m_surface.setCursor(Qt::ClosedHandCursor);
    m_pressed = position;
}

bool ImageSurfaceEventFilter::release(QMouseEvent& event)
{
    changeButtons(event);
    if (event.buttons() & Qt::LeftButton)
        return false;
    const bool wasDragging = m_isDragging;
    endDrag();
    if (wasDragging)
        event.accept();
    return wasDragging;
}

void ImageSurfaceEventFilter::endDrag()
{
    m_surface.setCursor(Qt::OpenHandCursor);
    m_pressed.reset();
    m_isDragging = false;
}

bool ImageSurfaceEventFilter::move(QMouseEvent& event)
{
    const QPointF before = lastPosition();
    const QPointF position = positionOf(event);
    const bool isFinger = m_isPinched && event.source() != Qt::MouseEventNotSynthesized;
    if (event.buttons() != Qt::LeftButton || !m_pressed || isFinger) {
        followPointer(position);
        return false;
    }
    const SurfaceGeometry now = m_surface.viewGeometry();
    if (!m_isDragging) {
        m_isDragging = !now.imageSize().isEmpty() && (*m_pressed - position).manhattanLength() >= dragDistance;
        m_anchor = now.scaledOffset() + *m_pressed;
    } else if (hasMoved(m_moved, now)) {
        m_anchor = now.scaledOffset() + before;
    }
    const QPointer<QObject> alive(this);
    if (m_isDragging) {
        m_area.setImageOffset(m_anchor - position);
        event.accept();
        if (!alive)
            return true;
        m_moved = m_surface.viewGeometry();
    }
    followPointer(position);
    return m_isDragging;
}

// Zooming -------------------------------------------------------------------------------------------------------------

// Switches between the whole image and 100 % at the pointer.
bool ImageSurfaceEventFilter::doubleClick(QMouseEvent& event)
{
    changeButtons(event);
    if (event.button() != Qt::LeftButton)
        return false;
    const QPointF position = positionOf(event);
    const QPointer<QObject> alive(this);
    if (m_area.zoomToFit())
        m_navigator.zoomTo(1.0, position);
    else
        m_navigator.setFit(true);
    if (alive)
        followPointer(position);
    event.accept();
    return true;
}

bool ImageSurfaceEventFilter::turnWheel(QWheelEvent& event)
{
    if (event.angleDelta().y() == 0)
        return false;
    const QPointF position = m_pointer.ofGlobal(event.globalPosition());
    const int step = m_wheel.take(event);
    event.accept();
    if (step > 0)
        m_navigator.zoomIn(position);
    else if (step < 0)
        m_navigator.zoomOut(position);
    return true;
}

// The mouse that the toolkit makes of the first finger rests meanwhile.
bool ImageSurfaceEventFilter::pinch(QGestureEvent& event)
{
    const auto* const gesture = static_cast<QPinchGesture*>(event.gesture(Qt::PinchGesture));
    if (!gesture)
        return false;
    event.accept(Qt::PinchGesture);
    m_isPinched = gesture->state() != Qt::GestureFinished && gesture->state() != Qt::GestureCanceled;
    m_moved = SurfaceGeometry();
    if (!m_isPinched) // the last factor, again
        return true;
    const QPointF centre = m_pointer.ofGlobal(gesture->centerPoint());
    const bool isShifted = gesture->changeFlags() & QPinchGesture::CenterPointChanged;
    m_navigator.pinch(gesture->scaleFactor(), isShifted ? m_pointer.ofGlobal(gesture->lastCenterPoint()) : centre,
                      centre);
    return true;
}

bool ImageSurfaceEventFilter::pinch(const QNativeGestureEvent& event)
{
    if (event.gestureType() != Qt::ZoomNativeGesture)
        return false;
    const QPointF centre = m_pointer.ofGlobal(event.screenPos());
    m_navigator.pinch(1 + event.value(), centre, centre);
    return true;
}

} // namespace Vistrel
