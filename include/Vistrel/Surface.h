// SPDX-License-Identifier: MIT
// The widget that paints the current frame.
#pragma once

#include <Vistrel/Export.h>
#include <Vistrel/PixVal.h>
#include <Vistrel/PixelValues.h>
#include <Vistrel/RawImage.h>
#include <Vistrel/ShrinkMode.h>

#include <QtCore/QPointF>
#include <QtCore/QRectF>
#include <QtGui/QImage>
#include <QtGui/QPixmap>
#include <QtWidgets/QWidget>

#include <memory>

namespace Vistrel {

class AbstractAcquisitionInterface;
class SurfaceGeometry;

/// Paints the visible part of a pixmap, a crosshair on the active pixel and, at a zoom with room for them, the values
/// of the pixels.
///
/// Coordinates are logical pixels. The scaled image's top-left corner lies at -`scaledOffset()` in the widget; the
/// image pixel (x, y) covers the square of side `scaling()` at (x, y) * scaling() - scaledOffset(). An image smaller
/// than the widget along an axis is centred along it.
///
/// Bound to the user-interface thread, except for the getters of the view (`scaling` to `visibleImageRectF`, `pixmap`),
/// `setPixmap`, `setImageSrc`, `clearImageSrc` and `imageSrcPixVal`, which are thread-safe. Signals are emitted without
/// a lock held: a slot may call the surface.
class VISTREL_EXPORT Surface : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(double scalingMin READ scalingMin)
    Q_PROPERTY(double scalingMax READ scalingMax)
    Q_PROPERTY(QSizeF scaledSize READ scaledSize)
    Q_PROPERTY(QRectF scaledRect READ scaledRect)
    Q_PROPERTY(QPointF scaledOffset READ scaledOffset)
    Q_PROPERTY(bool scaleToFit READ scaleToFit)
    Q_PROPERTY(QRect visibleImageRect READ visibleImageRect)
    Q_PROPERTY(QRectF visibleImageRectF READ visibleImageRectF)
    Q_PROPERTY(bool crosshairVisible READ crosshairVisible)
    Q_PROPERTY(QPoint activePixel READ activePixel)
    Q_PROPERTY(bool valueOverlayEnabled READ valueOverlayEnabled)

public:
    using PixPos = Vistrel::PixPos;
    using PixVal = Vistrel::PixVal;

    explicit Surface(QWidget* parent = nullptr);
    ~Surface() override;

    // Zoom levels are the powers of `scalingRatio()` from -40 to 40; fitting and `setScaling` give values in between.
    static double scalingMin();   ///< 1.125 to the -40th power
    static double scalingMax();   ///< 1.125 to the 40th power
    static double scalingRatio(); ///< 1.125
    /// The zoom level nearest to `scaling` on a logarithmic scale.
    static double enforceScalingRatio(double scaling);

    double scaling() const;
    QSizeF scaledSize() const; ///< the whole scaled image
    QRectF scaledRect() const; ///< the whole scaled image in widget coordinates
    QPointF scaledOffset() const;
    bool scaleToFit() const;
    QRect visibleImageRect() const;   ///< image pixels of which any part is visible, with a margin of rounding
    QRectF visibleImageRectF() const; ///< the visible part of the image, in image coordinates
    VISTREL_LOCAL void setHint(const QString& text);    ///< what the view shows while it is empty
    VISTREL_LOCAL SurfaceGeometry viewGeometry() const; ///< a copy; for the library's own widgets
    VISTREL_LOCAL double pixelValuesScaling(); ///< the smallest that shows pixel values; 0 when there are none to show
    bool crosshairVisible() const;
    QPoint activePixel() const;
    PixelValues pixelValues() const;
    bool valueOverlayEnabled() const; ///< whether `pixelValues()` is not `Off`
    ShrinkMode shrinkMode() const;
    QPixmap pixmap() const;

    /// Shows a picture, or nothing for a null one. Zoom and offset are fitted or clamped to the new size.
    void setPixmap(const QPixmap& pixmap);
    /// The same with what the picture shows in colours, indices with a table, to be combined where it is shrunk.
    VISTREL_LOCAL void setPicture(const QPixmap& pixmap, const QImage& indices);

    // Set what pixel values are read from: an image, or a source's frame, read under a lock that the source grants. The
    // source must live until another image source is set or it is cleared. `owner` keeps pixels that the source does
    // not own; it is released, on any thread, when they are no longer read.
    void setImageSrc(const QImage& image);
    void setImageSrc(AbstractAcquisitionInterface* const acquisitionInterface, const RawImage& raw);
    void setImageSrc(AbstractAcquisitionInterface* const acquisitionInterface, const RawImage& raw,
                     std::shared_ptr<const void> owner);
    void clearImageSrc();
    /// Reads one pixel at full depth. Returns false and zeroes `value` without a source, outside the image, or when the
    /// source refuses the lock. Blocks while a push source's frame is being converted.
    bool imageSrcPixVal(const PixPos& position, PixVal& value);

public Q_SLOTS:
    /// Sets the zoom, clamped to the limits, and turns fitting off. The image point in the top-left corner stays there.
    void setScaling(double scaling);
    void setScaledOffset(const QPointF& offset);
    void setScaledOffsetX(int xOffset);
    void setScaledOffsetX(double xOffset);
    void setScaledOffsetY(int yOffset);
    void setScaledOffsetY(double yOffset);
    /// Keeps the whole image in view while it is on: shrinks it to fit, never enlarges it. On at first.
    void setScaleToFit(bool enabled);
    void setCrosshairVisible(bool visible);
    void setActivePixel(const QPoint& pixPoint);
    void setActivePixel(int x, int y);
    /// Sets what is written into the pixels. `WithPosition` at first. An unknown value changes nothing and is reported
    /// on the standard error stream.
    void setPixelValues(Vistrel::PixelValues values);
    void setValueOverlayEnabled(bool enabled); ///< false is `Off`; true is `WithPosition`, unless something is on
    /// Sets how the picture is shrunk while it has more pixels than the screen has for it. `Sample` at first. `Mean`
    /// and `Maximum` work on each channel, or on the indices of a picture with a colour table. An unknown mode changes
    /// nothing and is reported on the standard error stream.
    void setShrinkMode(Vistrel::ShrinkMode mode);

Q_SIGNALS:
    /// The range of visible image pixels changed: by zoom, another image size, or a resize.
    void pixelRangeChanged();
    void pixelOffsetChanged(const QPointF& offset); ///< the stored offset, scaled pixels
    void scalingChanged(bool autoFit, double scaling);
    void pixelValuesChanged();
    void shrinkModeChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
