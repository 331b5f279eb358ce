// SPDX-License-Identifier: MIT
// Sets the zoom of a picture by slider, number and presets.
#pragma once

#include <QtCore/QPointer>
#include <QtWidgets/QWidget>

class QAbstractButton;
class QDoubleSpinBox;
class QSlider;

namespace Vistrel {

class SurfaceScrollArea;

/// Shows the zoom of an area while it changes, and changes it about the view's centre. Without an image, or once the
/// area is gone, what is entered falls back to what is. A number takes effect when it is complete, not digit by digit.
class ZoomEditor : public QWidget
{
    Q_OBJECT

public:
    explicit ZoomEditor(SurfaceScrollArea* area, QWidget* parent = nullptr);
    ~ZoomEditor() override;

public Q_SLOTS:
    void updateView(); ///< shows what the area's zoom is now

protected:
    void showEvent(QShowEvent* event) override;

private:
    void zoomTo(double scaling);
    void setFit(bool isFit);

    const QPointer<SurfaceScrollArea> m_area;
    QSlider* m_slider = nullptr; // in zoom levels: powers of the scaling ratio
    QDoubleSpinBox* m_percent = nullptr;
    QAbstractButton* m_fit = nullptr;
};

} // namespace Vistrel
