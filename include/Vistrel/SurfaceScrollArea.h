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

class Surface;

/// Shows a `Surface` with two scroll bars, each shown while the image is larger than the view, and an optional widget
/// in the corner between them. The wheel zooms about the pointer. The left button drags the image. The arrow keys step
/// by an image pixel, and by a page with Ctrl. A double click switches between the whole image and 100 % at the
/// pointer. The pixel under the pointer is the surface's active pixel.
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

public Q_SLOTS:
    /// Zooms so that the image point under `centerRef` stays there; a point outside the view means its centre. Without
    /// an image nothing happens. A change of less than `Surface::scalingMin()` keeps the top-left corner.
    void setZoomTo(double scale, const QPoint& centerRef);
    void doZoomIn(const QPoint& centerRef = QPoint(-1, -1));  ///< by the factor `Surface::scalingRatio()`
    void doZoomOut(const QPoint& centerRef = QPoint(-1, -1)); ///< by the same factor
    void doZoomTo25();
    void doZoomTo50();
    void doZoomTo100();
    void doZoomTo200();
    void doZoomTo400();
    void doZoomTo800();
    void setZoomToFit(bool enabled);

    void stepLeft();
    void stepRight();
    void stepUp();
    void stepDown();
    void pageLeft();
    void pageRight();
    void pageUp();
    void pageDown();
    void setImageOffset(const QPointF& offset); ///< clamped to the image

Q_SIGNALS:
    /// One of the bars was shown or hidden.
    void scrollabilityChanged(bool horizontal, bool vertical);

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
