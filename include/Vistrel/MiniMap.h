// SPDX-License-Identifier: MIT
// A small view of the whole image, with the visible part framed.
#pragma once

#include <Vistrel/Export.h>

#include <QtWidgets/QWidget>

#include <memory>

namespace Vistrel {

class SurfaceScrollArea;

/// Shows the whole image of a scroll area, scaled to the widget, and frames the part that the area shows. A press or a
/// drag with the left button centres the area's view there; the wheel zooms about the view's centre.
///
/// The image is scaled when the widget is painted, at most 20 times a second, and only if the image or the size has
/// changed. A hidden map does nothing.
///
/// Bound to the user-interface thread.
class VISTREL_EXPORT MiniMap : public QWidget
{
    Q_OBJECT

public:
    explicit MiniMap(QWidget* parent = nullptr);
    ~MiniMap() override;

    /// Null for none. The area may be deleted first. The map follows its moves and zooms; the owner calls
    /// `updateView()` for a new image.
    void setScrollArea(SurfaceScrollArea* area);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public Q_SLOTS:
    void updateView(); ///< the image or the visible part changed

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    class VISTREL_LOCAL PrivateData;
    std::unique_ptr<PrivateData> m_data;
};

} // namespace Vistrel
