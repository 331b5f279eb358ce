// SPDX-License-Identifier: MIT
// How the main window shows its images: palettes, mosaics, channel order, crosshair.
#pragma once

#include "pipeline/pixels/ColorTables.h"

#include <Vistrel/Format.h>

#include <QtCore/QObject>
#include <QtCore/QVector>

class QAction;
class QToolButton;

namespace Vistrel {

class SurfaceStream;
struct Form;

/// Keeps the stream's settings and the entries of the menus in step. The palette button in the status bar opens the
/// menu of palettes, whose entries show their colours.
class Palettes : public QObject
{
    Q_OBJECT

public:
    /// Both outlive this object. No palette is chosen yet.
    Palettes(const Form& form, SurfaceStream* stream);

    ColorTable colorTable() const { return m_colorTable; }
    void setColorTable(ColorTable table); ///< an unknown one is reported and changes nothing
    void setRainbow(const RainbowParameters& rainbow);
    void setEnabled(bool isEnabled); ///< whether the image in view takes a palette
    void showRamps();                ///< in the colours of the window

    void setBayerFilter(Format filter); ///< 0 or one of the four mosaics
    void setBayerEnabled(bool enabled);
    void setRgbOrderReversed(bool reversed);
    void setCrosshairVisible(bool visible);

public Q_SLOTS:
    void updateBitmapLockedStates(bool bitmapLocked);

Q_SIGNALS:
    void colorTableChosen(Vistrel::ColorTable table);

private:
    QVector<unsigned int> colorsOf(ColorTable table) const;
    QAction* actionOf(ColorTable table) const;
    void showColors();
    void showRamp(ColorTable table, const QVector<unsigned int>& colors);

    const Form& m_form;
    SurfaceStream* const m_stream;
    QToolButton* const m_button;
    RainbowParameters m_rainbow;
    ColorTable m_colorTable = ColorTable::Gray;
};

} // namespace Vistrel
