// SPDX-License-Identifier: MIT
// Zooms a surface to a rectangle that is drawn on it with the middle button.
#pragma once

#include "widgets/PointerPosition.h"

#include <QtCore/QObject>
#include <QtCore/QPointF>
#include <QtWidgets/QRubberBand>

#include <memory>

class QMouseEvent;

namespace Vistrel {

class Navigator;
class Surface;

/// Esc, another button, a window that is no longer active, and an image that is gone end the drawing without a zoom.
class RectangleZoom : public QObject
{
public:
    RectangleZoom(Navigator& navigator, Surface& surface);
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool hasImage() const;
    void begin(const QMouseEvent& event);
    void draw(const QMouseEvent& event);
    void end();

    Navigator& m_navigator;
    Surface& m_surface;
    PointerPosition m_pointer;
    bool m_isDrawing = false;
    QPointF m_from;
    QPointF m_to;
    QRubberBand* const m_band; // owned by the surface
};

} // namespace Vistrel
