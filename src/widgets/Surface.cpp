// SPDX-License-Identifier: MIT
// The widget that paints the current frame.
#include <Vistrel/Surface.h>

#include "base/Log.h"
#include "widgets/CrosshairLayer.h"
#include "widgets/DevicePixels.h"
#include "widgets/HintLayer.h"
#include "widgets/ImageLayer.h"
#include "widgets/PixelOverlay.h"
#include "widgets/PixelSource.h"

#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtGui/QPaintEvent>
#include <QtGui/QResizeEvent>

#include <functional>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Vistrel {

class Surface::PrivateData
{
public:
    explicit PrivateData(Surface* owner) : surface(owner) {}

    // Signals to be emitted, in this order, after the mutex is released.
    struct Changes
    {
        void addOffset(const QPointF& offset)
        {
            emissions.push_back([offset](Surface* s) { Q_EMIT s->pixelOffsetChanged(offset); });
        }
        void addRange()
        {
            emissions.push_back([](Surface* s) { Q_EMIT s->pixelRangeChanged(); });
        }
        void addScaling(bool autoFit, double scaling)
        {
            emissions.push_back([=](Surface* s) { Q_EMIT s->scalingChanged(autoFit, scaling); });
        }
        std::vector<std::function<void(Surface*)>> emissions;
    };

    std::unique_lock<std::mutex> lockView();
    void setOffset(const QPointF& offset, Changes& changes);
    bool fit(bool isForced, Changes& changes);
    void change(const std::function<void(Changes&)>& operation);
    void setSource(PixelSource next);
    void requestUpdate();
    void paint(QPainter& painter, const QRegion& area);

    Surface* const surface;

    std::mutex viewMutex; // guards the next three
    QPixmap pixmap;
    QImage indices; // that the pixmap shows in colours, or null
    SurfaceGeometry geometry;

    SharedPixelSource source;

    // User-interface thread only. The last layer is drawn on top.
    ImageLayer image;
    PixelOverlay overlay{source};
    CrosshairLayer crosshair;
    HintLayer hint;
    const std::vector<SurfaceLayer*> layers{&image, &overlay, &crosshair, &hint};
};

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

// Painting ------------------------------------------------------------------------------------------------------------

void Surface::PrivateData::paint(QPainter& painter, const QRegion& area)
{
    const QTransform device = painter.deviceTransform();
    if (!isGrid(device)) {
        QImage whole(surface->size(), QImage::Format_ARGB32_Premultiplied);
        whole.fill(Qt::transparent);
        QPainter wholePainter(&whole);
        paint(wholePainter, surface->rect());
        wholePainter.end();
        painter.drawImage(0, 0, whole);
        return;
    }
    // An opaque surface that fills its background does it here, and only where the image does not cover it.
    const bool isFilled = surface->autoFillBackground() && surface->testAttribute(Qt::WA_OpaquePaintEvent);
    const QBrush background = isFilled ? surface->palette().brush(QPalette::Window) : QBrush(Qt::NoBrush);
    SurfaceGeometry painted;
    {
        const auto view = lockView();
        painted = geometry;
        image.setPicture(pixmap, indices, background);
        overlay.setPicture(pixmap);
    }
    painted.setGrid(device.m11(), {device.dx(), device.dy()});
    for (SurfaceLayer* const layer : layers) {
        painter.save();
        layer->paint(painter, area, painted);
        painter.restore();
    }
}

void Surface::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    m_data->paint(painter, event->region());
}

// Marks ---------------------------------------------------------------------------------------------------------------

bool Surface::crosshairVisible() const
{
    return m_data->crosshair.crosshairVisible;
}

void Surface::setCrosshairVisible(bool visible)
{
    m_data->crosshair.crosshairVisible = visible;
    update();
}

QPoint Surface::activePixel() const
{
    return m_data->crosshair.activePixel;
}

void Surface::setActivePixel(const QPoint& pixPoint)
{
    m_data->crosshair.activePixel = pixPoint;
    if (m_data->crosshair.crosshairVisible)
        update();
}

void Surface::setActivePixel(int x, int y)
{
    setActivePixel(QPoint(x, y));
}

void Surface::setHint(const QString& text)
{
    if (std::exchange(m_data->hint.text, text) == text)
        return;
    setAccessibleDescription(text);
    update();
}

PixelValues Surface::pixelValues() const
{
    return m_data->overlay.pixelValues;
}

void Surface::setPixelValues(PixelValues values)
{
    if (values < PixelValues::Off || values > PixelValues::ValueOnly) {
        reportLine("Vistrel::Surface::setPixelValues: Unknown PixelValues with index " +
                   std::to_string(static_cast<std::int32_t>(values)) + ".");
        return;
    }
    update();
    if (std::exchange(m_data->overlay.pixelValues, values) != values)
        Q_EMIT pixelValuesChanged();
}

bool Surface::valueOverlayEnabled() const
{
    return pixelValues() != PixelValues::Off;
}

void Surface::setValueOverlayEnabled(bool enabled)
{
    if (enabled != valueOverlayEnabled())
        setPixelValues(enabled ? PixelValues::WithPosition : PixelValues::Off);
}

double Surface::pixelValuesScaling()
{
    return m_data->overlay.smallestScaling(*this, viewGeometry());
}

ShrinkMode Surface::shrinkMode() const
{
    return m_data->image.shrinkMode;
}

void Surface::setShrinkMode(ShrinkMode mode)
{
    if (mode < ShrinkMode::Sample || mode > ShrinkMode::Maximum) {
        reportLine("Vistrel::Surface::setShrinkMode: Unknown ShrinkMode with index " +
                   std::to_string(static_cast<std::int32_t>(mode)) + ".");
        return;
    }
    update();
    if (std::exchange(m_data->image.shrinkMode, mode) != mode)
        Q_EMIT shrinkModeChanged();
}

} // namespace Vistrel
