// SPDX-License-Identifier: MIT
// A small view of the whole image, with the visible part framed.
#include <Vistrel/MiniMap.h>

#include "widgets/DevicePixels.h"
#include "widgets/Navigator.h"
#include "widgets/PointerPosition.h"
#include "widgets/WheelSteps.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QPointer>
#include <QtCore/QTimer>
#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>
#include <QtGui/QPixmap>
#include <QtGui/QWheelEvent>

#include <algorithm>
#include <utility>

namespace Vistrel {

namespace {

constexpr int shrinkMs = 50;     // the least time between two scalings
constexpr int coarseness = 2;    // samples a pixel of the small image, in each direction
constexpr double leastFrame = 7; // logical pixels; a smaller frame is not visible
constexpr double frameWidth = 2; // logical pixels, of the bright line
constexpr double haloWidth = 1;  // of the dark lines beside it
constexpr QRgb haloColor = 0xC0000000;
constexpr QRgb frameColor = 0xFFFFD800;

// Samples a large image before it is smoothed, so that the time depends only on the target's size.
QImage shrunk(const QPixmap& pixmap, const QSize& size)
{
    QImage image = pixmap.toImage();
    const QSize coarse = size * coarseness;
    if (image.width() > coarse.width() || image.height() > coarse.height())
        image = image.scaled(coarse.boundedTo(image.size()), Qt::IgnoreAspectRatio, Qt::FastTransformation);
    return image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

// Grows a frame to the least size about its centre, and moves it into `limits` if it fits.
QRectF enlarged(const QRectF& frame, double least, const QRectF& limits)
{
    QRectF grown(0, 0, std::max(frame.width(), least), std::max(frame.height(), least));
    grown.moveCenter(frame.center());
    grown.moveLeft(std::max(std::min(grown.left(), limits.right() - grown.width()), limits.left()));
    grown.moveTop(std::max(std::min(grown.top(), limits.bottom() - grown.height()), limits.top()));
    return grown;
}

// The device pixels of a map that show the whole image.
QRect imageRect(const SurfaceGeometry& grid, const QSize& imageSize)
{
    const QRect view = grid.devicePixels({QPointF(0, 0), QSizeF(grid.viewSize())});
    QRect whole(QPoint(0, 0), imageSize.scaled(view.size(), Qt::KeepAspectRatio).expandedTo({1, 1}));
    whole.moveCenter(view.center());
    return whole;
}

// Draws inside the frame's edge, and returns what the lines enclose.
QRect drawFrame(QPainter& painter, const QRect& frame, int width, QRgb color)
{
    const QRect inside = frame.adjusted(width, width, -width, -width);
    for (const QRect& side : QRegion(frame) - inside)
        painter.fillRect(side, QColor::fromRgba(color));
    return inside;
}

} // namespace

class MiniMap::PrivateData
{
public:
    explicit PrivateData(MiniMap* owner) : map(owner), pointer(*owner) {}

    SurfaceGeometry grid() const;
    void refresh(const QPixmap& pixmap, const QSize& size);
    void centreOn(const QPointF& position, bool isJump);

    MiniMap* const map;
    PointerPosition pointer;
    WheelSteps wheel;
    QPointer<SurfaceScrollArea> area;
    QImage small;         // device pixels
    qint64 cacheKey = 0;  // of the pixmap that `small` was made from
    QElapsedTimer age;    // of `small`; invalid while that is null
    QTimer nextShrinking; // repaints when another one may be made
};

MiniMap::MiniMap(QWidget* parent) : QWidget(parent), m_data(new PrivateData(this))
{
    setAccessibleName(tr("Overview of the image"));
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_data->nextShrinking.setSingleShot(true);
    connect(&m_data->nextShrinking, SIGNAL(timeout()), this, SLOT(update()));
}

MiniMap::~MiniMap() = default;

void MiniMap::setScrollArea(SurfaceScrollArea* area)
{
    if (m_data->area == area)
        return;
    if (m_data->area) {
        disconnect(m_data->area->surface(), nullptr, this, nullptr);
        disconnect(m_data->area, nullptr, this, nullptr);
    }
    m_data->area = area;
    m_data->small = QImage();
    m_data->age.invalidate();
    if (area) {
        const Surface* const surface = area->surface();
        // The surface's picture is set on any thread.
        connect(surface, SIGNAL(pixelRangeChanged()), this, SLOT(updateView()), Qt::QueuedConnection);
        connect(surface, SIGNAL(pixelOffsetChanged(QPointF)), this, SLOT(updateView()), Qt::QueuedConnection);
        connect(area, SIGNAL(destroyed()), this, SLOT(updateView()));
    }
    updateView();
}

QSize MiniMap::sizeHint() const
{
    return {240, 180};
}

QSize MiniMap::minimumSizeHint() const
{
    return {60, 45};
}

void MiniMap::updateView()
{
    update();
}

// The image -----------------------------------------------------------------------------------------------------------

// Of the map itself.
SurfaceGeometry MiniMap::PrivateData::grid() const
{
    const double ratio = map->devicePixelRatioF();
    SurfaceGeometry grid;
    grid.setViewSize(map->size());
    grid.setGrid(ratio, QPointF(map->mapTo(map->window(), QPoint(0, 0))) * ratio);
    return grid;
}

void MiniMap::PrivateData::refresh(const QPixmap& pixmap, const QSize& size)
{
    if (pixmap.cacheKey() == cacheKey && small.size() == size)
        return;
    if (!small.isNull() && age.isValid() && age.elapsed() < shrinkMs) {
        if (!nextShrinking.isActive())
            nextShrinking.start(static_cast<int>(shrinkMs - age.elapsed()));
        return;
    }
    small = shrunk(pixmap, size);
    cacheKey = pixmap.cacheKey();
    age.start();
}

void MiniMap::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QPixmap pixmap = m_data->area ? m_data->area->surface()->pixmap() : QPixmap();
    if (pixmap.isNull()) {
        m_data->small = QImage();
        painter.setPen(palette().color(QPalette::Disabled, QPalette::WindowText));
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, tr("No image"));
        return;
    }
    const QTransform device = painter.deviceTransform();
    SurfaceGeometry grid = m_data->grid();
    grid.setGrid(device.m11(), {device.dx(), device.dy()});
    const DevicePixels devicePixels(painter, grid);
    const QRect whole = imageRect(grid, pixmap.size());
    if (pixmap.width() < whole.width() && pixmap.height() < whole.height()) {
        painter.drawPixmap(whole, pixmap); // enlarged, without smoothing
    } else {
        m_data->refresh(pixmap, whole.size());
        painter.drawImage(whole, m_data->small);
    }

    const double ratio = grid.deviceRatio();
    const QRectF seen = stretched(m_data->area->surface()->visibleImageRectF(), pixmap.rect(), whole);
    const QRect frame = enlarged(seen, leastFrame * ratio, whole).toAlignedRect().intersected(whole);
    const int halo = std::max(qRound(haloWidth * ratio), 1);
    const QRect bright = drawFrame(painter, frame, halo, haloColor);
    const QRect dark = drawFrame(painter, bright, std::max(qRound(frameWidth * ratio), 1), frameColor);
    drawFrame(painter, dark, halo, haloColor);
}

// Input ---------------------------------------------------------------------------------------------------------------

void MiniMap::PrivateData::centreOn(const QPointF& position, bool isJump)
{
    const QSize imageSize = area ? area->surface()->viewGeometry().imageSize() : QSize();
    if (imageSize.isEmpty())
        return;
    const SurfaceGeometry geometry = grid();
    const QRect pixel(geometry.devicePixels({position, QSizeF(0, 0)}).topLeft(), QSize(1, 1));
    const QRectF shown = stretched(pixel, imageRect(geometry, imageSize), QRectF(QPoint(0, 0), imageSize));
    const QPointer<MiniMap> alive(map);
    area->navigator().centreOn(shown.center(), isJump);
    if (alive)
        map->update();
}

void MiniMap::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_data->centreOn(m_data->pointer.of(*event), true);
    else
        event->ignore();
}

void MiniMap::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton)
        m_data->centreOn(m_data->pointer.of(*event), false);
    else
        event->ignore();
}

void MiniMap::wheelEvent(QWheelEvent* event)
{
    if (!m_data->area || event->angleDelta().y() == 0) {
        event->ignore();
        return;
    }
    event->accept();
    const int step = m_data->wheel.take(*event);
    if (step > 0)
        m_data->area->doZoomIn();
    else if (step < 0)
        m_data->area->doZoomOut();
}

} // namespace Vistrel
