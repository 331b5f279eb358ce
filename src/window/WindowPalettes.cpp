// SPDX-License-Identifier: MIT
// How the main window has its images shown: palettes, mosaics, channel order, crosshair.
#include "window/WindowQt_p.h"

#include "pipeline/ColorTables.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include <QtGui/QPainter>
#include <QtWidgets/QToolButton>

#include <chrono>
#include <string>

namespace Vistrel {

namespace {

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

void WindowQt::PrivateData::applyColorTable(ColorTable table, QAction* action)
{
    const QVector<unsigned int> colors = colorsOf(table);
    colorTable = table;
    stream->setColorPalette(colors);
    action->setChecked(true);
    action->setIcon(rampOf(colors, window->palette().color(QPalette::Mid)));
    paletteButton->setText(tr("Palette: %1").arg(withoutMnemonic(action->text())));
    form.rainbowRulesDockWidget->setVisible(table == ColorTable::Rainbow);
}

void WindowQt::PrivateData::showRamps()
{
    const std::pair<QAction*, ColorTable> entries[] = {
        {form.actionColor_Palette_Gray, ColorTable::Gray},
        {form.actionColor_Palette_Gray_2x, ColorTable::Gray2x},
        {form.actionColor_Palette_Gray_Inverse, ColorTable::GrayInverse},
        {form.actionColor_Palette_Sine, ColorTable::Sine},
        {form.actionColor_Palette_Cosine, ColorTable::Cosine},
        {form.actionColor_Palette_Rainbow, ColorTable::Rainbow},
        {form.actionColor_Palette_Random, ColorTable::Random},
        {form.actionColor_Palette_Contours, ColorTable::Contours},
    };
    for (const auto& [action, table] : entries)
        action->setIcon(rampOf(colorsOf(table), window->palette().color(QPalette::Mid)));
}

ColorTable WindowQt::colorTable() const
{
    return m_data->colorTable;
}

void WindowQt::setColorTable(ColorTable table)
{
    switch (table) {
    case ColorTable::Gray:
        return setColorTableGray();
    case ColorTable::Gray2x:
        return setColorTableGray2x();
    case ColorTable::GrayInverse:
        return setColorTableGrayInverse();
    case ColorTable::Sine:
        return setColorTableSine();
    case ColorTable::Cosine:
        return setColorTableCosine();
    case ColorTable::Rainbow:
        return setColorTableRainbow();
    case ColorTable::Random:
        return setColorTableRandom();
    case ColorTable::Contours:
        return setColorTableContours();
    }
    reportLine("Vistrel::WindowQt::setColorTable: Unknown ColorTable with index " +
               std::to_string(static_cast<int>(table)) + ".");
}

void WindowQt::setColorTableGray()
{
    m_data->applyColorTable(ColorTable::Gray, m_data->form.actionColor_Palette_Gray);
}

void WindowQt::setColorTableGray2x()
{
    m_data->applyColorTable(ColorTable::Gray2x, m_data->form.actionColor_Palette_Gray_2x);
}

void WindowQt::setColorTableGrayInverse()
{
    m_data->applyColorTable(ColorTable::GrayInverse, m_data->form.actionColor_Palette_Gray_Inverse);
}

void WindowQt::setColorTableSine()
{
    m_data->applyColorTable(ColorTable::Sine, m_data->form.actionColor_Palette_Sine);
}

void WindowQt::setColorTableCosine()
{
    m_data->applyColorTable(ColorTable::Cosine, m_data->form.actionColor_Palette_Cosine);
}

void WindowQt::setColorTableRainbow()
{
    m_data->applyColorTable(ColorTable::Rainbow, m_data->form.actionColor_Palette_Rainbow);
}

void WindowQt::setColorTableRandom()
{
    m_data->applyColorTable(ColorTable::Random, m_data->form.actionColor_Palette_Random);
}

void WindowQt::setColorTableContours()
{
    m_data->applyColorTable(ColorTable::Contours, m_data->form.actionColor_Palette_Contours);
}

// Mosaics and channels ------------------------------------------------------------------------------------------------

void WindowQt::PrivateData::setBayerFilter(Format filter, QAction* action)
{
    stream->setBayerDemosaicFilter(filter);
    action->setChecked(true);
}

bool WindowQt::bayerDemosaicEnabled() const
{
    return m_data->stream->bayerDemosaicEnabled();
}

Format WindowQt::bayerDemosaicFilter() const
{
    return m_data->stream->bayerDemosaicFilter();
}

void WindowQt::setBayerDemosaicEnabled(bool enabled)
{
    m_data->stream->setBayerDemosaicEnabled(enabled);
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
    return m_data->stream->rgbOrderReversed();
}

void WindowQt::setRgbOrderReversed(bool reversed)
{
    m_data->stream->setRgbOrderReversed(reversed);
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
