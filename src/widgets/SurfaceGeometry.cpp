// SPDX-License-Identifier: MIT
// Every mapping between an image and the view that shows it: zoom, offset, fitting, the pixel under the pointer.
#include "widgets/SurfaceGeometry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace Vistrel {

namespace {

constexpr double offsetTolerance = 1e-12;
// Larger than any rounding error, and smaller than any distance that matters. A corner on a border belongs to the pixel
// that begins there.
constexpr double imageTie = 1e-9;
constexpr double deviceTie = 1e-4;

double power(double base, int exponent)
{
    double result = 1.0;
    for (; exponent > 0; exponent /= 2, base *= base) {
        if (exponent % 2 == 1)
            result *= base;
    }
    return result;
}

double clampedScaling(double scaling)
{
    // NaN gives the lower limit.
    return scaling > SurfaceGeometry::scalingMin() ? std::min(scaling, SurfaceGeometry::scalingMax())
                                                   : SurfaceGeometry::scalingMin();
}

// A position in an event that a host made may be any number.
int bounded(double devicePixel)
{
    constexpr double most = 1e7; // further than any view reaches; no image pixel there overflows
    return devicePixel > -most ? static_cast<int>(std::min(devicePixel, most)) : static_cast<int>(-most);
}

double clampedOffset(double offset, double most)
{
    return offset > 0 ? std::min(offset, most) : 0;
}

} // namespace

double SurfaceGeometry::scalingMax()
{
    return power(scalingRatio(), 40);
}

double SurfaceGeometry::scalingMin()
{
    return 1.0 / power(scalingRatio(), 40);
}

int SurfaceGeometry::levelOf(double scaling)
{
    return static_cast<int>(std::floor(std::log(clampedScaling(scaling)) / std::log(scalingRatio()) + 0.5));
}

double SurfaceGeometry::scalingOf(int level)
{
    return std::pow(scalingRatio(), level);
}

bool SurfaceGeometry::differ(double scaling, double other)
{
    return std::abs(scaling - other) >= std::numeric_limits<double>::epsilon();
}

bool SurfaceGeometry::isZoom(double before, double after)
{
    return std::abs(before - after) > std::min(scalingMin(), before / 10);
}

QSizeF SurfaceGeometry::scaledSize() const
{
    return hasImage() ? QSizeF(m_imageSize) * m_scaling : QSizeF(0, 0);
}

QPointF SurfaceGeometry::scaledOffset() const
{
    if (!hasImage())
        return m_offset;
    const QSizeF room = (QSizeF(m_viewSize) - scaledSize()) * 0.5; // beside the image, on each side
    return {room.width() > 0 ? -room.width() : m_offset.x(), room.height() > 0 ? -room.height() : m_offset.y()};
}

QRectF SurfaceGeometry::scaledRect() const
{
    return {-scaledOffset(), scaledSize()};
}

QRectF SurfaceGeometry::shownRect() const
{
    return scaledRect().intersected(QRectF(QPointF(0, 0), QSizeF(m_viewSize)));
}

QRectF SurfaceGeometry::visibleImageRectF() const
{
    const QSizeF scaled = scaledSize();
    const bool wholeWidth = m_viewSize.width() > scaled.width();
    const bool wholeHeight = m_viewSize.height() > scaled.height();
    const QRectF visible((wholeWidth ? 0 : m_offset.x()) / m_scaling, (wholeHeight ? 0 : m_offset.y()) / m_scaling,
                         (wholeWidth ? scaled.width() : m_viewSize.width()) / m_scaling,
                         (wholeHeight ? scaled.height() : m_viewSize.height()) / m_scaling);
    return visible.intersected(QRectF(QPointF(0, 0), hasImage() ? QSizeF(m_imageSize) : QSizeF(0, 0)));
}

QRect SurfaceGeometry::visibleImageRect() const
{
    const QRectF visible = visibleImageRectF();
    return {(visible.topLeft() - QPointF(0.5, 0.5)).toPoint(),
            QPointF(visible.x() + visible.width() + 0.5, visible.y() + visible.height() + 0.5).toPoint()};
}

QPoint SurfaceGeometry::pixelAt(const QPointF& position) const
{
    if (!hasImage() || !(position.x() >= 0 && position.y() >= 0))
        return {-1, -1};
    const QPoint pixel = devicePixels({position, QSizeF(0, 0)}).topLeft();
    return {sampledColumn(pixel.x()), sampledRow(pixel.y())};
}

void SurfaceGeometry::setGrid(double ratio, const QPointF& corner)
{
    m_ratio = ratio;
    m_corner = corner;
    m_firstPixel = corner.toPoint();
}

QRect SurfaceGeometry::devicePixels(const QRectF& area) const
{
    const auto place = [](double from, double to, double corner, int first) {
        return std::pair(bounded(std::floor(from + corner + deviceTie)) - first,
                         bounded(std::ceil(to + corner - deviceTie)) - first);
    };
    const auto [left, right] = place(area.left() * m_ratio, area.right() * m_ratio, m_corner.x(), m_firstPixel.x());
    const auto [top, bottom] = place(area.top() * m_ratio, area.bottom() * m_ratio, m_corner.y(), m_firstPixel.y());
    return {left, top, right - left, bottom - top};
}

QRect SurfaceGeometry::viewPart(const QRect& devicePixels) const
{
    const QPointF first = (devicePixels.topLeft() + m_firstPixel - m_corner) / m_ratio;
    const QPointF end = (devicePixels.bottomRight() + QPoint(1, 1) + m_firstPixel - m_corner) / m_ratio;
    return {QPoint(static_cast<int>(std::ceil(first.x())), static_cast<int>(std::ceil(first.y()))),
            QPoint(static_cast<int>(std::floor(end.x())) - 1, static_cast<int>(std::floor(end.y())) - 1)};
}

int SurfaceGeometry::sampledColumn(int x) const
{
    return sampledAt(x, scaledOffset().x());
}

int SurfaceGeometry::sampledRow(int y) const
{
    return sampledAt(y, scaledOffset().y());
}

int SurfaceGeometry::sampledAt(int devicePixel, double offset) const
{
    return static_cast<int>(std::floor((devicePixel / m_ratio + offset) / m_scaling + imageTie));
}

// The first device pixel that shows this image pixel or a later one: the inverse of `sampledAt`, also where that
// rounds.
int SurfaceGeometry::firstShowing(int pixel, double offset) const
{
    int first = static_cast<int>(std::ceil((pixel * m_scaling - offset) * m_ratio));
    while (sampledAt(first, offset) < pixel)
        ++first;
    while (sampledAt(first - 1, offset) >= pixel)
        --first;
    return first;
}

QRect SurfaceGeometry::sampledRect() const
{
    if (!hasImage())
        return {};
    if (!hasImage())
        return {};
    const QPointF offset = scaledOffset();
    const QPoint first(firstShowing(0, offset.x()), firstShowing(0, offset.y()));
    const QPoint end(firstShowing(m_imageSize.width(), offset.x()), firstShowing(m_imageSize.height(), offset.y()));
    return QRect(first, end - QPoint(1, 1)) & devicePixels({QPointF(0, 0), QSizeF(m_viewSize)});
}

QRect SurfaceGeometry::pixelsIn(const QRectF& area) const
{
    const QRect shown = devicePixels(area) & sampledRect();
    if (shown.isEmpty())
        return {};
    return {QPoint(sampledColumn(shown.left()), sampledRow(shown.top())),
            QPoint(sampledColumn(shown.right()), sampledRow(shown.bottom()))};
}

QRect SurfaceGeometry::cellOf(const QPoint& pixel) const
{
    const QPointF offset = scaledOffset();
    const QPoint first(firstShowing(pixel.x(), offset.x()), firstShowing(pixel.y(), offset.y()));
    const QPoint end(firstShowing(pixel.x() + 1, offset.x()), firstShowing(pixel.y() + 1, offset.y()));
    return {first, end - QPoint(1, 1)};
}

void SurfaceGeometry::setImageSize(const QSize& size)
{
    // Without an image there was nothing in the centre that could be kept.
    if (!hasImage())
        m_keptCentre = imagePoint(viewCentre());
    m_imageSize = size;
}

bool SurfaceGeometry::storeOffset(QPointF offset)
{
    constexpr double unlimited = std::numeric_limits<double>::max();
    const QSizeF room = scaledSize() - QSizeF(m_viewSize);
    offset.setX(clampedOffset(offset.x(), hasImage() ? std::max(room.width(), 0.0) : unlimited));
    offset.setY(clampedOffset(offset.y(), hasImage() ? std::max(room.height(), 0.0) : unlimited));
    if (std::abs(offset.x() - m_offset.x()) <= offsetTolerance &&
        std::abs(offset.y() - m_offset.y()) <= offsetTolerance)
        return false;
    m_offset = offset;
    return true;
}

bool SurfaceGeometry::setOffset(QPointF offset)
{
    if (std::isnan(offset.x()))
        offset.setX(m_offset.x());
    if (std::isnan(offset.y()))
        offset.setY(m_offset.y());
    const bool isChanged = storeOffset(offset);
    m_keptCentre = imagePoint(viewCentre());
    return isChanged;
}

bool SurfaceGeometry::setScaling(double scaling)
{
    if (std::isnan(scaling))
        return false;
    const double before = m_scaling;
    m_scaling = clampedScaling(scaling);
    m_scaleToFit = false;
    return setOffset(m_offset / before * m_scaling);
}

bool SurfaceGeometry::fit()
{
    if (!m_scaleToFit || !hasImage())
        return false;
    const QSizeF view(m_viewSize);
    const QSizeF image(m_imageSize);
    double fitting = 1.0;
    if (!m_viewSize.isEmpty()) {
        fitting = image.width() / image.height() > view.width() / view.height() ? view.width() / image.width()
                                                                                : view.height() / image.height();
    }
    m_scaling = std::max(std::min(fitting, 1.0), scalingMin());
    return setOffset(m_offset);
}

QRectF stretched(const QRectF& part, const QRectF& from, const QRectF& to)
{
    const double scaleX = to.width() / from.width();
    const double scaleY = to.height() / from.height();
    return {to.x() + (part.x() - from.x()) * scaleX, to.y() + (part.y() - from.y()) * scaleY, part.width() * scaleX,
            part.height() * scaleY};
}

} // namespace Vistrel
