// SPDX-License-Identifier: MIT
// Every mapping between an image and the view that shows it: zoom, offset, fitting, the pixel under the pointer.
#pragma once

#include <QtCore/QPointF>
#include <QtCore/QRect>
#include <QtCore/QRectF>
#include <QtCore/QSize>
#include <QtCore/QSizeF>

namespace Vistrel {

/// A plain value without any widget in it. The view's size, points and offsets are logical pixels; the image's size is
/// in image pixels, and empty when there is none.
class SurfaceGeometry
{
public:
    static double scalingMin();
    static double scalingMax();
    static double scalingRatio() { return 1.125; }
    static int levelOf(double scaling); ///< the nearest zoom level, -40 to 40; 0 is full size
    static double scalingOf(int level);
    static double enforceScalingRatio(double scaling) { return scalingOf(levelOf(scaling)); }
    /// Whether two scalings are told apart.
    static bool differ(double scaling, double other);
    /// Whether they differ by enough for a point to be kept in its place.
    static bool isZoom(double before, double after);

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
    QRectF shownRect() const;     ///< the part of `scaledRect()` that is in view
    bool isFullSize() const;      ///< whether an image pixel is as large as a pixel of the view

    // In image coordinates.
    QRectF visibleImageRectF() const; ///< the part of the image that `shownRect()` shows
    QRect visibleImageRect() const;   ///< its pixels, with a margin of rounding

    // Between the two.
    QPointF viewPoint(const QPointF& imagePoint) const { return imagePoint * m_scaling - scaledOffset(); }
    /// The image pixel under a point of the view, maybe beside the image; (-1, -1) for a point left of or above the
    /// view.
    QPoint pixelAt(const QPoint& position) const;
    /// The pixels of an image of this size, laid over the one in view, that `area` of the view touches.
    QRect pixelsIn(const QRectF& area, const QSize& imageSize) const;

    // How the image is sampled: a pixel of the view shows the image pixel in which its centre lies, of two the former.
    QRect sampledRect() const; ///< the pixels of the view whose centres lie in the image
    int sampledColumn(int x) const;
    int sampledRow(int y) const;

    // Offsets to be set.
    /// Keeps the image point under `reference`, or in the view's centre for a point outside the view, at another zoom.
    QPointF offsetZoomed(double scaling, const QPoint& reference) const;
    /// Keeps the image point in the view's centre, after the view grew.
    QPointF offsetGrown(const QSize& growth) const;
    /// Brings a point of the scaled image into the view's centre.
    QPointF offsetCentred(const QPointF& scaledPoint) const;

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

/// Where a part of the rectangle `from` lies when that is stretched over `to`.
QRectF stretched(const QRectF& part, const QRectF& from, const QRectF& to);

} // namespace Vistrel
