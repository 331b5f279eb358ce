// SPDX-License-Identifier: MIT
// The view of the widget that paints the current frame: its image, zoom and offset, and the source of its values.
#include "widgets/Surface_p.h"

#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtGui/QResizeEvent>

#include <utility>

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

// The widget's size and place may be read only on its own thread. Other threads see those that were read there last.
std::unique_lock<std::mutex> Surface::PrivateData::lockView()
{
    std::unique_lock<std::mutex> view(viewMutex);
    if (QThread::currentThread() == surface->thread()) {
        const double ratio = surface->devicePixelRatioF();
        geometry.setViewSize(surface->size());
        geometry.setGrid(ratio, QPointF(surface->mapTo(surface->window(), QPoint(0, 0))) * ratio);
    }
    return view;
}

void Surface::PrivateData::setSource(PixelSource next)
{
    source.set(std::move(next));
    requestUpdate();
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

// Runs the operation with the view locked, and emits its signals without a lock held.
void Surface::PrivateData::change(const std::function<void(Changes&)>& operation)
{
    Changes changes;
    {
        const auto view = lockView();
        operation(changes);
    }
    requestUpdate();
    const QPointer<Surface> alive(surface); // a slot may delete it
    for (const auto& emission : changes.emissions) {
        if (alive)
            emission(alive);
    }
}

double Surface::scaling() const
{
    return viewGeometry().scaling();
}

QSizeF Surface::scaledSize() const
{
    return viewGeometry().scaledSize();
}

QRectF Surface::scaledRect() const
{
    return viewGeometry().scaledRect();
}

QPointF Surface::scaledOffset() const
{
    return viewGeometry().scaledOffset();
}

bool Surface::scaleToFit() const
{
    return viewGeometry().scaleToFit();
}

QRect Surface::visibleImageRect() const
{
    return viewGeometry().visibleImageRect();
}

QRectF Surface::visibleImageRectF() const
{
    return viewGeometry().visibleImageRectF();
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
    setPicture(pixmap, QImage());
}

void Surface::setPicture(const QPixmap& pixmap, const QImage& indices)
{
    QPixmap previous = pixmap; // destroyed without a lock held
    QImage previousIndices = indices;
    m_data->change([&](PrivateData::Changes& changes) {
        m_data->pixmap.swap(previous);
        m_data->indices.swap(previousIndices);
        if (previous.size() == pixmap.size())
            return;
        SurfaceGeometry& geometry = m_data->geometry;
        geometry.setImageSize(pixmap.size());
        if (m_data->fit(false, changes))
            return;
        // A smaller image must not stay scrolled past its end.
        if (!geometry.scaleToFit() && geometry.keepCentre())
            changes.addOffset(geometry.storedOffset());
        changes.addRange();
    });
}

void Surface::setScaling(double scaling)
{
    m_data->change([&](PrivateData::Changes& changes) {
        SurfaceGeometry& geometry = m_data->geometry;
        const bool wasFit = geometry.scaleToFit();
        const double before = geometry.scaling();
        if (geometry.setScaling(scaling))
            changes.addOffset(geometry.storedOffset());
        const bool isChanged = SurfaceGeometry::differ(before, geometry.scaling());
        if (isChanged)
            changes.addRange();
        if (isChanged || wasFit != geometry.scaleToFit())
            changes.addScaling(geometry.scaleToFit(), geometry.scaling());
    });
}

void Surface::setScaleToFit(bool enabled)
{
    m_data->change([&](PrivateData::Changes& changes) {
        m_data->geometry.setScaleToFit(enabled);
        m_data->fit(true, changes);
    });
}

void Surface::setScaledOffset(const QPointF& offset)
{
    m_data->change([&](PrivateData::Changes& changes) { m_data->setOffset(offset, changes); });
}

void Surface::setScaledOffsetX(int xOffset)
{
    setScaledOffsetX(static_cast<double>(xOffset));
}

void Surface::setScaledOffsetX(double xOffset)
{
    m_data->change([&](PrivateData::Changes& changes) {
        m_data->setOffset({xOffset, m_data->geometry.scaledOffset().y()}, changes);
    });
}

void Surface::setScaledOffsetY(int yOffset)
{
    setScaledOffsetY(static_cast<double>(yOffset));
}

void Surface::setScaledOffsetY(double yOffset)
{
    m_data->change([&](PrivateData::Changes& changes) {
        m_data->setOffset({m_data->geometry.scaledOffset().x(), yOffset}, changes);
    });
}

void Surface::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    m_data->change([&](PrivateData::Changes& changes) {
        if (!m_data->fit(false, changes))
            changes.addRange();
        if (m_data->geometry.keepCentre())
            changes.addOffset(m_data->geometry.storedOffset());
    });
}

// Pixel values --------------------------------------------------------------------------------------------------------

void Surface::setImageSrc(const QImage& image)
{
    m_data->setSource({nullptr, {}, nullptr, image});
}

void Surface::setImageSrc(AbstractAcquisitionInterface* const acquisitionInterface, const RawImage& raw)
{
    setImageSrc(acquisitionInterface, raw, nullptr);
}

void Surface::setImageSrc(AbstractAcquisitionInterface* const acquisitionInterface, const RawImage& raw,
                          std::shared_ptr<const void> owner)
{
    m_data->setSource({acquisitionInterface, raw, std::move(owner), {}});
}

void Surface::clearImageSrc()
{
    m_data->setSource({});
}

bool Surface::imageSrcPixVal(const PixPos& position, PixVal& value)
{
    value = PixVal();
    const PixelSource source = m_data->source.get();
    ScopedLock lock;
    return source.lock(lock) && source.value(position, value);
}

} // namespace Vistrel
