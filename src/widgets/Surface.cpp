// SPDX-License-Identifier: MIT
// The widget that paints the current frame: its picture, where that lies, and its marks.
#include "widgets/Surface_p.h"

#include <QtCore/QThread>
#include <QtGui/QResizeEvent>

namespace Vistrel {

Surface::Surface(QWidget* parent) : QWidget(parent), m_data(new PrivateData(this))
{
    setAttribute(Qt::WA_MouseTracking);
    setMinimumSize(1, 1);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

Surface::~Surface() = default;

double Surface::scalingMin()
{
    return SurfaceGeometry::scalingMin();
}

double Surface::scalingMax()
{
    return SurfaceGeometry::scalingMax();
}

double Surface::scalingRatio()
{
    return SurfaceGeometry::scalingRatio();
}

double Surface::enforceScalingRatio(double scaling)
{
    return SurfaceGeometry::enforceScalingRatio(scaling);
}

// The view ------------------------------------------------------------------------------------------------------------

// The widget's size may be read on its own thread only; the others see it as it was there last.
std::unique_lock<std::mutex> Surface::PrivateData::lockView()
{
    std::unique_lock<std::mutex> view(viewMutex);
    if (QThread::currentThread() == surface->thread())
        geometry.setViewSize(surface->size());
    return view;
}

void Surface::PrivateData::requestUpdate()
{
    if (QThread::currentThread() == surface->thread())
        surface->update();
    else
        QMetaObject::invokeMethod(surface, "update", Qt::QueuedConnection);
}

void Surface::PrivateData::setOffset(const QPointF& offset, Changes& changes)
{
    if (geometry.setOffset(offset))
        changes.addOffset(geometry.storedOffset());
}

bool Surface::PrivateData::fit(bool isForced, Changes& changes)
{
    if (!geometry.scaleToFit() || pixmap.isNull())
        return false;
    const double before = geometry.scaling();
    if (geometry.fit())
        changes.addOffset(geometry.storedOffset());
    const bool isChanged = SurfaceGeometry::differ(before, geometry.scaling());
    if (isChanged)
        changes.addRange();
    if (isChanged || isForced)
        changes.addScaling(geometry.scaleToFit(), geometry.scaling());
    return isChanged;
}

void Surface::PrivateData::moveTo(const std::function<QPointF(const SurfaceGeometry&)>& wanted)
{
    Changes changes;
    {
        const auto view = lockView();
        setOffset(wanted(geometry), changes);
    }
    requestUpdate();
    changes.announce(surface);
}

double Surface::scaling() const
{
    const auto view = m_data->lockView();
    return m_data->geometry.scaling();
}

QSizeF Surface::scaledSize() const
{
    const auto view = m_data->lockView();
    return m_data->geometry.scaledSize();
}

QRectF Surface::scaledRect() const
{
    const auto view = m_data->lockView();
    return m_data->geometry.scaledRect();
}

QPointF Surface::scaledOffset() const
{
    const auto view = m_data->lockView();
    return m_data->geometry.scaledOffset();
}

bool Surface::scaleToFit() const
{
    const auto view = m_data->lockView();
    return m_data->geometry.scaleToFit();
}

QRect Surface::visibleImageRect() const
{
    const auto view = m_data->lockView();
    return m_data->geometry.visibleImageRect();
}

QRectF Surface::visibleImageRectF() const
{
    const auto view = m_data->lockView();
    return m_data->geometry.visibleImageRectF();
}

SurfaceGeometry Surface::viewGeometry() const
{
    const auto view = m_data->lockView();
    return m_data->geometry;
}

QPixmap Surface::pixmap() const
{
    const auto view = m_data->lockView();
    return m_data->pixmap;
}

void Surface::setPixmap(const QPixmap& pixmap)
{
    PrivateData::Changes changes;
    QPixmap previous = pixmap; // its memory is given back with no lock held
    {
        const auto view = m_data->lockView();
        m_data->pixmap.swap(previous);
        if (previous.size() != m_data->pixmap.size()) {
            m_data->geometry.setImageSize(pixmap.size());
            if (!m_data->fit(false, changes)) {
                // A smaller image must not stay scrolled past its end.
                if (!m_data->geometry.scaleToFit())
                    m_data->setOffset(m_data->geometry.storedOffset(), changes);
                changes.addRange();
            }
        }
    }
    m_data->requestUpdate();
    changes.announce(this);
}

void Surface::setScaling(double scaling)
{
    PrivateData::Changes changes;
    {
        const auto view = m_data->lockView();
        SurfaceGeometry& geometry = m_data->geometry;
        const bool wasFit = geometry.scaleToFit();
        const double before = geometry.scaling();
        if (geometry.setScaling(scaling))
            changes.addOffset(geometry.storedOffset());
        const bool isChanged = SurfaceGeometry::differ(before, geometry.scaling());
        if (isChanged)
            changes.addRange();
        if (isChanged || wasFit)
            changes.addScaling(false, geometry.scaling());
    }
    m_data->requestUpdate();
    changes.announce(this);
}

void Surface::setScaleToFit(bool enabled)
{
    PrivateData::Changes changes;
    {
        const auto view = m_data->lockView();
        m_data->geometry.setScaleToFit(enabled);
        if (enabled)
            m_data->fit(true, changes);
    }
    if (enabled)
        m_data->requestUpdate();
    changes.announce(this);
}

void Surface::setScaledOffset(const QPointF& offset)
{
    m_data->moveTo([&](const SurfaceGeometry&) { return offset; });
}

void Surface::setScaledOffsetX(int xOffset)
{
    setScaledOffsetX(static_cast<double>(xOffset));
}

void Surface::setScaledOffsetX(double xOffset)
{
    m_data->moveTo([=](const SurfaceGeometry& geometry) { return QPointF(xOffset, geometry.scaledOffset().y()); });
}

void Surface::setScaledOffsetY(int yOffset)
{
    setScaledOffsetY(static_cast<double>(yOffset));
}

void Surface::setScaledOffsetY(double yOffset)
{
    m_data->moveTo([=](const SurfaceGeometry& geometry) { return QPointF(geometry.scaledOffset().x(), yOffset); });
}

void Surface::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    PrivateData::Changes changes;
    {
        const auto view = m_data->lockView();
        if (!m_data->fit(false, changes))
            changes.addRange();
        const QSize before = event->oldSize().isValid() ? event->oldSize() : event->size();
        m_data->setOffset(m_data->geometry.offsetGrown(event->size() - before), changes);
    }
    changes.announce(this);
}

// Marks ---------------------------------------------------------------------------------------------------------------

bool Surface::crosshairVisible() const
{
    return m_data->crosshairVisible;
}

void Surface::setCrosshairVisible(bool visible)
{
    m_data->crosshairVisible = visible;
    update();
}

QPoint Surface::activePixel() const
{
    return m_data->activePixel;
}

void Surface::setActivePixel(const QPoint& pixPoint)
{
    m_data->activePixel = pixPoint;
    if (m_data->crosshairVisible)
        update();
}

void Surface::setActivePixel(int x, int y)
{
    setActivePixel(QPoint(x, y));
}

bool Surface::valueOverlayEnabled() const
{
    return m_data->valueOverlayEnabled;
}

void Surface::setValueOverlayEnabled(bool enabled)
{
    m_data->valueOverlayEnabled = enabled;
    update();
}

} // namespace Vistrel
