// SPDX-License-Identifier: MIT
// The members of the main window, each forwarded to the part that does the work.
#include "window/WindowQt_p.h"

#include <Vistrel/Surface.h>

namespace Vistrel {

// clang-format off
AbstractAcquisitionInterface* WindowQt::acquisitionInterface() { return m_data->source.get(); }
const AbstractAcquisitionInterface* WindowQt::acquisitionInterface() const { return m_data->source.get(); }
AbstractFileInterface* WindowQt::fileInterface() { return m_data->files.get(); }
const AbstractFileInterface* WindowQt::fileInterface() const { return m_data->files.get(); }
SurfaceStream* WindowQt::surfaceStream() { return &m_data->stream; }
const SurfaceStream* WindowQt::surfaceStream() const { return &m_data->stream; }
SurfaceScrollArea* WindowQt::surfaceScrollArea() { return m_data->form.scrollArea; }
const SurfaceScrollArea* WindowQt::surfaceScrollArea() const { return m_data->form.scrollArea; }

QMenu* WindowQt::createPopupMenu() { return nullptr; }
bool WindowQt::closeable() const { return m_data->form.actionClose->isEnabled(); }
void WindowQt::updateFeatureSet() { m_data->features.update(); }
void WindowQt::updateAcquisitionState() { m_data->states.updateActionStates(); }
void WindowQt::setRunning() { m_data->commands.setupStartAsync(); }
void WindowQt::setConfigured() { m_data->commands.setConfigured(); }
void WindowQt::setUnconfigured() { m_data->commands.setUnconfigured(); }

ColorTable WindowQt::colorTable() const { return m_data->palettes.colorTable(); }
void WindowQt::setColorTable(ColorTable table) { m_data->palettes.setColorTable(table); }
void WindowQt::setColorTableGray() { setColorTable(ColorTable::Gray); }
void WindowQt::setColorTableGray2x() { setColorTable(ColorTable::Gray2x); }
void WindowQt::setColorTableGrayInverse() { setColorTable(ColorTable::GrayInverse); }
void WindowQt::setColorTableSine() { setColorTable(ColorTable::Sine); }
void WindowQt::setColorTableCosine() { setColorTable(ColorTable::Cosine); }
void WindowQt::setColorTableRainbow() { setColorTable(ColorTable::Rainbow); }
void WindowQt::setColorTableRandom() { setColorTable(ColorTable::Random); }
void WindowQt::setColorTableContours() { setColorTable(ColorTable::Contours); }

bool WindowQt::bayerDemosaicEnabled() const { return m_data->stream.bayerDemosaicEnabled(); }
void WindowQt::setBayerDemosaicEnabled(bool enabled) { m_data->palettes.setBayerEnabled(enabled); }
Format WindowQt::bayerDemosaicFilter() const { return m_data->stream.bayerDemosaicFilter(); }
void WindowQt::setBayerDemosaicFilterAuto() { m_data->palettes.setBayerFilter(Format(0)); }
void WindowQt::setBayerDemosaicFilterRGGB() { m_data->palettes.setBayerFilter(BayerRG); }
void WindowQt::setBayerDemosaicFilterGRBG() { m_data->palettes.setBayerFilter(BayerGR); }
void WindowQt::setBayerDemosaicFilterGBRG() { m_data->palettes.setBayerFilter(BayerGB); }
void WindowQt::setBayerDemosaicFilterBGGR() { m_data->palettes.setBayerFilter(BayerBG); }
bool WindowQt::rgbOrderReversed() const { return m_data->stream.rgbOrderReversed(); }
void WindowQt::setRgbOrderReversed(bool reversed) { m_data->palettes.setRgbOrderReversed(reversed); }
bool WindowQt::pixelCrosshairVisible() const { return m_data->form.scrollArea->surface()->crosshairVisible(); }
void WindowQt::setPixelCrosshairVisible(bool visible) { m_data->palettes.setCrosshairVisible(visible); }
bool WindowQt::analyzeMenuVisible() const { return m_data->analysis.isMenuVisible(); }
void WindowQt::setAnalyzeMenuVisible(bool visible) { m_data->analysis.setMenuVisible(visible); }

bool WindowQt::fullScreen() const { return isFullScreen(); }
void WindowQt::setFullScreen(bool enabled) { m_data->viewModes.setFullScreen(enabled); }
void WindowQt::toggleFullScreen() { setFullScreen(!isFullScreen()); }
bool WindowQt::exhibitView() const { return m_data->viewModes.isExhibited(); }
void WindowQt::setExhibitView(bool enabled) { m_data->viewModes.setExhibited(enabled); }
void WindowQt::toggleExhibitView() { setExhibitView(!exhibitView()); }
bool WindowQt::keepImageInfoVisible() const { return m_data->viewModes.keepsInformation(); }
void WindowQt::setKeepImageInfoVisible(bool visible) { m_data->viewModes.setKeepsInformation(visible); }

#define VISTREL_INFO_SWITCH(Setter, getter, item)                                                                      \
    void WindowQt::Setter(bool enabled) { m_data->information.setSwitchedOn(InfoItem::item, enabled); }                \
    bool WindowQt::getter() const { return m_data->information.isSwitchedOn(InfoItem::item); }

VISTREL_INFO_SWITCH(setPreviewSetupMode, previewSetupMode, SetupMode)
VISTREL_INFO_SWITCH(setPreviewFrameRate, previewFrameRate, FrameRate)
VISTREL_INFO_SWITCH(setPreviewBuffersQueued, previewBuffersQueued, Queued)
VISTREL_INFO_SWITCH(setPreviewBuffersFilled, previewBuffersFilled, Filled)
VISTREL_INFO_SWITCH(setPreviewBuffersDropped, previewBuffersDropped, Dropped)
VISTREL_INFO_SWITCH(setPreviewBuffersDelivered, previewBuffersDelivered, Delivered)
VISTREL_INFO_SWITCH(setPreviewImageDimensions, previewImageDimensions, Dimensions)
VISTREL_INFO_SWITCH(setPreviewImageFormat, previewImageFormat, Format)
VISTREL_INFO_SWITCH(setPreviewZoomLevel, previewZoomLevel, Zoom)
VISTREL_INFO_SWITCH(setPreviewPixelValue, previewPixelValue, PixelValue)

#undef VISTREL_INFO_SWITCH

void WindowQt::saveCurrentImage() { m_data->saving.save(); }
void WindowQt::copyCurrentImage() { m_data->saving.copy(); }
void WindowQt::copyCurrentPixelValue() { m_data->information.copyPixelValue(); }
void WindowQt::copyCurrentImageStats() { m_data->information.copyReport(); }

QAction* WindowQt::addMainMenuAction(const QString& title, const QString& text) { return m_data->userActions.addToMenu(title, text); }
QAction* WindowQt::addToolBarAction(const QString& text) { return m_data->userActions.addToToolBar(text); }
void WindowQt::setApplicationAbout(QDialog* dialog) { m_data->aboutBoxes.setApplicationAbout(dialog); }
// clang-format on

QAction* WindowQt::addImageStatsAction(const QString& text)
{
    QAction* const action = m_data->userActions.make(text);
    m_data->information.addUserAction(action);
    return action;
}

} // namespace Vistrel
