// SPDX-License-Identifier: MIT
// A surface that is moved with the mouse.
#pragma once

#include <Vistrel/Surface.h>

#include <QtCore/QPoint>

/// The wheel zooms about the pointer, a drag pans.
class ImageView : public Vistrel::Surface
{
    Q_OBJECT

public:
    explicit ImageView(QWidget* parent = nullptr);

    /// The image pixel under the pointer; it may lie outside the image. (-1, -1) while the pointer is not here.
    QPoint pixelUnderPointer() const;

Q_SIGNALS:
    void pointerMoved();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    QPointF imagePoint(const QPointF& position) const;

    QPointF m_dragPosition; // of the pointer at the last move, in this widget
    int m_wheelRest = 0;    // eighths of a degree that do not make up a step yet
};
