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
// A centre on a border belongs to the previous pixel, as in Qt's paint engine, whatever the rounding error.
constexpr double tie = 1e-6;

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

double clampedOffset(double offset, double most)
{
    return offset > 0 ? std::min(offset, most) : 0;
}

int firstCentreFrom(double edge)
{
    return static_cast<int>(std::ceil(edge - 0.5 + tie));
}

int sampledAt(double position, int length)
{
    return std::clamp(static_cast<int>(std::floor(position - tie)), 0, length - 1);
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
    return std::abs(before - after) > scalingMin();
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

bool SurfaceGeometry::isFullSize() const
{
    return qFuzzyCompare(m_scaling, 1.0);
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

QPoint SurfaceGeometry::pixelAt(const QPoint& position) const
{
    if (position.x() < 0 || position.y() < 0)
        return {-1, -1};
    return ((position + scaledOffset()) / m_scaling - QPointF(0.5, 0.5)).toPoint();
}

QRect SurfaceGeometry::pixelsIn(const QRectF& area, const QSize& imageSize) const
{
    const auto range = [this](double from, double length, int size) {
        const double first = std::floor(from / m_scaling);
        const double last = std::min<double>(first + std::ceil(length / m_scaling) + 1, size);
        const double start = std::clamp<double>(first, 0, size);
        return std::pair<int, int>(static_cast<int>(start), static_cast<int>(std::max(last - start, 0.0)));
    };
    const QPointF corner = area.topLeft() + scaledOffset();
    const auto [x, width] = range(corner.x(), area.width(), imageSize.width());
    const auto [y, height] = range(corner.y(), area.height(), imageSize.height());
    return {x, y, width, height};
}

QRect SurfaceGeometry::sampledRect() const
{
    const QRectF shown = shownRect();
    const QPoint first(firstCentreFrom(shown.left()), firstCentreFrom(shown.top()));
    return {first, QPoint(firstCentreFrom(shown.right()) - 1, firstCentreFrom(shown.bottom()) - 1)};
}

int SurfaceGeometry::sampledColumn(int x) const
{
    return sampledAt((x + 0.5 + scaledOffset().x()) / m_scaling, m_imageSize.width());
}

int SurfaceGeometry::sampledRow(int y) const
{
    return sampledAt((y + 0.5 + scaledOffset().y()) / m_scaling, m_imageSize.height());
}

QPointF SurfaceGeometry::offsetZoomed(double scaling, const QPoint& reference) const
{
    const QRectF view(QPointF(0, 0), QSizeF(m_viewSize));
    const QPointF kept = view.contains(reference) ? QPointF(reference) : view.center();
    return (scaledOffset() + kept) * scaling / m_scaling - kept;
}

QPointF SurfaceGeometry::offsetGrown(const QSize& growth) const
{
    return m_offset - QPointF(growth.width(), growth.height()) * 0.5;
}

QPointF SurfaceGeometry::offsetCentred(const QPointF& scaledPoint) const
{
    return scaledPoint - QPointF(m_viewSize.width(), m_viewSize.height()) / 2;
}

bool SurfaceGeometry::setOffset(QPointF offset)
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

bool SurfaceGeometry::setScaling(double scaling)
{
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
