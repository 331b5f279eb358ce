// SPDX-License-Identifier: MIT
// How the main window shows its images: palettes, mosaics, channel order, crosshair.
#include "window/controllers/Palettes.h"

#include "base/Log.h"
#include "window/Form.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceStream.h>

#include <QtCore/QPointer>
#include <QtGui/QPainter>
#include <QtWidgets/QActionGroup>
#include <QtWidgets/QToolButton>

#include <chrono>
#include <cstddef>
#include <iterator>
#include <string>

namespace Vistrel {

namespace {

// By the values of ColorTable.
constexpr QAction* Ui_WindowQt::*colorActions[] = {
    &Ui_WindowQt::actionColor_Palette_Gray,         &Ui_WindowQt::actionColor_Palette_Gray_2x,
    &Ui_WindowQt::actionColor_Palette_Gray_Inverse, &Ui_WindowQt::actionColor_Palette_Sine,
    &Ui_WindowQt::actionColor_Palette_Cosine,       &Ui_WindowQt::actionColor_Palette_Rainbow,
    &Ui_WindowQt::actionColor_Palette_Random,       &Ui_WindowQt::actionColor_Palette_Contours,
};
constexpr int colorTableCount = static_cast<int>(std::size(colorActions));

// By the bits of the pattern.
constexpr QAction* Ui_WindowQt::*bayerActions[] = {
    &Ui_WindowQt::actionBayer_Filter_Auto, &Ui_WindowQt::actionBayerGB_Filter, &Ui_WindowQt::actionBayerGR_Filter,
    &Ui_WindowQt::actionBayerRG_Filter,    &Ui_WindowQt::actionBayerBG_Filter,
};

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

Palettes::Palettes(const Form& form, SurfaceStream* stream)
    : m_form(form), m_stream(stream), m_button(new QToolButton(form.statusBar))
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
    for (int i = 0; i < colorTableCount; ++i)
        connect(actionOf(ColorTable(i)), &QAction::triggered, this, [=] { setColorTable(ColorTable(i)); });
    for (unsigned i = 0; i < std::size(bayerActions); ++i)
        connect(form.*bayerActions[i], &QAction::triggered, this, [=] { setBayerFilter(Format(i << 8)); });
    connect(stream, SIGNAL(bitmapLockChanged(bool)), this, SLOT(updateBitmapLockedStates(bool)));
}

QVector<unsigned int> Palettes::colorsOf(ColorTable table) const
{
    const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
    return makeColorTable(table, m_rainbow, static_cast<std::uint32_t>(ticks));
}

QAction* Palettes::actionOf(ColorTable table) const
{
    return m_form.*colorActions[static_cast<std::size_t>(table)];
}

void Palettes::setColorTable(ColorTable table)
{
    const int index = static_cast<int>(table);
    if (index < 0 || index >= colorTableCount) {
        reportLine("Vistrel::WindowQt::setColorTable: Unknown ColorTable with index " + std::to_string(index) + ".");
        return;
    }
    m_colorTable = table;
    QAction* const action = actionOf(table);
    action->setChecked(true);
    m_button->setText(tr("Palette: %1").arg(withoutMnemonic(action->text())));
    const QPointer<Palettes> alive(this);
    showColors();
    if (alive)
        Q_EMIT colorTableChosen(table);
}

void Palettes::setRainbow(const RainbowParameters& rainbow)
{
    m_rainbow = rainbow;
    if (m_colorTable == ColorTable::Rainbow)
        showColors();
    else
        showRamp(ColorTable::Rainbow, colorsOf(ColorTable::Rainbow));
}

void Palettes::setEnabled(bool isEnabled)
{
    m_form.menuColor_Palette->setEnabled(isEnabled);
    m_button->setEnabled(isEnabled);
    m_form.rainbowRulesContentsWidget->setEnabled(isEnabled);
}

void Palettes::showColors()
{
    const QVector<unsigned int> colors = colorsOf(m_colorTable);
    showRamp(m_colorTable, colors);
    m_stream->setColorPalette(colors); // the host may delete the window in a slot of the stream
}

void Palettes::showRamp(ColorTable table, const QVector<unsigned int>& colors)
{
    actionOf(table)->setIcon(rampOf(colors, m_button->window()->palette().color(QPalette::Mid)));
}

// The palette in use keeps its colours. Those of Random cannot be computed again.
void Palettes::showRamps()
{
    for (int i = 0; i < colorTableCount; ++i) {
        const auto table = static_cast<ColorTable>(i);
        showRamp(table, table == m_colorTable ? m_stream->colorPalette() : colorsOf(table));
    }
}

// Mosaics and channels ------------------------------------------------------------------------------------------------

void Palettes::setBayerFilter(Format filter)
{
    (m_form.*bayerActions[filter >> 8])->setChecked(true);
    m_stream->setBayerDemosaicFilter(filter);
}

void Palettes::setBayerEnabled(bool enabled)
{
    m_form.actionDecode_Bayer_Images->setChecked(enabled);
    m_stream->setBayerDemosaicEnabled(enabled);
}

void Palettes::setRgbOrderReversed(bool reversed)
{
    m_form.actionReverse_RGB_Order->setChecked(reversed);
    m_stream->setRgbOrderReversed(reversed);
}

void Palettes::setCrosshairVisible(bool visible)
{
    m_form.scrollArea->surface()->setCrosshairVisible(visible);
    m_form.actionPixel_Crosshair_Visible->setChecked(visible);
}

// A locked bitmap shows what the host draws, which is no mosaic.
void Palettes::updateBitmapLockedStates(bool bitmapLocked)
{
    m_form.menuBayer_Filter->setEnabled(!bitmapLocked);
    m_form.actionDecode_Bayer_Images->setEnabled(!bitmapLocked);
}

} // namespace Vistrel
