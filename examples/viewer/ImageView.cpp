// SPDX-License-Identifier: MIT
// A surface that is moved with the mouse.
#include "ImageView.h"

#include <QtGui/QMouseEvent>
#include <QtGui/QWheelEvent>

#include <cmath>

ImageView::ImageView(QWidget* parent) : Surface(parent)
{
    setMouseTracking(true);
    QPalette dark = palette();
    dark.setColor(QPalette::Window, QColor(48, 48, 48));
    setPalette(dark);
    setAutoFillBackground(true);
}

QPointF ImageView::imagePoint(const QPointF& position) const
{
    return (position - scaledRect().topLeft()) / scaling();
}

QPoint ImageView::pixelUnderPointer() const
{
    const QPoint position = mapFromGlobal(QCursor::pos());
    if (!underMouse() || !rect().contains(position))
        return {-1, -1};
    const QPointF point = imagePoint(position);
    return {int(std::floor(point.x())), int(std::floor(point.y()))};
}

void ImageView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_dragPosition = event->localPos();
    setCursor(Qt::ClosedHandCursor);
}

void ImageView::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton) {
        setScaledOffset(scaledOffset() - (event->localPos() - m_dragPosition));
        m_dragPosition = event->localPos();
    }
    Q_EMIT pointerMoved();
}

void ImageView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        unsetCursor();
}

void ImageView::wheelEvent(QWheelEvent* event)
{
    m_wheelRest += event->angleDelta().y();
    const int steps = m_wheelRest / QWheelEvent::DefaultDeltasPerStep;
    m_wheelRest -= steps * QWheelEvent::DefaultDeltasPerStep;
    if (steps == 0)
        return;
    const QPointF point = imagePoint(event->position());
    setScaling(enforceScalingRatio(scaling() * std::pow(scalingRatio(), steps)));
    setScaledOffset(point * scaling() - event->position());
    Q_EMIT pointerMoved();
}

void ImageView::leaveEvent(QEvent* event)
{
    Surface::leaveEvent(event);
    Q_EMIT pointerMoved();
}
