// SPDX-License-Identifier: MIT
// Zooms a surface to a rectangle that is drawn on it with the middle button.
#include "widgets/RectangleZoom.h"

#include "widgets/Navigator.h"
#include "widgets/SurfaceInput.h"

#include <Vistrel/Surface.h>

#include <QtCore/QCoreApplication>
#include <QtGui/QKeyEvent>
#include <QtGui/QMouseEvent>

namespace Vistrel {

RectangleZoom::RectangleZoom(Navigator& navigator, Surface& surface)
    : m_navigator(navigator),
      m_surface(surface),
      m_pointer(surface),
      m_band(new QRubberBand(QRubberBand::Rectangle, &surface))
{
    surface.installEventFilter(this);
    connect(&surface, &Surface::pixelRangeChanged, this, [this] {
        if (m_isDrawing && !hasImage())
            end();
    });
}

bool RectangleZoom::hasImage() const
{
    return !m_surface.viewGeometry().imageSize().isEmpty();
}

// While a rectangle is drawn, the application's events come here, too: the focus may be anywhere when Esc is pressed,
// and Esc must not leave the full screen then.
bool RectangleZoom::eventFilter(QObject* watched, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (m_isDrawing && (type == QEvent::ShortcutOverride || type == QEvent::KeyPress) &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        if (type == QEvent::KeyPress)
            end();
        return true;
    }
    if (watched != &m_surface)
        return false;
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick:
        if (m_isDrawing)
            end();
        else if (static_cast<QMouseEvent*>(event)->buttons() == Qt::MiddleButton && hasImage())
            begin(*static_cast<QMouseEvent*>(event));
        return false;
    case QEvent::MouseMove:
        if (m_isDrawing)
            draw(*static_cast<QMouseEvent*>(event));
        return false;
    case QEvent::MouseButtonRelease: {
        if (!m_isDrawing)
            return false;
        draw(*static_cast<QMouseEvent*>(event));
        const bool isDrawn = m_band->isVisibleTo(&m_surface);
        end();
        event->accept();
        if (isDrawn)
            m_navigator.showPart(QRectF(m_from, m_to).normalized());
        return true;
    }
    case QEvent::WindowDeactivate:
    case QEvent::Hide:
        if (m_isDrawing)
            end();
        return false;
    default:
        return false;
    }
}

void RectangleZoom::begin(const QMouseEvent& event)
{
    m_isDrawing = true;
    m_from = m_to = m_pointer.of(event);
    m_surface.setCursor(Qt::CrossCursor);
    QCoreApplication::instance()->installEventFilter(this);
}

void RectangleZoom::draw(const QMouseEvent& event)
{
    // Another widget may have got the release.
    if (event.type() == QEvent::MouseMove && event.buttons() != Qt::MiddleButton)
        return end();
    m_to = m_pointer.of(event);
    m_band->setGeometry(QRectF(m_from, m_to).normalized().toAlignedRect());
    m_band->setVisible((m_to - m_from).manhattanLength() >= dragDistance);
}

void RectangleZoom::end()
{
    m_isDrawing = false;
    m_band->hide();
    m_surface.setCursor(Qt::OpenHandCursor);
    QCoreApplication::instance()->removeEventFilter(this);
}

} // namespace Vistrel
