// SPDX-License-Identifier: MIT
// What the main window tells of its image and source: information bar, its switches, and copies of it as text.
#include "window/WindowQt_p.h"

#include "window/InfoBar.h"

#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QAction>
#include <QtWidgets/QMenu>
#include <QtWidgets/QStatusBar>

namespace Vistrel {

namespace {

using Source = AbstractAcquisitionInterface;

constexpr int messageMs = 2000;

} // namespace

QAction* WindowQt::PrivateData::infoSwitch(InfoItem item) const
{
    QAction* const switches[infoItemCount] = {
        form.actionActive_Setup_Mode, form.actionFrame_Rate,      form.actionBuffers_Queued,
        form.actionBuffers_Filled,    form.actionBuffers_Dropped, form.actionBuffers_Delivered,
        form.actionImageDimensions,   form.actionImage_Format,    form.actionZoom_Level,
        form.actionPixel_Value,
    };
    return switches[static_cast<std::size_t>(item)];
}

void WindowQt::PrivateData::setPreview(InfoItem item, bool enabled)
{
    infoSwitch(item)->setChecked(enabled);
    updateInfoSwitches();
}

void WindowQt::PrivateData::updateInfoSwitches()
{
    for (std::size_t i = 0; i < infoItemCount; ++i) {
        const QAction* const action = infoSwitch(static_cast<InfoItem>(i));
        infoBar->setItemShown(static_cast<InfoItem>(i), action->isChecked() && action->isVisible());
    }
}

// Numbers that nobody could read as fast as they change.
void WindowQt::PrivateData::updateImageStats()
{
    if (!commands.isAskable())
        return;
    const auto statistic = [this](bool (Source::*has)() const, const char* query, auto value) {
        using Value = std::optional<decltype((source.get()->*value)())>;
        return source && (source.get()->*has)()
                   ? hostCall(query, Value(), [&] { return Value((source.get()->*value)()); })
                   : Value();
    };
    infoBar->setFrameRate(statistic(&Source::hasFrameRate, "frameRate", &Source::frameRate));
    infoBar->setQueued(statistic(&Source::hasFramesQueued, "framesQueued", &Source::framesQueued));
    infoBar->setFilled(statistic(&Source::hasFramesFilled, "framesFilled", &Source::framesFilled));
    infoBar->setDropped(statistic(&Source::hasFramesDropped, "framesDropped", &Source::framesDropped));
    infoBar->setDelivered(statistic(&Source::hasFramesDelivered, "framesDelivered", &Source::framesDelivered));
}

void WindowQt::PrivateData::updateImageInfo()
{
    RawImage image;
    stream.latestImage(&image, nullptr);
    infoBar->setImage(image);
    updatePixelValue();
}

void WindowQt::PrivateData::updatePixelValue()
{
    Surface* const surface = scrollArea->surface();
    const QPoint pixel = surface->activePixel();
    PixVal value;
    const bool isInside = QRect({}, surface->pixmap().size()).contains(pixel);
    // The source is asked for its lock only when there is a pixel to read.
    // Within a command's grace, what was read last stays.
    if (isInside && !commands.isAskable() && !commands.isShown())
        return;
    const bool isRead = isInside && surface->imageSrcPixVal({pixel.x(), pixel.y()}, value);
    infoBar->setPixel(isInside ? PixPos{pixel.x(), pixel.y()} : PixPos{-1, -1},
                      isRead ? std::optional<PixVal>(value) : std::nullopt);
}

// Above the information that they are of, also when it lies over the image.
void WindowQt::PrivateData::showInfoSwitches()
{
    showWindowBars();
    QMenu* const menu = makeInfoMenu();
    const QSize size = menu->sizeHint();
    menu->popup(infoBar->mapToGlobal(QPoint(infoBar->width() - size.width(), -size.height())));
}

void WindowQt::PrivateData::showInfoSwitchesAt(const QPoint& position)
{
    makeInfoMenu()->popup(form.statusBar->mapToGlobal(position));
}

QMenu* WindowQt::PrivateData::makeInfoMenu()
{
    auto* const menu = new QMenu(window);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    connectMenu(menu);
    for (std::size_t i = 0; i < infoItemCount; ++i)
        menu->addAction(infoSwitch(static_cast<InfoItem>(i)));
    menu->addSeparator();
    menu->addActions({form.actionKeep_Stats_Visible, form.actionCopy_Image_Stats});
    return menu;
}

// What can be done with the image, and with the pixel that was clicked.
void WindowQt::PrivateData::showSurfaceContextMenu(const QPoint& position)
{
    auto* const menu = new QMenu(window);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    updatePixelValue();
    menu->addActions({form.actionCopy_Pixel_Value, form.actionCopy_Image, form.actionSave_Image});
    menu->addSeparator();
    menu->addActions({form.actionZoom_In, form.actionZoom_Out, form.actionZoom_Fit, form.actionZoom_100});
    menu->addSeparator();
    menu->addMenu(form.menuColor_Palette);
    menu->addAction(form.actionPixel_Crosshair_Visible);
    menu->addSeparator();
    menu->addActions({form.actionExhibit_View, form.actionFull_Screen});
    menu->popup(scrollArea->surface()->mapToGlobal(position));
}

void WindowQt::copyCurrentPixelValue()
{
    const QPoint pixel = m_data->scrollArea->surface()->activePixel();
    PixVal value;
    if (m_data->scrollArea->surface()->imageSrcPixVal({pixel.x(), pixel.y()}, value))
        QGuiApplication::clipboard()->setText(pixelText({pixel.x(), pixel.y()}, value));
    else
        statusBar()->showMessage(tr("No image pixel under the pointer"), messageMs);
}

void WindowQt::copyCurrentImageStats()
{
    m_data->updateImageStats();
    m_data->updateImageInfo();
    QGuiApplication::clipboard()->setText(m_data->infoBar->report());
}

bool WindowQt::previewSetupMode() const
{
    return m_data->infoSwitch(InfoItem::SetupMode)->isChecked();
}

bool WindowQt::previewFrameRate() const
{
    return m_data->infoSwitch(InfoItem::FrameRate)->isChecked();
}

bool WindowQt::previewBuffersQueued() const
{
    return m_data->infoSwitch(InfoItem::Queued)->isChecked();
}

bool WindowQt::previewBuffersFilled() const
{
    return m_data->infoSwitch(InfoItem::Filled)->isChecked();
}

bool WindowQt::previewBuffersDropped() const
{
    return m_data->infoSwitch(InfoItem::Dropped)->isChecked();
}

bool WindowQt::previewBuffersDelivered() const
{
    return m_data->infoSwitch(InfoItem::Delivered)->isChecked();
}

bool WindowQt::previewImageDimensions() const
{
    return m_data->infoSwitch(InfoItem::Dimensions)->isChecked();
}

bool WindowQt::previewImageFormat() const
{
    return m_data->infoSwitch(InfoItem::Format)->isChecked();
}

bool WindowQt::previewZoomLevel() const
{
    return m_data->infoSwitch(InfoItem::Zoom)->isChecked();
}

bool WindowQt::previewPixelValue() const
{
    return m_data->infoSwitch(InfoItem::PixelValue)->isChecked();
}

void WindowQt::setPreviewSetupMode(bool enabled)
{
    m_data->setPreview(InfoItem::SetupMode, enabled);
}

void WindowQt::setPreviewFrameRate(bool enabled)
{
    m_data->setPreview(InfoItem::FrameRate, enabled);
}

void WindowQt::setPreviewBuffersQueued(bool enabled)
{
    m_data->setPreview(InfoItem::Queued, enabled);
}

void WindowQt::setPreviewBuffersFilled(bool enabled)
{
    m_data->setPreview(InfoItem::Filled, enabled);
}

void WindowQt::setPreviewBuffersDropped(bool enabled)
{
    m_data->setPreview(InfoItem::Dropped, enabled);
}

void WindowQt::setPreviewBuffersDelivered(bool enabled)
{
    m_data->setPreview(InfoItem::Delivered, enabled);
}

void WindowQt::setPreviewImageDimensions(bool enabled)
{
    m_data->setPreview(InfoItem::Dimensions, enabled);
}

void WindowQt::setPreviewImageFormat(bool enabled)
{
    m_data->setPreview(InfoItem::Format, enabled);
}

void WindowQt::setPreviewZoomLevel(bool enabled)
{
    m_data->setPreview(InfoItem::Zoom, enabled);
}

void WindowQt::setPreviewPixelValue(bool enabled)
{
    m_data->setPreview(InfoItem::PixelValue, enabled);
}

} // namespace Vistrel
