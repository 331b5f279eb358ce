// SPDX-License-Identifier: MIT
// Sets what the rainbow palette is computed from.
#pragma once

#include <Vistrel/ColorTable.h>

#include <QtCore/QObject>

namespace Vistrel {

class Palettes;
struct Form;
struct PanelContext;

/// Shows the form's dock from the choice of the rainbow on, while the bars are in view.
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

    const Form& m_form;
    Palettes* const m_palettes;
    bool m_isWanted = false;
    bool m_isImageAlone = false;
};

} // namespace Vistrel
