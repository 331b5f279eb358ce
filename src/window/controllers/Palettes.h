// SPDX-License-Identifier: MIT
// How the main window has its images shown: palettes, mosaics, channel order, crosshair.
#pragma once

#include "pipeline/pixels/ColorTables.h"

#include <Vistrel/Format.h>

#include <QtCore/QObject>
#include <QtCore/QVector>

class QAction;
class QToolButton;

namespace Ui {
class WindowQt;
} // namespace Ui

namespace Vistrel {

class Surface;
class SurfaceStream;

/// Keeps the stream's palette and the entries of the menus in step. The palette button in the status bar opens the
/// menu of palettes, whose entries show their colours.
class Palettes : public QObject
{
    Q_OBJECT

public:
    /// All outlive this object. Nothing is chosen yet.
    Palettes(const Ui::WindowQt& form, SurfaceStream* stream, Surface* surface);

    ColorTable colorTable() const { return m_colorTable; }
    void setColorTable(ColorTable table); ///< an unknown one is reported and changes nothing
    void setRainbow(const RainbowParameters& rainbow);
    void setEnabled(bool isEnabled); ///< whether the image in view takes a palette
    void showRamps();                ///< anew, in the window's own colours

    void setBayerFilter(Format filter, QAction* action);
    void setBayerEnabled(bool enabled);
    void setRgbOrderReversed(bool reversed);
    void setCrosshairVisible(bool visible);
    void setBitmapLocked(bool isLocked);

Q_SIGNALS:
    void colorTableChosen(Vistrel::ColorTable table);

private:
    QVector<unsigned int> colorsOf(ColorTable table) const;
    QAction* actionOf(ColorTable table) const;
    void showColors();
    void showRamp(ColorTable table);

    const Ui::WindowQt& m_form;
    SurfaceStream* const m_stream;
    Surface* const m_surface;
    QToolButton* const m_button;
    RainbowParameters m_rainbow;
    ColorTable m_colorTable = ColorTable::Gray;
};

} // namespace Vistrel
