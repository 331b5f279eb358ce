// SPDX-License-Identifier: MIT
// Where an image lies in a view: zoom, offset, fitting.
#pragma once

#include <QtCore/QPointF>
#include <QtCore/QRect>
#include <QtCore/QRectF>
#include <QtCore/QSize>
#include <QtCore/QSizeF>

namespace Vistrel {

/// A plain value without any widget in it. Sizes and offsets are logical pixels; the image's size is in image pixels,
/// and empty when there is none.
class SurfaceGeometry
{
public:
    static double scalingMin();
    static double scalingMax();
    static double scalingRatio() { return 1.125; }
    static double enforceScalingRatio(double scaling);
    /// Whether two scalings are told apart.
    static bool differ(double scaling, double other);

    QSize imageSize() const { return m_imageSize; }
    QSize viewSize() const { return m_viewSize; }
    double scaling() const { return m_scaling; }
    QPointF storedOffset() const { return m_offset; }
    bool scaleToFit() const { return m_scaleToFit; }

    void setImageSize(const QSize& size) { m_imageSize = size; }
    void setViewSize(const QSize& size) { m_viewSize = size; }
    void setScaleToFit(bool enabled) { m_scaleToFit = enabled; }

    QSizeF scaledSize() const;
    QPointF scaledOffset() const; ///< the stored offset, or what centres an axis along which the image is smaller
    QRectF scaledRect() const;    ///< of the whole image, in view coordinates
    QRectF visibleImageRectF() const;
    QRect visibleImageRect() const;

    /// Stores an offset, clamped so that no room is left beside a larger image. Whether it moved.
    bool setOffset(QPointF offset);
    /// Sets the scaling, clamped; the image point in the view's top-left corner stays. Fitting goes off. Whether the
    /// offset moved.
    bool setScaling(double scaling);
    /// Shrinks the scaling so that the whole image is in view, if fitting is on. Whether the offset moved.
    bool fit();

private:
    bool hasImage() const { return !m_imageSize.isEmpty(); }

    QSize m_imageSize;
    QSize m_viewSize;
    double m_scaling = 1.0;
    QPointF m_offset; // scaled pixels, from the image's top-left corner
    bool m_scaleToFit = true;
};

} // namespace Vistrel
