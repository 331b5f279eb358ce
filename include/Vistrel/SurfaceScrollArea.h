// SPDX-License-Identifier: MIT
// A surface with scroll bars, zoomed and moved by mouse and keys.
#pragma once

#include <Vistrel/Export.h>

#include <QtCore/QPoint>
#include <QtCore/QPointF>
#include <QtWidgets/QWidget>

#include <memory>

class QScrollBar;

namespace Vistrel {

class Navigator;
class Surface;

/// Shows a `Surface` with two scroll bars, each shown while the image is larger than the view, and an optional widget
/// in the corner between them. The wheel zooms about the pointer, and a pinch about the fingers. The left button drags
/// the image. The middle button draws a rectangle, which then fills the view; Esc or another button cancels it. The
/// arrow keys step by an image pixel, and by a page with Ctrl. A double click switches between the whole image and
/// 100 % at the pointer. Backspace goes back to the view before the last jump. The pixel under the pointer is the
/// surface's active pixel.
///
/// A turn of the wheel by a notch or more (120 units) is one step, and so is a smaller one that stands alone. Smaller
/// ones that follow each other within 200 ms are a step for each notch that they add up to. When the area is resized,
/// the image point in its centre stays there as far as the image fills the view; also when it was moved meanwhile only
/// because the image did not.
///
/// Bound to the user-interface thread. Points are in the surface's coordinates, offsets in scaled pixels.
class VISTREL_EXPORT SurfaceScrollArea : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(double zoomScaling READ zoomScaling)
    Q_PROPERTY(bool zoomToFit READ zoomToFit WRITE setZoomToFit)
    Q_PROPERTY(QPoint imageOffset READ imageOffset)
    Q_PROPERTY(bool hBarScrollable READ hBarScrollable)
    Q_PROPERTY(bool vBarScrollable READ vBarScrollable)
    Q_PROPERTY(bool canGoBack READ canGoBack)

public:
    explicit SurfaceScrollArea(QWidget* parent = nullptr);
    ~SurfaceScrollArea() override;

    // Owned by the area; must not be deleted.
    Surface* surface();
    const Surface* surface() const;
    QScrollBar* horizontalScrollBar();
    const QScrollBar* horizontalScrollBar() const;
    QScrollBar* verticalScrollBar();
    const QScrollBar* verticalScrollBar() const;

    QWidget* cornerWidget(); ///< null when there is none or the host has deleted it
    const QWidget* cornerWidget() const;
    /// Takes ownership of the widget, which may be null, and deletes the previous one. It is a square, shown while
    /// either bar is.
    void setCornerWidget(QWidget* const widget);

    double zoomScaling() const; ///< screen pixels an image pixel
    bool zoomToFit() const;
    QPoint imageOffset() const; ///< the values of the two bars
    bool hBarScrollable() const;
    bool vBarScrollable() const;
    bool canGoBack() const;               ///< whether there was a jump
    VISTREL_LOCAL Navigator& navigator(); ///< for the library's own widgets

public Q_SLOTS:
    /// Zooms so that the image point under `centerRef` stays there; a point outside the view means its centre. Without
    /// an image, or for what is not a number, nothing happens. A change of less than `Surface::scalingMin()`, and of
    /// less than a tenth of the scaling, keeps the top-left corner.
    void setZoomTo(double scale, const QPoint& centerRef);
    void doZoomIn(const QPoint& centerRef = QPoint(-1, -1));  ///< by the factor `Surface::scalingRatio()`
    void doZoomOut(const QPoint& centerRef = QPoint(-1, -1)); ///< by the same factor
    void doZoomTo25();
    void doZoomTo50();
    void doZoomTo100();
    void doZoomTo200();
    void doZoomTo400();
    void doZoomTo800();
    /// Zooms to the smallest scale at which pixel values are shown, in cells of a whole number of device pixels, or to
    /// the largest scale when they need a larger one. `centerRef` as in `setZoomTo`. Nothing happens without values to
    /// show: without an image, and with `PixelValues::Off`.
    void doZoomToPixelValues(const QPoint& centerRef = QPoint(-1, -1));
    void setZoomToFit(bool enabled);
    /// Shows again what was in view, and how large, before the last jump: a change of the zoom or of fitting by these
    /// slots, a double click, a rectangle, a press in a mini map. Steps in and out, also by the wheel, that follow each
    /// other within a second are one jump; drags and scrolls are none. The last 100 jumps are kept. Without one, or
    /// without an image, nothing happens.
    void goBack();

    void stepLeft();
    void stepRight();
    void stepUp();
    void stepDown();
    void pageLeft();
    void pageRight();
    void pageUp();
    void pageDown();
    /// Clamped to the image. A coordinate that is not a number is ignored.
    void setImageOffset(const QPointF& offset);

Q_SIGNALS:
    /// One of the bars was shown or hidden.
    void scrollabilityChanged(bool horizontal, bool vertical);

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
