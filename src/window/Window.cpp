// SPDX-License-Identifier: MIT
// A display window, for hosts that do not use the toolkit.
#include "window/Window_p.h"

#include "base/Log.h"
#include "base/TextOut.h"
#include "base/UserInterfaceCall.h"

#include <Vistrel/Action.h>
#include <Vistrel/Surface.h>
#include <Vistrel/SurfaceScrollArea.h>
#include <Vistrel/SurfaceStream.h>

#include <QtWidgets/QAction>

#include <cassert>
#include <cstdint>
#include <string>
#include <utility>

namespace Vistrel {

// The window behind it ------------------------------------------------------------------------------------------------

Window::PrivateData::PrivateData(Window* owner, WindowQt* newWindow)
    : window(owner), windowQt(newWindow), transientLink(new TransientLink(newWindow))
{
    connect(windowQt, SIGNAL(partsGoing()), this, SLOT(windowQtDestroyed()));
    connect(windowQt, SIGNAL(destroyed()), this, SLOT(windowQtDestroyed()));
}

void Window::PrivateData::windowQtDestroyed()
{
    clearCallTarget(window);
    transientLink.reset();
    windowQt = nullptr;
}

void Window::PrivateData::windowIsGone(const char* member)
{
#if !defined(NDEBUG)
    reportLine(std::string("Vistrel::Window::") + member + ": The window has been closed.");
    assert(!"a member of Vistrel::Window was called after the window had been closed");
#endif
    static_cast<void>(member);
}

Window::Window(ScopedAcquisitionInterface&& acquisitionInterface)
    : Window(std::move(acquisitionInterface), ScopedFileInterface())
{
}

Window::Window(ScopedAcquisitionInterface&& acquisitionInterface, ScopedFileInterface&& fileInterface)
    : m_data(new PrivateData(this, new WindowQt(std::move(acquisitionInterface), std::move(fileInterface))))
{
    addCallTarget(this, m_data->windowQt);
}

Window::~Window()
{
    removeCallTarget(this);
    m_data->transientLink.reset();
    if (WindowQt* const window = std::exchange(m_data->windowQt, nullptr))
        window->discard();
}

bool Window::good() const
{
    return m_data->windowQt;
}

QWidget* Window::qt_handle()
{
    return m_data->windowQt;
}

const QWidget* Window::qt_handle() const
{
    return m_data->windowQt;
}

HWND Window::native_handle() const
{
    return m_data->ask("native_handle", [](WindowQt& w) { return reinterpret_cast<HWND>(w.winId()); });
}

AbstractAcquisitionInterface* Window::acquisitionInterface()
{
    return m_data->ask("acquisitionInterface", [](WindowQt& w) { return w.acquisitionInterface(); });
}

const AbstractAcquisitionInterface* Window::acquisitionInterface() const
{
    return const_cast<Window*>(this)->acquisitionInterface();
}

AbstractFileInterface* Window::fileInterface()
{
    return m_data->ask("fileInterface", [](WindowQt& w) { return w.fileInterface(); });
}

const AbstractFileInterface* Window::fileInterface() const
{
    return const_cast<Window*>(this)->fileInterface();
}

SurfaceStream* Window::surfaceStream()
{
    return m_data->ask("surfaceStream", [](WindowQt& w) { return w.surfaceStream(); });
}

const SurfaceStream* Window::surfaceStream() const
{
    return const_cast<Window*>(this)->surfaceStream();
}

SurfaceScrollArea* Window::surfaceScrollArea()
{
    return m_data->ask("surfaceScrollArea", [](WindowQt& w) { return w.surfaceScrollArea(); });
}

const SurfaceScrollArea* Window::surfaceScrollArea() const
{
    return const_cast<Window*>(this)->surfaceScrollArea();
}

// Visibility ----------------------------------------------------------------------------------------------------------

void Window::show()
{
    setVisible(true);
}

void Window::hide()
{
    setVisible(false);
}

void Window::setVisible(bool visible)
{
    m_data->tell("setVisible", [=](WindowQt& w) { w.setVisible(visible); });
}

bool Window::isVisible() const
{
    return m_data->ask("isVisible", [](WindowQt& w) { return w.isVisible(); });
}

bool Window::isMinimized() const
{
    return m_data->ask("isMinimized", [](WindowQt& w) { return w.isMinimized(); });
}

bool Window::isMaximized() const
{
    return m_data->ask("isMaximized", [](WindowQt& w) { return w.isMaximized(); });
}

bool Window::isFullScreen() const
{
    return m_data->ask("isFullScreen", [](WindowQt& w) { return w.fullScreen(); });
}

bool Window::isExhibitView() const
{
    return m_data->ask("isExhibitView", [](WindowQt& w) { return w.exhibitView(); });
}

void Window::setTitle(const char* const title)
{
    m_data->tell("setTitle", [=](WindowQt& w) { w.setWindowTitle(QString::fromLatin1(title)); });
}

bool Window::title(char* const buffer, std::size_t* const size) const
{
    return m_data->ask("title", [=](WindowQt& w) { return latin1Out(w.windowTitle(), buffer, size); });
}

// Commands and switches -----------------------------------------------------------------------------------------------

// clang-format off
#define VISTREL_FORWARD_COMMAND(member, command)                                                                       \
    void Window::member() { m_data->tell(#member, [](WindowQt& w) { w.command(); }); }

VISTREL_FORWARD_COMMAND(raise, raise)
VISTREL_FORWARD_COMMAND(minimize, showMinimized)
VISTREL_FORWARD_COMMAND(maximize, showMaximized)
VISTREL_FORWARD_COMMAND(restore, showNormal)
VISTREL_FORWARD_COMMAND(setRunning, setRunning)
VISTREL_FORWARD_COMMAND(setConfigured, setConfigured)
VISTREL_FORWARD_COMMAND(setUnconfigured, setUnconfigured)

#undef VISTREL_FORWARD_COMMAND

#define VISTREL_FORWARD_SWITCH(Setter, getter, target)                                                                 \
    void Window::Setter(bool enabled) { m_data->tell(#Setter, [=](WindowQt& w) { (target).Setter(enabled); }); }       \
    bool Window::getter() const { return m_data->ask(#getter, [](WindowQt& w) { return (target).getter(); }); }

VISTREL_FORWARD_SWITCH(setCloseable, closeable, w)
VISTREL_FORWARD_SWITCH(setPreviewFrameRate, previewFrameRate, w)
VISTREL_FORWARD_SWITCH(setPreviewBuffersQueued, previewBuffersQueued, w)
VISTREL_FORWARD_SWITCH(setPreviewBuffersFilled, previewBuffersFilled, w)
VISTREL_FORWARD_SWITCH(setPreviewBuffersDropped, previewBuffersDropped, w)
VISTREL_FORWARD_SWITCH(setPreviewBuffersDelivered, previewBuffersDelivered, w)
VISTREL_FORWARD_SWITCH(setPreviewImageDimensions, previewImageDimensions, w)
VISTREL_FORWARD_SWITCH(setPreviewImageFormat, previewImageFormat, w)
VISTREL_FORWARD_SWITCH(setPreviewPixelValue, previewPixelValue, w)
VISTREL_FORWARD_SWITCH(setPreviewZoomLevel, previewZoomLevel, w)
VISTREL_FORWARD_SWITCH(setPreviewSetupMode, previewSetupMode, w)
VISTREL_FORWARD_SWITCH(setKeepImageInfoVisible, keepImageInfoVisible, w)
VISTREL_FORWARD_SWITCH(setBayerDemosaicEnabled, bayerDemosaicEnabled, w)
VISTREL_FORWARD_SWITCH(setRgbOrderReversed, rgbOrderReversed, w)
VISTREL_FORWARD_SWITCH(setPixelCrosshairVisible, pixelCrosshairVisible, w)
VISTREL_FORWARD_SWITCH(setRefreshEnabled, refreshEnabled, *w.surfaceStream())
VISTREL_FORWARD_SWITCH(setRefreshRateAuto, refreshRateAuto, *w.surfaceStream())
VISTREL_FORWARD_SWITCH(setZoomToFit, zoomToFit, *w.surfaceScrollArea())

#undef VISTREL_FORWARD_SWITCH
// clang-format on

void Window::setFullScreen(bool enabled)
{
    m_data->tell("setFullScreen", [=](WindowQt& w) { w.setFullScreen(enabled); });
}

void Window::setExhibitView(bool enabled)
{
    m_data->tell("setExhibitView", [=](WindowQt& w) { w.setExhibitView(enabled); });
}

// The image -----------------------------------------------------------------------------------------------------------

void Window::setColorTable(ColorTable table)
{
    m_data->tell("setColorTable", [=](WindowQt& w) { w.setColorTable(table); });
}

ColorTable Window::colorTable() const
{
    return m_data->ask("colorTable", [](WindowQt& w) { return w.colorTable(); });
}

void Window::setBayerFilterOverride(Format filter)
{
    m_data->tell("setBayerFilterOverride", [=](WindowQt& w) {
        switch (static_cast<std::uint32_t>(filter)) {
        case 0:
            return w.setBayerDemosaicFilterAuto();
        case 0x100:
            return w.setBayerDemosaicFilterGBRG();
        case 0x200:
            return w.setBayerDemosaicFilterGRBG();
        case 0x300:
            return w.setBayerDemosaicFilterRGGB();
        case 0x400:
            return w.setBayerDemosaicFilterBGGR();
        }
        reportLine("Vistrel::Window::setBayerFilterOverride: Unknown Bayer filter with index " +
                   std::to_string(static_cast<std::uint32_t>(filter)) + ".");
    });
}

Format Window::bayerFilterOverride() const
{
    return m_data->ask("bayerFilterOverride", [](WindowQt& w) { return w.bayerDemosaicFilter(); });
}

void Window::setRefreshRate(int rate)
{
    m_data->tell("setRefreshRate", [=](WindowQt& w) { w.surfaceStream()->setRefreshRate(rate); });
}

int Window::refreshRate() const
{
    return m_data->ask("refreshRate", [](WindowQt& w) { return w.surfaceStream()->refreshRate(); });
}

void Window::setZoomLevel(double zoom)
{
    m_data->tell("setZoomLevel", [=](WindowQt& w) {
        SurfaceScrollArea& area = *w.surfaceScrollArea();
        if (area.surface()->pixmap().isNull())
            area.surface()->setScaling(zoom); // for the images to come; there is no centre to keep
        else
            area.setZoomTo(zoom, QPoint(-1, -1));
    });
}

double Window::zoomLevel() const
{
    return m_data->ask("zoomLevel", [](WindowQt& w) { return w.surfaceScrollArea()->zoomScaling(); });
}

void Window::setImageOffset(int x, int y)
{
    m_data->tell("setImageOffset", [=](WindowQt& w) { w.surfaceScrollArea()->setImageOffset(QPointF(x, y)); });
}

int Window::imageOffsetX() const
{
    return m_data->ask("imageOffsetX", [](WindowQt& w) { return w.surfaceScrollArea()->imageOffset().x(); });
}

int Window::imageOffsetY() const
{
    return m_data->ask("imageOffsetY", [](WindowQt& w) { return w.surfaceScrollArea()->imageOffset().y(); });
}

bool Window::setBitmapLocked(int width, int height, Format format)
{
    return m_data->ask("setBitmapLocked",
                       [=](WindowQt& w) { return w.surfaceStream()->setBitmapLocked(width, height, format); });
}

void Window::unlockBitmap()
{
    m_data->tell("unlockBitmap", [](WindowQt& w) { w.surfaceStream()->unlockBitmap(); });
}

bool Window::bitmapLocked() const
{
    return m_data->ask("bitmapLocked", [](WindowQt& w) { return w.surfaceStream()->bitmapLocked(); });
}

bool Window::getBitmap(RawImage* const image) const
{
    return m_data->ask("getBitmap", [=](WindowQt& w) { return w.surfaceStream()->getBitmap(image); });
}

// Actions -------------------------------------------------------------------------------------------------------------

Action* Window::PrivateData::tie(ScopedActionInterface&& actionInterface, QAction* entry)
{
    auto* const action = new Action(window, entry, std::move(actionInterface));
    action->endWith(this);
    return action;
}

Action* Window::addMainMenuAction(ScopedActionInterface&& actionInterface, const char* const menuTitle,
                                  const char* const actionText)
{
    return m_data->ask("addMainMenuAction", [&](WindowQt& w) {
        return m_data->tie(std::move(actionInterface),
                           w.addMainMenuAction(QString::fromLocal8Bit(menuTitle), QString::fromLocal8Bit(actionText)));
    });
}

Action* Window::addToolBarAction(ScopedActionInterface&& actionInterface, const char* const actionText)
{
    return m_data->ask("addToolBarAction", [&](WindowQt& w) {
        return m_data->tie(std::move(actionInterface), w.addToolBarAction(QString::fromLocal8Bit(actionText)));
    });
}

Action* Window::addImageStatsAction(ScopedActionInterface&& actionInterface, const char* const actionText)
{
    return m_data->ask("addImageStatsAction", [&](WindowQt& w) {
        return m_data->tie(std::move(actionInterface), w.addImageStatsAction(QString::fromLocal8Bit(actionText)));
    });
}

// Transient parent ----------------------------------------------------------------------------------------------------

void Window::setTransientParent(HWND parent)
{
    m_data->tell("setTransientParent", [=](WindowQt&) { m_data->transientLink->setParent(parent); });
}

HWND Window::transientParent() const
{
    return m_data->transientLink ? m_data->transientLink->parentHandle() : nullptr;
}

} // namespace Vistrel
