// SPDX-License-Identifier: MIT
// Handles the mouse over a surface in its scroll area.
#include "widgets/SurfaceInput.h"

#include "widgets/SurfaceGeometry.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include <QtGui/QCursor>
#include <QtGui/QMouseEvent>
#include <QtGui/QWheelEvent>

namespace Vistrel {

namespace {

constexpr int dragDistance = 3; // pixels, Manhattan; a shorter move counts as a click

} // namespace

ViewportEventFilter::ViewportEventFilter(SurfaceScrollArea& area, Surface& surface) : m_area(area), m_surface(surface)
{
    surface.installEventFilter(this);
}

bool ViewportEventFilter::eventFilter(QObject*, QEvent* event)
{
    if (event->type() != QEvent::Wheel)
        return false;
    auto* const wheel = static_cast<QWheelEvent*>(event);
    const int turn = wheel->angleDelta().y();
    if (turn == 0)
        return false;
    const QPoint position = m_surface.mapFromGlobal(wheel->globalPosition().toPoint());
    if (turn > 0)
        m_area.doZoomIn(position);
    else
        m_area.doZoomOut(position);
    wheel->accept();
    return true;
}

ImageSurfaceEventFilter::ImageSurfaceEventFilter(SurfaceScrollArea& area, Surface& surface)
    : m_area(area), m_surface(surface)
{
    surface.setMouseTracking(true);
    surface.setCursor(Qt::OpenHandCursor);
    surface.installEventFilter(this);
    // The image may move under a pointer that does not.
    const auto follow = [this] {
        if (m_surface.underMouse() && !m_isDragging)
            followPointer(QCursor::pos());
    };
    connect(&surface, &Surface::pixelRangeChanged, this, follow);
    connect(&surface, &Surface::pixelOffsetChanged, this, follow);
}

bool ImageSurfaceEventFilter::eventFilter(QObject*, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        press(*static_cast<QMouseEvent*>(event));
        return false;
    case QEvent::MouseButtonDblClick:
        return doubleClick(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
        return move(*static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonRelease:
        m_surface.setCursor(Qt::OpenHandCursor);
        if (!m_isDragging)
            return false;
        m_isDragging = false;
        event->accept();
        return true;
    case QEvent::Enter:
        followPointer(QCursor::pos());
        return false;
    case QEvent::Leave:
        m_surface.setActivePixel(-1, -1);
        m_surface.setCursor(Qt::OpenHandCursor);
        m_isDragging = false;
        return false;
    default:
        return false;
    }
}

void ImageSurfaceEventFilter::press(const QMouseEvent& event)
{
    if (event.buttons() != Qt::LeftButton)
        return;
    m_surface.setCursor(Qt::ClosedHandCursor);
    m_isDragging = false; // another widget may have got the last release
    m_pressed = event.globalPos();
}

// Switches between the whole image and 100 % at the pointer.
bool ImageSurfaceEventFilter::doubleClick(QMouseEvent& event)
{
    if (event.button() != Qt::LeftButton)
        return false;
    if (m_area.zoomToFit())
        m_area.setZoomTo(1.0, event.pos());
    else
        m_area.setZoomToFit(true);
    followPointer(event.globalPos());
    event.accept();
    return true;
}

bool ImageSurfaceEventFilter::move(QMouseEvent& event)
{
    if (event.buttons() == Qt::LeftButton && !m_isDragging && !m_surface.pixmap().isNull() &&
        (m_pressed - event.globalPos()).manhattanLength() >= dragDistance) {
        m_isDragging = true;
        m_anchor = m_area.imageOffset() + m_pressed;
    }
    if (event.buttons() == Qt::LeftButton && m_isDragging) {
        m_area.setImageOffset(m_anchor - event.globalPos());
        event.accept();
        return true;
    }
    followPointer(event.globalPos());
    return false;
}

void ImageSurfaceEventFilter::followPointer(const QPoint& globalPosition)
{
    m_surface.setActivePixel(m_surface.viewGeometry().pixelAt(m_surface.mapFromGlobal(globalPosition)));
}

} // namespace Vistrel
