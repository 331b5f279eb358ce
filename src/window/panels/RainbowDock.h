// SPDX-License-Identifier: MIT
// Sets what the rainbow palette is computed from.
#pragma once

#include <Vistrel/ColorTable.h>

#include <QtCore/QObject>

namespace Ui {
class WindowQt;
} // namespace Ui

namespace Vistrel {

class Palettes;
class SurfaceScrollArea;
struct PanelContext;

/// The form's dock, in view from the moment when the rainbow is chosen, while the bars are.
class RainbowDock : public QObject
{
    Q_OBJECT

public:
    explicit RainbowDock(const PanelContext& context); ///< goes with the palettes

public Q_SLOTS:
    void follow(Vistrel::ColorTable table);
    void setImageAlone(bool isAlone);
    void updateRainbow();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void show();

    const Ui::WindowQt& m_form;
    Palettes* const m_palettes;
    SurfaceScrollArea* const m_scrollArea;
    bool m_isWanted = false;
    bool m_isImageAlone = false;
};

} // namespace Vistrel
