// SPDX-License-Identifier: MIT
// How the main window has its images shown: palettes, mosaics, channel order, crosshair.
#include "window/controllers/Palettes.h"

#include "base/Log.h"
#include "ui_WindowQt.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceStream.h>

#include <QtGui/QPainter>
#include <QtWidgets/QActionGroup>
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

Palettes::Palettes(const Ui::WindowQt& form, SurfaceStream* stream, Surface* surface)
    : m_form(form), m_stream(stream), m_surface(surface), m_button(new QToolButton(form.statusBar))
{
    m_button->setMenu(form.menuColor_Palette);
    m_button->setPopupMode(QToolButton::InstantPopup);
    m_button->setAutoRaise(true);
    m_button->setFocusPolicy(Qt::NoFocus);
    m_button->setAccessibleName(tr("Color Palette"));
    form.statusBar->addPermanentWidget(m_button);
    for (QMenu* const menu : {form.menuColor_Palette, form.menuBayer_Filter}) {
        auto* const group = new QActionGroup(menu);
        for (QAction* const action : menu->actions())
            group->addAction(action);
    }
}

QVector<unsigned int> Palettes::colorsOf(ColorTable table) const
{
    const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
    return makeColorTable(table, m_rainbow, static_cast<std::uint32_t>(ticks));
}

QAction* Palettes::actionOf(ColorTable table) const
{
    QAction* const actions[colorTableCount] = {
        m_form.actionColor_Palette_Gray,   m_form.actionColor_Palette_Gray_2x,  m_form.actionColor_Palette_Gray_Inverse,
        m_form.actionColor_Palette_Sine,   m_form.actionColor_Palette_Cosine,   m_form.actionColor_Palette_Rainbow,
        m_form.actionColor_Palette_Random, m_form.actionColor_Palette_Contours,
    };
    return actions[static_cast<int>(table)];
}

void Palettes::setColorTable(ColorTable table)
{
    const int index = static_cast<int>(table);
    if (index < 0 || index >= colorTableCount) {
        reportLine("Vistrel::WindowQt::setColorTable: Unknown ColorTable with index " + std::to_string(index) + ".");
        return;
    }
    m_colorTable = table;
    showColors();
    QAction* const action = actionOf(table);
    action->setChecked(true);
    m_button->setText(tr("Palette: %1").arg(withoutMnemonic(action->text())));
    Q_EMIT colorTableChosen(table);
}

void Palettes::setRainbow(const RainbowParameters& rainbow)
{
    m_rainbow = rainbow;
    if (m_colorTable == ColorTable::Rainbow)
        showColors();
    else
        showRamp(ColorTable::Rainbow);
}

void Palettes::setEnabled(bool isEnabled)
{
    m_form.menuColor_Palette->setEnabled(isEnabled);
    m_button->setEnabled(isEnabled);
    m_form.rainbowRulesContentsWidget->setEnabled(isEnabled);
}

void Palettes::showColors()
{
    m_stream->setColorPalette(colorsOf(m_colorTable));
    showRamp(m_colorTable);
}

// The palette in use keeps its very colours, which for Random nobody can make again.
void Palettes::showRamp(ColorTable table)
{
    const QVector<unsigned int> colors = table == m_colorTable ? m_stream->colorPalette() : colorsOf(table);
    actionOf(table)->setIcon(rampOf(colors, m_button->window()->palette().color(QPalette::Mid)));
}

void Palettes::showRamps()
{
    for (int table = 0; table < colorTableCount; ++table)
        showRamp(static_cast<ColorTable>(table));
}

// Mosaics and channels ------------------------------------------------------------------------------------------------

void Palettes::setBayerFilter(Format filter, QAction* action)
{
    m_stream->setBayerDemosaicFilter(filter);
    action->setChecked(true);
}

void Palettes::setBayerEnabled(bool enabled)
{
    m_stream->setBayerDemosaicEnabled(enabled);
    m_form.actionDecode_Bayer_Images->setChecked(enabled);
}

void Palettes::setRgbOrderReversed(bool reversed)
{
    m_stream->setRgbOrderReversed(reversed);
    m_form.actionReverse_RGB_Order->setChecked(reversed);
}

void Palettes::setCrosshairVisible(bool visible)
{
    m_surface->setCrosshairVisible(visible);
    m_form.actionPixel_Crosshair_Visible->setChecked(visible);
}

void Palettes::setBitmapLocked(bool isLocked)
{
    // What is locked shows what the host draws: the frame's own pixels are not to be interpreted.
    m_form.menuBayer_Filter->setEnabled(!isLocked);
    m_form.actionDecode_Bayer_Images->setEnabled(!isLocked);
}

} // namespace Vistrel
