// SPDX-License-Identifier: MIT
// A small view of the whole image, with the visible part framed.
#include <Vistrel/MiniMap.h>

#include "widgets/SurfaceGeometry.h"

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
constexpr double leastFrame = 7; // pixels; a smaller frame is not visible
constexpr int frameWidth = 2;    // pixels, of the bright line
constexpr int haloWidth = 4;     // pixels, of the dark line under it
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
QRectF enlarged(const QRectF& frame, const QRectF& limits)
{
    QRectF grown(0, 0, std::max(frame.width(), leastFrame), std::max(frame.height(), leastFrame));
    grown.moveCenter(frame.center());
    grown.moveLeft(std::max(std::min(grown.left(), limits.right() - grown.width()), limits.left()));
    grown.moveTop(std::max(std::min(grown.top(), limits.bottom() - grown.height()), limits.top()));
    return grown;
}

} // namespace

class MiniMap::PrivateData
{
public:
    explicit PrivateData(MiniMap* owner) : map(owner) {}

    QRect imageRect(const QSize& imageSize) const;
    void refresh(const QPixmap& pixmap, const QSize& size);
    void centreOn(const QPoint& position);

    MiniMap* const map;
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

QRect MiniMap::PrivateData::imageRect(const QSize& imageSize) const
{
    QRect whole(QPoint(0, 0), imageSize.scaled(map->size(), Qt::KeepAspectRatio).expandedTo({1, 1}));
    whole.moveCenter(map->rect().center());
    return whole;
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
    const QRect whole = m_data->imageRect(pixmap.size());
    const QSize size = (QSizeF(whole.size()) * devicePixelRatioF()).toSize();
    if (pixmap.width() < size.width() && pixmap.height() < size.height()) {
        painter.drawPixmap(whole, pixmap); // enlarged, without smoothing
    } else {
        m_data->refresh(pixmap, size);
        painter.drawImage(whole, m_data->small);
    }

    const QRectF seen = stretched(m_data->area->surface()->visibleImageRectF(), pixmap.rect(), whole);
    constexpr int inset = haloWidth / 2;
    // On whole pixels the lines are sharp.
    const QRect frame = enlarged(seen, whole).toAlignedRect().intersected(whole);
    painter.setRenderHint(QPainter::Antialiasing);
    for (const auto& [color, width] : {std::pair(haloColor, haloWidth), std::pair(frameColor, frameWidth)}) {
        painter.setPen(QPen(QColor::fromRgba(color), width, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        painter.drawRect(QRectF(frame).adjusted(inset, inset, -inset, -inset));
    }
}

// Input ---------------------------------------------------------------------------------------------------------------

void MiniMap::PrivateData::centreOn(const QPoint& position)
{
    if (!area)
        return;
    const SurfaceGeometry geometry = area->surface()->viewGeometry();
    if (geometry.imageSize().isEmpty())
        return;
    const QRectF pixel = stretched(QRect(position, QSize(1, 1)), imageRect(geometry.imageSize()),
                                   QRectF(QPointF(0, 0), geometry.scaledSize()));
    area->setImageOffset(geometry.offsetCentred(pixel.center()));
    map->update();
}

void MiniMap::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        m_data->centreOn(event->pos());
    else
        event->ignore();
}

void MiniMap::mouseMoveEvent(QMouseEvent* event)
{
    if (event->buttons() & Qt::LeftButton)
        m_data->centreOn(event->pos());
    else
        event->ignore();
}

void MiniMap::wheelEvent(QWheelEvent* event)
{
    const int turn = event->angleDelta().y();
    if (!m_data->area || turn == 0) {
        event->ignore();
        return;
    }
    if (turn > 0)
        m_data->area->doZoomIn();
    else
        m_data->area->doZoomOut();
    event->accept();
}

} // namespace Vistrel
