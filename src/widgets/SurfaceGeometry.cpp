// SPDX-License-Identifier: MIT
// Where an image lies in a view: zoom, offset, fitting.
#include "widgets/SurfaceGeometry.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Vistrel {

namespace {

constexpr double offsetTolerance = 1e-12;

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
    // Written so that a value that is not a number ends at the lower limit.
    return scaling > SurfaceGeometry::scalingMin() ? std::min(scaling, SurfaceGeometry::scalingMax())
                                                   : SurfaceGeometry::scalingMin();
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

double SurfaceGeometry::enforceScalingRatio(double scaling)
{
    const double step = std::floor(std::log(clampedScaling(scaling)) / std::log(scalingRatio()) + 0.5);
    return std::pow(scalingRatio(), step);
}

bool SurfaceGeometry::differ(double scaling, double other)
{
    return std::abs(scaling - other) >= std::numeric_limits<double>::epsilon();
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

} // namespace Vistrel
