// SPDX-License-Identifier: MIT
// How the main window has its images shown: palettes, mosaics, channel order, crosshair.
#include "window/WindowQt_p.h"

#include "pipeline/pixels/ColorTables.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include <QtGui/QPainter>
#include <QtWidgets/QToolButton>

#include <chrono>
#include <string>

namespace Vistrel {

namespace {

constexpr int colorTableCount = 8;

QString withoutMnemonic(const QString& text)
{
    QString plain = text;
    return plain.remove(QLatin1Char('&'));
}

// The colours from the darkest level to the brightest, in a thin frame.
QIcon rampOf(const QVector<unsigned int>& colors, const QColor& ink)
{
    constexpr int side = 16;
    constexpr int scale = 4; // sharp on every screen
    QImage ramp(side * scale, side * scale, QImage::Format_ARGB32);
    ramp.fill(Qt::transparent);
    QPainter painter(&ramp);
    const QRect frame = ramp.rect().adjusted(0, 2 * scale, 0, -2 * scale);
    painter.fillRect(frame, ink);
    const QRect inner = frame.adjusted(scale, scale, -scale, -scale);
    for (int x = 0; x < inner.width(); ++x)
        painter.fillRect(inner.x() + x, inner.y(), 1, inner.height(), QColor(colors[x * 255 / (inner.width() - 1)]));
    painter.end();
    QPixmap pixmap = QPixmap::fromImage(ramp);
    pixmap.setDevicePixelRatio(scale);
    return QIcon(pixmap);
}

} // namespace

QVector<unsigned int> WindowQt::PrivateData::colorsOf(ColorTable table) const
{
    const RainbowParameters rainbow{form.rainbow_periodSpinBox->value(),    form.rainbow_rPhaseSpinBox->value(),
                                    form.rainbow_gPhaseSpinBox->value(),    form.rainbow_bPhaseSpinBox->value(),
                                    form.rainbow_amplitudeSpinBox->value(), form.rainbow_centerSpinBox->value()};
    const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
    return makeColorTable(table, rainbow, static_cast<std::uint32_t>(ticks));
}

QAction* WindowQt::PrivateData::paletteAction(ColorTable table) const
{
    QAction* const actions[colorTableCount] = {
        form.actionColor_Palette_Gray,   form.actionColor_Palette_Gray_2x,  form.actionColor_Palette_Gray_Inverse,
        form.actionColor_Palette_Sine,   form.actionColor_Palette_Cosine,   form.actionColor_Palette_Rainbow,
        form.actionColor_Palette_Random, form.actionColor_Palette_Contours,
    };
    return actions[static_cast<int>(table)];
}

void WindowQt::PrivateData::chooseColorTable(ColorTable table)
{
    colorTable = table;
    showColors();
    QAction* const action = paletteAction(table);
    action->setChecked(true);
    paletteButton->setText(tr("Palette: %1").arg(withoutMnemonic(action->text())));
    isRainbowDockWanted = table == ColorTable::Rainbow;
    showRainbowDock();
}

void WindowQt::PrivateData::showColors()
{
    stream.setColorPalette(colorsOf(colorTable));
    showRamp(colorTable);
}

// The palette in use keeps its very colours, which for Random nobody can make again.
void WindowQt::PrivateData::showRamp(ColorTable table)
{
    const QVector<unsigned int> colors = table == colorTable ? stream.colorPalette() : colorsOf(table);
    paletteAction(table)->setIcon(rampOf(colors, window->palette().color(QPalette::Mid)));
}

void WindowQt::PrivateData::showRamps()
{
    for (int table = 0; table < colorTableCount; ++table)
        showRamp(static_cast<ColorTable>(table));
}

void WindowQt::PrivateData::updateRainbow()
{
    if (colorTable == ColorTable::Rainbow)
        showColors();
    else
        showRamp(ColorTable::Rainbow);
}

ColorTable WindowQt::colorTable() const
{
    return m_data->colorTable;
}

void WindowQt::setColorTable(ColorTable table)
{
    const int index = static_cast<int>(table);
    if (index >= 0 && index < colorTableCount)
        m_data->chooseColorTable(table);
    else
        reportLine("Vistrel::WindowQt::setColorTable: Unknown ColorTable with index " + std::to_string(index) + ".");
}

void WindowQt::setColorTableGray()
{
    setColorTable(ColorTable::Gray);
}

void WindowQt::setColorTableGray2x()
{
    setColorTable(ColorTable::Gray2x);
}

void WindowQt::setColorTableGrayInverse()
{
    setColorTable(ColorTable::GrayInverse);
}

void WindowQt::setColorTableSine()
{
    setColorTable(ColorTable::Sine);
}

void WindowQt::setColorTableCosine()
{
    setColorTable(ColorTable::Cosine);
}

void WindowQt::setColorTableRainbow()
{
    setColorTable(ColorTable::Rainbow);
}

void WindowQt::setColorTableRandom()
{
    setColorTable(ColorTable::Random);
}

void WindowQt::setColorTableContours()
{
    setColorTable(ColorTable::Contours);
}

// Mosaics and channels ------------------------------------------------------------------------------------------------

void WindowQt::PrivateData::setBayerFilter(Format filter, QAction* action)
{
    stream.setBayerDemosaicFilter(filter);
    action->setChecked(true);
}

bool WindowQt::bayerDemosaicEnabled() const
{
    return m_data->stream.bayerDemosaicEnabled();
}

Format WindowQt::bayerDemosaicFilter() const
{
    return m_data->stream.bayerDemosaicFilter();
}

void WindowQt::setBayerDemosaicEnabled(bool enabled)
{
    m_data->stream.setBayerDemosaicEnabled(enabled);
    m_data->form.actionDecode_Bayer_Images->setChecked(enabled);
}

void WindowQt::setBayerDemosaicFilterAuto()
{
    m_data->setBayerFilter(Format(0), m_data->form.actionBayer_Filter_Auto);
}

void WindowQt::setBayerDemosaicFilterRGGB()
{
    m_data->setBayerFilter(BayerRG, m_data->form.actionBayerRG_Filter);
}

void WindowQt::setBayerDemosaicFilterGRBG()
{
    m_data->setBayerFilter(BayerGR, m_data->form.actionBayerGR_Filter);
}

void WindowQt::setBayerDemosaicFilterGBRG()
{
    m_data->setBayerFilter(BayerGB, m_data->form.actionBayerGB_Filter);
}

void WindowQt::setBayerDemosaicFilterBGGR()
{
    m_data->setBayerFilter(BayerBG, m_data->form.actionBayerBG_Filter);
}

bool WindowQt::rgbOrderReversed() const
{
    return m_data->stream.rgbOrderReversed();
}

void WindowQt::setRgbOrderReversed(bool reversed)
{
    m_data->stream.setRgbOrderReversed(reversed);
    m_data->form.actionReverse_RGB_Order->setChecked(reversed);
}

bool WindowQt::pixelCrosshairVisible() const
{
    return m_data->scrollArea->surface()->crosshairVisible();
}

void WindowQt::setPixelCrosshairVisible(bool visible)
{
    m_data->scrollArea->surface()->setCrosshairVisible(visible);
    m_data->form.actionPixel_Crosshair_Visible->setChecked(visible);
}

} // namespace Vistrel
