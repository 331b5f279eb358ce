// SPDX-License-Identifier: MIT
// Every mapping between an image and the view that shows it: zoom, offset, fitting, the pixel under the pointer.
#pragma once

#include <QtCore/QPointF>
#include <QtCore/QRect>
#include <QtCore/QRectF>
#include <QtCore/QSize>
#include <QtCore/QSizeF>

namespace Vistrel {

/// A value class that uses no widget. The view's size, points and offsets are in logical pixels; the image's size is in
/// image pixels, and empty without an image.
///
/// Device pixels are those of the screen, or of what is painted on. They are counted from the view's first one, whose
/// corner is taken for the view's: a view may begin at a fraction of a device pixel, which then shifts the image by
/// less than one. A device pixel shows the image pixel that contains its upper left corner.
class SurfaceGeometry
{
public:
    static double scalingMin();
    static double scalingMax();
    static double scalingRatio() { return 1.125; }
    static int levelOf(double scaling); ///< the nearest zoom level, -40 to 40; 0 is full size
    static double scalingOf(int level);
    static double enforceScalingRatio(double scaling) { return scalingOf(levelOf(scaling)); }
    /// Whether two scalings count as different.
    static bool differ(double scaling, double other);
    /// Whether they differ enough for a zoom to keep a point in its place: by more than the smallest scaling, or than a
    /// tenth of the one before.
    static bool isZoom(double before, double after);

    QSize imageSize() const { return m_imageSize; }
    QSize viewSize() const { return m_viewSize; }
    double scaling() const { return m_scaling; }
    QPointF storedOffset() const { return m_offset; }
    bool scaleToFit() const { return m_scaleToFit; }

    void setImageSize(const QSize& size);
    void setViewSize(const QSize& size) { m_viewSize = size; }
    void setScaleToFit(bool enabled) { m_scaleToFit = enabled; }

    QSizeF scaledSize() const;
    QPointF scaledOffset() const; ///< the stored offset; centres the image along an axis on which it is smaller
    QRectF scaledRect() const;    ///< of the whole image, in view coordinates
    QRectF shownRect() const;     ///< the visible part of `scaledRect()`

    // In image coordinates.
    QRectF visibleImageRectF() const; ///< the part of the image that `shownRect()` shows
    QRect visibleImageRect() const;   ///< its pixels, with a margin of rounding

    // Between the two.
    QPointF viewPoint(const QPointF& imagePoint) const { return imagePoint * m_scaling - scaledOffset(); }
    QPointF imagePoint(const QPointF& viewPoint) const { return (viewPoint + scaledOffset()) / m_scaling; }
    /// The image pixel that the device pixel under a point of the view shows. It may lie outside the image; (-1, -1)
    /// for a point left of or above the view, and without an image.
    QPoint pixelAt(const QPointF& position) const;

    // Device pixels.
    /// Sets the number of device pixels a logical pixel, and where the view's corner lies in the device: in device
    /// pixels, not always whole ones.
    void setGrid(double ratio, const QPointF& corner);
    double deviceRatio() const { return m_ratio; }
    double deviceScaling() const { return m_scaling * m_ratio; } ///< device pixels an image pixel
    QPoint firstDevicePixel() const { return m_firstPixel; }     ///< of the view, in the device
    QRect devicePixels(const QRectF& area) const;                ///< all that a part of the view touches
    /// The part of the view, in whole logical pixels, that lies in a rectangle of device pixels.
    QRect viewPart(const QRect& devicePixels) const;
    QRect sampledRect() const;      ///< those in the view that show the image
    int sampledColumn(int x) const; ///< the image column in the device column `x`; not clamped
    int sampledRow(int y) const;
    QRect pixelsIn(const QRectF& area) const; ///< the image pixels that are shown in a part of the view
    /// The device pixels that show an image pixel. When none does, the rectangle is empty and lies where it would be.
    QRect cellOf(const QPoint& pixel) const;

    QPointF viewCentre() const { return {m_viewSize.width() * 0.5, m_viewSize.height() * 0.5}; }
    /// The image point that a move, a zoom or a fit left in the view's centre. Neither a resize nor another image
    /// changes it, though they may move what is in the centre.
    QPointF keptCentre() const { return m_keptCentre; }
    /// For `setOffset`: places an image point at a point of the view.
    QPointF offsetPlacing(const QPointF& imagePoint, const QPointF& position) const
    {
        return imagePoint * m_scaling - position;
    }

    // The operations return whether the stored offset changed.
    /// Stores an offset, clamped so that a larger image fills the view. A coordinate that is not a number is ignored.
    bool setOffset(QPointF offset);
    /// After the view's or the image's size changed, places `keptCentre()` in the view's centre, as far as the image
    /// fills the view.
    bool keepCentre() { return storeOffset(offsetPlacing(m_keptCentre, viewCentre())); }
    /// Sets the scaling, clamped, and turns fitting off; the image point in the view's top-left corner stays. What is
    /// not a number is ignored.
    bool setScaling(double scaling);
    /// If fitting is on, shrinks the scaling so that the whole image is in view.
    bool fit();

private:
    bool hasImage() const { return !m_imageSize.isEmpty(); }
    int sampledAt(int devicePixel, double offset) const;
    int firstShowing(int pixel, double offset) const;
    bool storeOffset(QPointF offset);

    QSize m_imageSize;
    QSize m_viewSize;
    double m_scaling = 1.0;
    QPointF m_offset;     // scaled pixels, from the image's top-left corner
    QPointF m_keptCentre; // image pixels
    bool m_scaleToFit = true;

    double m_ratio = 1.0;
    QPointF m_corner;
    QPoint m_firstPixel;
};

/// Maps a part of the rectangle `from` to `to`.
QRectF stretched(const QRectF& part, const QRectF& from, const QRectF& to);

} // namespace Vistrel
