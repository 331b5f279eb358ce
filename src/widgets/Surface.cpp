// SPDX-License-Identifier: MIT
// The widget that paints the current frame.
#include <Vistrel/Surface.h>

#include "base/Report.h"
#include "pipeline/Conversion.h"
#include "pipeline/PixelReader.h"
#include "widgets/PixelOverlay.h"
#include "widgets/SurfaceGeometry.h"

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <QtCore/QPointer>
#include <QtCore/QThread>
#include <QtCore/QVector>
#include <QtGui/QPaintEvent>
#include <QtGui/QPainter>

#include <algorithm>
#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

namespace Vistrel {

namespace {

// Past this many pixels from an edge the paint engine's coordinates are no longer exact.
constexpr int bandSize = 16384;

// Draws the part `source` of a picture into `target`.
void drawPart(QPainter& painter, const QRectF& target, const QPixmap& pixmap, const QRectF& source)
{
    if (pixmap.width() <= bandSize && pixmap.height() <= bandSize) {
        painter.drawPixmap(target, pixmap, source);
        return;
    }
    const QImage image = pixmap.toImage(); // shares the pixels
    const double scaleX = target.width() / source.width();
    const double scaleY = target.height() / source.height();
    const int pixelBytes = image.depth() / 8;
    for (int y = static_cast<int>(source.top()) / bandSize * bandSize; y < source.bottom(); y += bandSize) {
        for (int x = static_cast<int>(source.left()) / bandSize * bandSize; x < source.right(); x += bandSize) {
            const QRect band = QRect(x, y, bandSize, bandSize).intersected(image.rect());
            const QRectF part = source.intersected(band);
            if (part.isEmpty())
                continue;
            QImage view(image.constScanLine(band.y()) + static_cast<qsizetype>(band.x()) * pixelBytes, band.width(),
                        band.height(), image.bytesPerLine(), image.format());
            view.setColorTable(image.colorTable());
            painter.drawImage(QRectF(target.x() + (part.x() - source.x()) * scaleX,
                                     target.y() + (part.y() - source.y()) * scaleY, part.width() * scaleX,
                                     part.height() * scaleY),
                              view, part.translated(-band.topLeft()));
        }
    }
}

// A value as wide as any that the source has.
PixVal widestValue(bool isMono, std::uint32_t largest)
{
    PixVal value;
    value.mono = isMono;
    value.color = !isMono;
    value.value = value.r = value.g = value.b = largest;
    return value;
}

PixVal imageValue(const QImage& image, int x, int y)
{
    const QRgb pixel = image.pixel(x, y);
    PixVal value;
    value.color = true;
    value.r = static_cast<std::uint32_t>(qRed(pixel));
    value.g = static_cast<std::uint32_t>(qGreen(pixel));
    value.b = static_cast<std::uint32_t>(qBlue(pixel));
    return value;
}

} // namespace

class Surface::PrivateData
{
public:
    explicit PrivateData(Surface* owner) : surface(owner) {}

    // What happened to the view, in the order in which it is announced once the mutex is released.
    class Changes
    {
    public:
        void addOffset(const QPointF& offset)
        {
            m_emissions.push_back([offset](Surface* s) { Q_EMIT s->pixelOffsetChanged(offset); });
        }
        void addRange()
        {
            m_emissions.push_back([](Surface* s) { Q_EMIT s->pixelRangeChanged(); });
        }
        void addScaling(bool autoFit, double scaling)
        {
            m_emissions.push_back([=](Surface* s) { Q_EMIT s->scalingChanged(autoFit, scaling); });
        }
        // Call it last: a slot may delete the surface.
        void announce(Surface* announcer) const
        {
            const QPointer<Surface> alive(announcer);
            for (const auto& emission : m_emissions) {
                if (alive)
                    emission(alive);
            }
        }

    private:
        std::vector<std::function<void(Surface*)>> m_emissions;
    };

    struct ImageSource
    {
        AbstractAcquisitionInterface* source = nullptr; // null when the source is an image or none
        RawImage raw;                                   // null data when there is no raw source
        QImage image;

        bool hasRaw() const { return source && raw.data; }
    };

    std::unique_lock<std::mutex> lockView();
    void setOffset(const QPointF& offset, Changes& changes);
    bool fit(bool isForced, Changes& changes);
    void moveTo(const std::function<QPointF(const SurfaceGeometry&)>& wanted);
    void requestUpdate();

    ImageSource imageSource() const;
    ScopedLock frameLock(const ImageSource& asked) const;

    void paintImage(QPainter& painter);
    void paintOverlay(QPainter& painter, const QRectF& area);
    void paintCrosshair(QPainter& painter, const QRectF& area);

    Surface* const surface;

    mutable std::mutex viewMutex; // guards the picture and where it lies
    QPixmap pixmap;
    SurfaceGeometry geometry;

    mutable std::mutex sourceMutex; // guards where pixel values come from
    ImageSource from;
    std::atomic<int> sourceChanged{1}; // kind, format or size; the overlay's labels are to be measured again

    PixelOverlay overlay; // user-interface thread only, as all below
    bool crosshairVisible = false;
    QPoint activePixel{-1, -1};
    bool valueOverlayEnabled = true;
};

Surface::Surface(QWidget* parent) : QWidget(parent), m_data(new PrivateData(this))
{
    setAttribute(Qt::WA_MouseTracking);
    setMinimumSize(1, 1);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

Surface::~Surface()
{
    delete m_data;
}

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
        const QSizeF growth = QSizeF(event->size() - (event->oldSize().isValid() ? event->oldSize() : event->size()));
        const QPointF offset = m_data->geometry.storedOffset();
        m_data->setOffset(offset - QPointF(growth.width(), growth.height()) * 0.5, changes);
    }
    changes.announce(this);
}

// Pixel values --------------------------------------------------------------------------------------------------------

Surface::PrivateData::ImageSource Surface::PrivateData::imageSource() const
{
    const std::lock_guard<std::mutex> guard(sourceMutex);
    return from;
}

// Asked for with no mutex held: the source may wait, or call back.
ScopedLock Surface::PrivateData::frameLock(const ImageSource& asked) const
{
    return hostCall("getFrameLock", ScopedLock(), [&] { return asked.source->getFrameLock(asked.raw); });
}

void Surface::setImageSrc(const QImage& image)
{
    PrivateData::ImageSource next;
    next.image = image;
    {
        const std::lock_guard<std::mutex> guard(m_data->sourceMutex);
        const QImage& before = m_data->from.image;
        if (before.format() != image.format() || before.size() != image.size())
            m_data->sourceChanged.store(1);
        std::swap(m_data->from, next);
    }
    m_data->requestUpdate();
}

void Surface::setImageSrc(AbstractAcquisitionInterface* const acquisitionInterface, const RawImage& raw)
{
    PrivateData::ImageSource next;
    next.source = acquisitionInterface;
    next.raw = raw;
    {
        const std::lock_guard<std::mutex> guard(m_data->sourceMutex);
        const PrivateData::ImageSource& before = m_data->from;
        if (before.source != acquisitionInterface || before.raw.format != raw.format || before.raw.width != raw.width ||
            before.raw.height != raw.height)
            m_data->sourceChanged.store(1);
        std::swap(m_data->from, next);
    }
    m_data->requestUpdate();
}

void Surface::clearImageSrc()
{
    PrivateData::ImageSource none;
    {
        const std::lock_guard<std::mutex> guard(m_data->sourceMutex);
        std::swap(m_data->from, none);
    }
    m_data->requestUpdate();
}

bool Surface::imageSrcPixVal(const PixPos& position, PixVal& value)
{
    value = PixVal();
    const PrivateData::ImageSource source = m_data->imageSource();
    if (source.hasRaw()) {
        const ScopedLock lock = m_data->frameLock(source);
        return lock.good() && readPixel(source.raw, position, value);
    }
    if (source.image.isNull() || !source.image.rect().contains(position.x, position.y))
        return false;
    value = imageValue(source.image, position.x, position.y);
    return true;
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

// Painting ------------------------------------------------------------------------------------------------------------

void Surface::paintEvent(QPaintEvent* event)
{
    const QRectF area = event->rect();
    QPainter painter(this);

    painter.save();
    m_data->paintImage(painter);
    painter.restore();

    if (m_data->valueOverlayEnabled) {
        painter.save();
        m_data->paintOverlay(painter, area);
        painter.restore();
    }
    if (m_data->crosshairVisible) {
        painter.save();
        m_data->paintCrosshair(painter, area);
        painter.restore();
    }
}

void Surface::PrivateData::paintImage(QPainter& painter)
{
    QPixmap shown;
    QRectF source;
    QRectF target;
    {
        const auto view = lockView();
        shown = pixmap;
        source = geometry.visibleImageRectF();
        target = geometry.scaledRect().intersected(QRectF(QPointF(0, 0), QSizeF(geometry.viewSize())));
    }
    if (!source.isEmpty() && !target.isEmpty())
        drawPart(painter, target, shown, source);
}

void Surface::PrivateData::paintOverlay(QPainter& painter, const QRectF& area)
{
    const ImageSource source = imageSource();
    QSize size = source.image.size();
    PixVal widest = widestValue(source.image.format() == QImage::Format_Indexed8, 255);
    if (source.hasRaw()) {
        if (!isReadable(source.raw))
            return;
        size = QSize(static_cast<int>(source.raw.width), static_cast<int>(source.raw.height));
        widest = widestValue(isMonochrome(source.raw.format), channelMaximum(source.raw.format));
    } else if (source.image.isNull()) {
        return;
    }

    double scaling = 1.0;
    QRectF scaledRect;
    {
        const auto view = lockView();
        scaling = geometry.scaling();
        scaledRect = geometry.scaledRect();
    }
    if (sourceChanged.exchange(0) == 1)
        overlay.measure(painter.device(), size, widest, scaling);
    if (!overlay.fits(scaling)) {
        sourceChanged.store(1);
        return;
    }

    std::vector<PixelOverlay::Cell> cells;
    const QRect visible = cellsIn(area, scaledRect, scaling, size);
    {
        const ScopedLock lock = source.hasRaw() ? frameLock(source) : ScopedLock();
        if (source.hasRaw() && !lock)
            return;
        for (int x = visible.left(); x <= visible.right(); ++x) {
            for (int y = visible.top(); y <= visible.bottom(); ++y) {
                PixVal value;
                if (source.hasRaw()) {
                    readPixel(source.raw, {x, y}, value);
                } else {
                    value = imageValue(source.image, x, y);
                    if (source.image.format() == QImage::Format_Indexed8) {
                        value.mono = true;
                        value.color = false;
                        value.value = value.r;
                    }
                }
                cells.push_back({static_cast<double>(x), static_cast<double>(y), value});
            }
        }
    }
    overlay.draw(painter, cells, scaledRect, scaling);
}

void Surface::PrivateData::paintCrosshair(QPainter& painter, const QRectF& area)
{
    double scaling = 1.0;
    QPointF corner;
    {
        const auto view = lockView();
        if (!geometry.visibleImageRect().contains(activePixel))
            return;
        scaling = geometry.scaling();
        corner = QPointF(activePixel) * scaling - geometry.scaledOffset();
    }
    QVector<QLineF> lines;
    lines << QLineF(area.left(), corner.y(), area.right(), corner.y())
          << QLineF(corner.x(), area.top(), corner.x(), area.bottom());
    if (scaling >= 1.5) {
        const QPointF opposite = corner + QPointF(scaling, scaling);
        lines << QLineF(corner.x(), opposite.y(), opposite.x(), opposite.y())
              << QLineF(opposite.x(), corner.y(), opposite.x(), opposite.y());
    }
    QPen pen(Qt::white);
    pen.setDashPattern({4, 4});
    painter.setPen(pen);
    painter.setBackground(Qt::black);
    painter.setBackgroundMode(Qt::OpaqueMode);
    painter.drawLines(lines);
}

} // namespace Vistrel
